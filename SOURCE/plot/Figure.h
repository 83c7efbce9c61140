// Figure: what a figure holds, independent of any window: panels of series with their labels.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

// How a series is drawn.
enum class SeriesKind {
  Lines,      // y against 1..n
  XYLines,    // y against x
  Scatter,    // points (x, y)
  Histogram,  // bars: x holds the n + 1 bin edges, y the n counts
  ACF,        // vertical bars at lags x of heights y, with bands at +/- band
  KDensity,   // a smooth curve y over the grid x
};

// The name of a kind as messages and listings use it ("Lines", "XYLines", ...).
const char* SeriesKindName(SeriesKind kind);

struct Series {
  SeriesKind kind = SeriesKind::Lines;
  Eigen::VectorXd x;
  Eigen::VectorXd y;
  std::string label;  // for the legend; empty: no legend entry
  double band = 0.0;  // ACF: the approximate 95% band (0: none)
};

// One set of axes.
struct Panel {
  std::string title;
  std::string xlabel;
  std::string ylabel;
  bool grid = true;
  bool legend = false;  // a legend of the series' labels
  std::vector<Series> series;
  bool Empty() const { return series.empty(); }
};

// A figure: a grid of rows x cols panels, filled row by row.
struct Figure {
  std::string title;  // "Figure N": how statements and windows name it
  int rows = 1;
  int cols = 1;
  std::vector<Panel> panels;  // rows * cols of them

  Figure() : panels(1) {}
  Figure(std::string name, int r, int c) : title(std::move(name)), rows(r), cols(c), panels(static_cast<std::size_t>(r * c)) {}
};
