// Panels drawn with PLplot: margins sized to their labels, grid, series of each kind, frame, legend.
//
// The page is one PLplot subpage; each panel gets a cell of the rows x cols grid. Inside a cell
// the plot area is what remains after margins measured in millimetres for the title, the axis
// labels and the tick labels. Data are drawn with the plot area as viewport (PLplot clips them to
// it); everything else is drawn with a viewport covering the whole page whose world coordinates
// are millimetres, so ticks and labels can sit outside the plot area.
#include "FigurePainter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

#include <plplot.h>

#include "PlotAxes.h"

namespace plot {

namespace {

struct Rgb {
  int r, g, b;
};

// Series colours, in the order series take them.
constexpr Rgb kPalette[] = {
    {31, 119, 180}, {255, 127, 14},  {44, 160, 44},   {214, 39, 40},  {148, 103, 189},
    {140, 86, 75},  {227, 119, 194}, {127, 127, 127}, {188, 189, 34}, {23, 190, 207},
};
constexpr int kPaletteSize = static_cast<int>(std::size(kPalette));

// Colour map 0 entries.
enum Colour : PLINT {
  kBackground = 0,
  kText = 1,
  kFrame = 2,
  kGrid = 3,
  kBand = 4,
  kLegendEdge = 5,
  kZeroLine = 6,
  kSeries = 10,       // kSeries + i: palette colour i
  kSeriesLight = 30,  // kSeriesLight + i: the same, mixed with white for bar fills
  kColourCount = 50,
};

PLINT SeriesColour(std::size_t i) { return kSeries + static_cast<PLINT>(i % kPaletteSize); }
PLINT LightColour(std::size_t i) { return kSeriesLight + static_cast<PLINT>(i % kPaletteSize); }

// Sizes in millimetres at full scale (a panel of about 130 x 100 mm or more).
constexpr double kTextHeight = 3.5;  // tick labels, axis labels, legend
constexpr double kTitleHeight = 4.2;
constexpr double kTickLength = 1.4;
constexpr double kMarkerRadius = 0.75;
constexpr double kNarrowBar = 1.2;
constexpr double kThinColumn = 0.05;
// Legends: text size relative to tick labels, entry spacing in character heights, and the
// length of the line samples as a fraction of the plot area's width.
constexpr double kLegendTextScale = 0.95;
constexpr double kLegendSpacing = 2.0;
constexpr double kLegendSample = 0.07;

// Line widths in points (pixels at 72 dots per inch) at full scale.
constexpr double kFrameWidth = 1.0;
constexpr double kGridWidth = 0.8;
constexpr double kLinesWidth = 1.6;
constexpr double kDensityWidth = 2.0;
constexpr double kAcfWidth = 2.0;

struct Rect {
  double x0 = 0.0, x1 = 0.0, y0 = 0.0, y1 = 0.0;
  double Width() const { return x1 - x0; }
  double Height() const { return y1 - y0; }
};

// PLplot reads '#' as the start of an escape sequence; a literal one is written twice.
std::string Escaped(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    out += c;
    if (c == '#') out += '#';
  }
  return out;
}

// The advance width of a character in ems of a typical sans-serif face.
double CharWidth(unsigned char c) {
  const auto among = [c](std::string_view set) {
    return set.find(static_cast<char>(c)) != std::string_view::npos;
  };
  if (c >= '0' && c <= '9') return 0.64;
  if (among("mw")) return 0.95;
  if (among("MW")) return 1.0;
  if (c >= 'A' && c <= 'Z') return 0.68;
  if (among(".,:;!|' ")) return 0.32;
  if (among("-()[]")) return 0.39;
  if (among("ijlftr")) return 0.36;
  return 0.62;
}

// An estimate of the width of `text` in millimetres at character height `height` (PLplot offers
// no way to measure a string); within a few percent for the cairo devices' default face.
double TextWidth(const std::string& text, double height) {
  double em = 0.0;
  for (char c : text) {
    if ((static_cast<unsigned char>(c) & 0xC0) == 0x80) continue;  // UTF-8 continuation byte
    em += CharWidth(static_cast<unsigned char>(c));
  }
  return em * height * 1.33;
}

// A point of a series as drawn, or false when either coordinate is not finite.
bool PointOf(const Series& series, Eigen::Index i, double& x, double& y) {
  x = SeriesX(series, i);
  y = series.y[i];
  return std::isfinite(x) && std::isfinite(y);
}

// A coarse grid over the plot area recording where data are drawn, so the legend can go where it
// hides the least.
class Occupancy {
 public:
  explicit Occupancy(const Rect& area) : m_area(area), m_cells(kCols * kRows, false) {}

  // Marks the cell holding a point (page millimetres); points outside the area are ignored.
  void Mark(double x, double y) {
    const double u = (x - m_area.x0) / m_area.Width() * kCols;
    const double v = (y - m_area.y0) / m_area.Height() * kRows;
    if (!(u >= 0.0 && u < kCols && v >= 0.0 && v < kRows)) return;
    m_cells[static_cast<std::size_t>(static_cast<int>(v) * kCols + static_cast<int>(u))] = true;
  }

  // Marks the cells along a segment, in steps of half a cell.
  void MarkSegment(double x0, double y0, double x1, double y1) {
    const double du = std::abs(x1 - x0) / m_area.Width() * kCols;
    const double dv = std::abs(y1 - y0) / m_area.Height() * kRows;
    if (!std::isfinite(du) || !std::isfinite(dv)) return;
    const int steps = static_cast<int>(std::min(2.0 * std::max(du, dv), 4.0 * (kCols + kRows))) + 1;
    for (int k = 0; k <= steps; ++k) {
      const double t = static_cast<double>(k) / steps;
      Mark(x0 + t * (x1 - x0), y0 + t * (y1 - y0));
    }
  }

  // The number of marked cells whose centres fall in `rect`.
  int Count(const Rect& rect) const {
    int count = 0;
    for (int row = 0; row < kRows; ++row) {
      const double y = m_area.y0 + (row + 0.5) / kRows * m_area.Height();
      if (y < rect.y0 || y > rect.y1) continue;
      for (int col = 0; col < kCols; ++col) {
        const double x = m_area.x0 + (col + 0.5) / kCols * m_area.Width();
        if (x >= rect.x0 && x <= rect.x1 && m_cells[static_cast<std::size_t>(row * kCols + col)]) ++count;
      }
    }
    return count;
  }

 private:
  static constexpr int kCols = 64;
  static constexpr int kRows = 48;
  Rect m_area;
  std::vector<bool> m_cells;
};

// The page as the painter sees it: world coordinates in millimetres of the figure as printed,
// which PLplot's own page millimetres match except on the PostScript device.
struct Canvas {
  Rect page;                 // from (0, 0)
  double deviceWidth = 0.0;  // the same page in PLplot's millimetres
  double deviceHeight = 0.0;
  double lineScale = 1.0;  // PLplot pen width of a one-point line
  double textScale = 1.0;  // PLplot character height of one millimetre
  double scale = 1.0;      // text and marks relative to their full size
};

class PanelPainter {
 public:
  PanelPainter(const Panel& panel, const Rect& cell, const Canvas& canvas)
      : m_panel(panel), m_cell(cell), m_canvas(canvas), m_scale(canvas.scale) {}

  void Paint() {
    if (m_panel.Empty()) return;
    m_ranges = DataRanges(m_panel);
    if (!Layout()) return;
    UsePlotArea();
    if (m_panel.grid) DrawGrid();
    for (std::size_t i = 0; i < m_panel.series.size(); ++i) DrawSeries(m_panel.series[i], i);
    UsePage();
    DrawFrameAndTicks();
    DrawLabels();
    if (m_panel.legend) DrawLegend();
  }

 private:
  double Text() const { return kTextHeight * m_scale; }
  double Title() const { return kTitleHeight * m_scale; }
  double Tick() const { return kTickLength * m_scale; }
  double Gap() const { return 0.4 * Text(); }
  // The height a row of text takes: characters are taller than PLplot's character height
  // (which is about the height of a capital) once ascenders and descenders count.
  double Line() const { return 1.5 * Text(); }
  double TitleLine() const { return 1.5 * Title(); }
  double Pad() const { return 0.8 * Text(); }

  // Margins from the label sizes; false when the cell is too small for a plot area.
  bool Layout() {
    const double bottom = Pad() + (m_panel.xlabel.empty() ? 0.0 : Line() + Gap()) + Line() + Tick();
    const double top = Pad() + (m_panel.title.empty() ? 0.5 * Line() : TitleLine() + Gap());
    m_plot.y0 = m_cell.y0 + bottom;
    m_plot.y1 = m_cell.y1 - top;
    if (m_plot.Height() < 3.0 * Text()) return false;
    const int yTarget = std::clamp(static_cast<int>(m_plot.Height() / (3.0 * Text())), 3, 8);
    m_yTicks = NiceTicks(m_ranges.y.lo, m_ranges.y.hi, yTarget);

    double labelWidth = 0.0;
    for (const std::string& label : m_yTicks.labels)
      labelWidth = std::max(labelWidth, TextWidth(label, Text()));
    const double left = Pad() + (m_panel.ylabel.empty() ? 0.0 : Line() + Gap()) + labelWidth + Gap() + Tick();
    m_plot.x0 = m_cell.x0 + left;
    m_plot.x1 = m_cell.x1 - Pad() - Text();
    if (m_plot.Width() < 4.0 * Text()) return false;
    // As many x ticks as fit with their labels about a label's width apart.
    for (int target = std::clamp(static_cast<int>(m_plot.Width() / (6.0 * Text())), 2, 10); target >= 2;
         --target) {
      m_xTicks = NiceTicks(m_ranges.x.lo, m_ranges.x.hi, target);
      double widest = 0.0;
      for (const std::string& label : m_xTicks.labels) widest = std::max(widest, TextWidth(label, Text()));
      const double spacing =
          m_xTicks.values.size() > 1
              ? m_plot.Width() * (m_xTicks.values[1] - m_xTicks.values[0]) / (m_ranges.x.hi - m_ranges.x.lo)
              : m_plot.Width();
      if (spacing >= 1.8 * widest) break;
    }
    // Labels of ticks at the ends are centred on them and may stick out of the cell; the plot
    // area narrows just enough to bring them in.
    if (!m_xTicks.values.empty()) {
      const double span = m_ranges.x.hi - m_ranges.x.lo;
      const double last = (m_xTicks.values.back() - m_ranges.x.lo) / span;  // 0..1 along the axis
      const double right = m_cell.x1 - Pad() - 0.5 * TextWidth(m_xTicks.labels.back(), Text());
      if (last > 0.0 && PageX(m_xTicks.values.back()) > right)
        m_plot.x1 = m_plot.x0 + (right - m_plot.x0) / last;
      const double first = (m_xTicks.values.front() - m_ranges.x.lo) / span;
      const double left = m_cell.x0 + Pad() + 0.5 * TextWidth(m_xTicks.labels.front(), Text());
      if (first < 1.0 && PageX(m_xTicks.values.front()) < left)
        m_plot.x0 = (left - first * m_plot.x1) / (1.0 - first);
      if (m_plot.Width() < 4.0 * Text()) return false;
    }
    return true;
  }

  // Viewport on the plot area with the data's world coordinates; drawing is clipped to it.
  void UsePlotArea() const {
    plsvpa(DeviceX(m_plot.x0), DeviceX(m_plot.x1), DeviceY(m_plot.y0), DeviceY(m_plot.y1));
    plwind(m_ranges.x.lo, m_ranges.x.hi, m_ranges.y.lo, m_ranges.y.hi);
  }

  // Viewport on the whole page with millimetres as world coordinates.
  void UsePage() const {
    plsvpa(0.0, m_canvas.deviceWidth, 0.0, m_canvas.deviceHeight);
    plwind(m_canvas.page.x0, m_canvas.page.x1, m_canvas.page.y0, m_canvas.page.y1);
  }

  // PLplot's page millimetres of page coordinates, for viewports.
  double DeviceX(double x) const { return x / m_canvas.page.Width() * m_canvas.deviceWidth; }
  double DeviceY(double y) const { return y / m_canvas.page.Height() * m_canvas.deviceHeight; }

  // Sets the pen to `width` points at full scale.
  void Pen(double width) const { plwidth(width * m_scale * m_canvas.lineScale); }

  // Sets the character height to `height` page millimetres.
  void TextSize(double height) const { plschr(height * m_canvas.textScale, 1.0); }

  // Millimetre coordinates of data values.
  double PageX(double x) const {
    return m_plot.x0 + (x - m_ranges.x.lo) / (m_ranges.x.hi - m_ranges.x.lo) * m_plot.Width();
  }
  double PageY(double y) const {
    return m_plot.y0 + (y - m_ranges.y.lo) / (m_ranges.y.hi - m_ranges.y.lo) * m_plot.Height();
  }

  static void Segment(double x0, double y0, double x1, double y1) {
    const PLFLT xs[2] = {x0, x1};
    const PLFLT ys[2] = {y0, y1};
    plline(2, xs, ys);
  }

  void DrawGrid() const {
    plcol0(kGrid);
    Pen(kGridWidth);
    for (double x : m_xTicks.values) Segment(x, m_ranges.y.lo, x, m_ranges.y.hi);
    for (double y : m_yTicks.values) Segment(m_ranges.x.lo, y, m_ranges.x.hi, y);
  }

  void DrawSeries(const Series& series, std::size_t index) const {
    switch (series.kind) {
      case SeriesKind::Lines:
      case SeriesKind::XYLines: DrawCurve(series, index, kLinesWidth); break;
      case SeriesKind::KDensity: DrawCurve(series, index, kDensityWidth); break;
      case SeriesKind::Scatter: DrawPoints(series, index); break;
      case SeriesKind::Histogram: DrawBars(series, index); break;
      case SeriesKind::ACF: DrawAcf(series, index); break;
    }
  }

  // A polyline broken wherever a point is not finite; isolated points become dots.
  void DrawCurve(const Series& series, std::size_t index, double width) const {
    plcol0(SeriesColour(index));
    Pen(width);
    std::vector<PLFLT> xs;
    std::vector<PLFLT> ys;
    const auto flush = [&] {
      if (xs.size() >= 2) {
        Thin(xs, ys);
        plline(static_cast<PLINT>(xs.size()), xs.data(), ys.data());
      } else if (xs.size() == 1) {
        Dot(xs[0], ys[0], 0.5 * kMarkerRadius);
      }
      xs.clear();
      ys.clear();
    };
    const Eigen::Index n = SeriesPoints(series);
    xs.reserve(static_cast<std::size_t>(n));
    ys.reserve(static_cast<std::size_t>(n));
    for (Eigen::Index i = 0; i < n; ++i) {
      double x = 0.0;
      double y = 0.0;
      if (!PointOf(series, i, x, y)) {
        flush();
        continue;
      }
      xs.push_back(x);
      ys.push_back(y);
    }
    flush();
  }

  // Thins a polyline whose points crowd together, as long chains of draws do: of each run of
  // consecutive points within one column kThinColumn millimetres wide, only the first, lowest,
  // highest and last stay, in their order. Drawn with a pen wider than the column, the line looks
  // the same, and files and drawing time no longer grow with the number of points.
  void Thin(std::vector<PLFLT>& xs, std::vector<PLFLT>& ys) const {
    const auto column = [&](double x) { return std::floor(PageX(x) / (kThinColumn * m_scale)); };
    std::size_t kept = 0;
    std::size_t start = 0;
    while (start < xs.size()) {
      const double current = column(xs[start]);
      std::size_t end = start + 1;
      std::size_t low = start;
      std::size_t high = start;
      while (end < xs.size() && column(xs[end]) == current) {
        if (ys[end] < ys[low]) low = end;
        if (ys[end] > ys[high]) high = end;
        ++end;
      }
      std::size_t picks[4] = {start, std::min(low, high), std::max(low, high), end - 1};
      for (int k = 0; k < 4; ++k) {
        if (k > 0 && picks[k] == picks[k - 1]) continue;
        xs[kept] = xs[picks[k]];
        ys[kept] = ys[picks[k]];
        ++kept;
      }
      start = end;
    }
    xs.resize(kept);
    ys.resize(kept);
  }

  // A filled circle of `radius` millimetres around a data point.
  void Dot(double x, double y, double radius) const {
    constexpr int kSides = 16;
    const double rx = radius * m_scale * (m_ranges.x.hi - m_ranges.x.lo) / m_plot.Width();
    const double ry = radius * m_scale * (m_ranges.y.hi - m_ranges.y.lo) / m_plot.Height();
    PLFLT xs[kSides];
    PLFLT ys[kSides];
    for (int k = 0; k < kSides; ++k) {
      const double angle = 2.0 * std::numbers::pi * k / kSides;
      xs[k] = x + rx * std::cos(angle);
      ys[k] = y + ry * std::sin(angle);
    }
    plfill(kSides, xs, ys);
  }

  void DrawPoints(const Series& series, std::size_t index) const {
    plcol0(SeriesColour(index));
    const Eigen::Index n = SeriesPoints(series);
    for (Eigen::Index i = 0; i < n; ++i) {
      double x = 0.0;
      double y = 0.0;
      if (!PointOf(series, i, x, y)) continue;
      if (x < m_ranges.x.lo || x > m_ranges.x.hi || y < m_ranges.y.lo || y > m_ranges.y.hi) continue;
      Dot(x, y, kMarkerRadius);
    }
  }

  // Bars from 0 to each count, filled light and outlined in the series colour. Bars narrower
  // than kNarrowBar share one outline along their tops, which keeps many thin bars from turning
  // into a solid block of outline colour.
  void DrawBars(const Series& series, std::size_t index) const {
    const Eigen::Index bins = SeriesPoints(series);
    Pen(kFrameWidth);
    std::vector<PLFLT> outlineX;
    std::vector<PLFLT> outlineY;
    // Draws the pending outline, brought back down to 0 at its right end.
    const auto flushOutline = [&] {
      if (!outlineX.empty() && outlineY.back() != 0.0) {
        outlineX.push_back(outlineX.back());
        outlineY.push_back(0.0);
      }
      if (outlineX.size() >= 2) {
        plcol0(SeriesColour(index));
        plline(static_cast<PLINT>(outlineX.size()), outlineX.data(), outlineY.data());
      }
      outlineX.clear();
      outlineY.clear();
    };
    for (Eigen::Index i = 0; i < bins; ++i) {
      const double left = series.x[i];
      const double right = series.x[i + 1];
      const double count = series.y[i];
      if (!std::isfinite(left) || !std::isfinite(right) || !std::isfinite(count)) {
        flushOutline();
        continue;
      }
      PLFLT xs[5] = {left, left, right, right, left};
      PLFLT ys[5] = {0.0, count, count, 0.0, 0.0};
      if (count != 0.0) {
        plcol0(LightColour(index));
        plfill(4, xs, ys);
      }
      if (std::abs(PageX(right) - PageX(left)) >= kNarrowBar * m_scale) {
        flushOutline();
        if (count != 0.0) {
          plcol0(SeriesColour(index));
          plline(5, xs, ys);
        }
        continue;
      }
      if (outlineX.empty()) {
        outlineX.push_back(left);
        outlineY.push_back(0.0);
      }
      outlineX.insert(outlineX.end(), {left, right});
      outlineY.insert(outlineY.end(), {count, count});
    }
    flushOutline();
  }

  // A line at 0, dashed bands at +/- band, and a thin bar from 0 to each autocorrelation.
  void DrawAcf(const Series& series, std::size_t index) const {
    Pen(kFrameWidth);
    plcol0(kZeroLine);
    Segment(m_ranges.x.lo, 0.0, m_ranges.x.hi, 0.0);
    if (series.band > 0.0 && std::isfinite(series.band)) {
      // Dashes are measured in micrometres of PLplot's page, along x here.
      const double micrometres = 1000.0 * m_scale * m_canvas.deviceWidth / m_canvas.page.Width();
      const PLINT mark = static_cast<PLINT>(1.5 * micrometres);
      const PLINT space = static_cast<PLINT>(1.0 * micrometres);
      plstyl(1, &mark, &space);
      plcol0(kBand);
      Segment(m_ranges.x.lo, series.band, m_ranges.x.hi, series.band);
      Segment(m_ranges.x.lo, -series.band, m_ranges.x.hi, -series.band);
      plstyl(0, nullptr, nullptr);
    }
    plcol0(SeriesColour(index));
    Pen(kAcfWidth);
    const Eigen::Index n = SeriesPoints(series);
    for (Eigen::Index i = 0; i < n; ++i) {
      double x = 0.0;
      double y = 0.0;
      if (PointOf(series, i, x, y)) Segment(x, 0.0, x, y);
    }
  }

  // The frame around the plot area, ticks pointing out, and their labels.
  void DrawFrameAndTicks() const {
    plcol0(kFrame);
    Pen(kFrameWidth);
    const PLFLT xs[5] = {m_plot.x0, m_plot.x1, m_plot.x1, m_plot.x0, m_plot.x0};
    const PLFLT ys[5] = {m_plot.y0, m_plot.y0, m_plot.y1, m_plot.y1, m_plot.y0};
    plline(5, xs, ys);
    for (double x : m_xTicks.values) Segment(PageX(x), m_plot.y0, PageX(x), m_plot.y0 - Tick());
    for (double y : m_yTicks.values) Segment(m_plot.x0, PageY(y), m_plot.x0 - Tick(), PageY(y));

    plcol0(kText);
    TextSize(Text());
    const double labelY = m_plot.y0 - Tick() - 0.5 * Line();
    for (std::size_t i = 0; i < m_xTicks.values.size(); ++i) {
      plptex(PageX(m_xTicks.values[i]), labelY, 1.0, 0.0, 0.5, m_xTicks.labels[i].c_str());
    }
    const double labelX = m_plot.x0 - Tick() - Gap();
    for (std::size_t i = 0; i < m_yTicks.values.size(); ++i) {
      plptex(labelX, PageY(m_yTicks.values[i]), 1.0, 0.0, 1.0, m_yTicks.labels[i].c_str());
    }
  }

  // Title above the plot area, x label below the tick labels, y label turned along the left edge,
  // each centred on the plot area and made smaller (down to 60%) when it would not fit the cell.
  void DrawLabels() const {
    const double middleX = 0.5 * (m_plot.x0 + m_plot.x1);
    const double middleY = 0.5 * (m_plot.y0 + m_plot.y1);
    const double roomX = 2.0 * (std::min(middleX - m_cell.x0, m_cell.x1 - middleX) - Pad());
    const double roomY = 2.0 * (std::min(middleY - m_cell.y0, m_cell.y1 - middleY) - Pad());
    const auto fit = [](const std::string& text, double height, double room) {
      const double width = TextWidth(text, height);
      return width > room ? height * std::max(0.6, room / width) : height;
    };
    plcol0(kText);
    if (!m_panel.xlabel.empty()) {
      TextSize(fit(m_panel.xlabel, Text(), roomX));
      plptex(middleX, m_cell.y0 + Pad() + 0.5 * Line(), 1.0, 0.0, 0.5, Escaped(m_panel.xlabel).c_str());
    }
    if (!m_panel.ylabel.empty()) {
      TextSize(fit(m_panel.ylabel, Text(), roomY));
      plptex(m_cell.x0 + Pad() + 0.5 * Line(), middleY, 0.0, 1.0, 0.5, Escaped(m_panel.ylabel).c_str());
    }
    if (!m_panel.title.empty()) {
      // A title too wide to centre on the plot area is centred on the whole cell instead.
      const bool wide = TextWidth(m_panel.title, Title()) > roomX;
      const double centre = wide ? 0.5 * (m_cell.x0 + m_cell.x1) : middleX;
      TextSize(fit(m_panel.title, Title(), wide ? m_cell.Width() - 2.0 * Pad() : roomX));
      plptex(centre, m_cell.y1 - Pad() - 0.5 * TitleLine(), 1.0, 0.0, 0.5, Escaped(m_panel.title).c_str());
    }
  }

  // Where the data are drawn, for placing the legend.
  Occupancy DataOccupancy() const {
    Occupancy occupancy(m_plot);
    for (const Series& series : m_panel.series) {
      const Eigen::Index n = SeriesPoints(series);
      for (Eigen::Index i = 0; i < n; ++i) {
        if (series.kind == SeriesKind::Histogram) {
          const double left = series.x[i];
          const double right = series.x[i + 1];
          if (!std::isfinite(left) || !std::isfinite(right) || !std::isfinite(series.y[i])) continue;
          // A bar is solid: mark it column by column.
          for (double t = 0.0; t <= 1.0; t += 0.25) {
            const double x = PageX(left + t * (right - left));
            occupancy.MarkSegment(x, PageY(0.0), x, PageY(series.y[i]));
          }
          continue;
        }
        double x = 0.0;
        double y = 0.0;
        if (!PointOf(series, i, x, y)) continue;
        if (series.kind == SeriesKind::ACF) {
          occupancy.MarkSegment(PageX(x), PageY(0.0), PageX(x), PageY(y));
        } else if (series.kind == SeriesKind::Scatter || i + 1 >= n) {
          occupancy.Mark(PageX(x), PageY(y));
        } else {
          double x1 = 0.0;
          double y1 = 0.0;
          if (PointOf(series, i + 1, x1, y1)) {
            occupancy.MarkSegment(PageX(x), PageY(y), PageX(x1), PageY(y1));
          } else {
            occupancy.Mark(PageX(x), PageY(y));
          }
        }
      }
    }
    return occupancy;
  }

  // A boxed legend of the series that have labels, in the corner of the plot area where it hides
  // the least data (top right when several tie).
  void DrawLegend() const {
    std::vector<PLINT> options, textColours, boxColours, boxPatterns, lineColours, lineStyles, symbolColours,
        symbolNumbers;
    std::vector<PLFLT> boxScales, boxWidths, lineWidths, symbolScales;
    std::vector<std::string> texts;
    std::vector<const char*> symbols;
    double widest = 0.0;
    // pllegend spaces entries in character heights of PLplot's page millimetres, which differ
    // from the text's own size on some devices (see PageGeometry); these undo the difference.
    const double squashX = 1.0 / (m_canvas.textScale * m_canvas.page.Width() / m_canvas.deviceWidth);
    const double squashY = 1.0 / (m_canvas.textScale * m_canvas.page.Height() / m_canvas.deviceHeight);
    for (std::size_t i = 0; i < m_panel.series.size(); ++i) {
      const Series& series = m_panel.series[i];
      if (series.label.empty()) continue;
      PLINT option = PL_LEGEND_LINE;
      if (series.kind == SeriesKind::Histogram) option = PL_LEGEND_COLOR_BOX;
      if (series.kind == SeriesKind::Scatter) option = PL_LEGEND_SYMBOL;
      options.push_back(option);
      texts.push_back(Escaped(series.label));
      widest = std::max(widest, TextWidth(series.label, kLegendTextScale * Text()));
      textColours.push_back(kText);
      boxColours.push_back(LightColour(i));
      boxPatterns.push_back(0);
      boxScales.push_back(0.8);
      boxWidths.push_back(1.0);
      lineColours.push_back(SeriesColour(i));
      lineStyles.push_back(1);
      lineWidths.push_back((series.kind == SeriesKind::KDensity ? kDensityWidth : kLinesWidth) * m_scale *
                           m_canvas.lineScale);
      symbolColours.push_back(SeriesColour(i));
      symbolScales.push_back(2.0);
      symbolNumbers.push_back(1);
      symbols.push_back("•");
    }
    if (options.empty()) return;
    std::vector<const char*> textPointers;
    for (const std::string& text : texts) textPointers.push_back(text.c_str());

    // The legend's size as pllegend will draw it (entries kLegendSpacing character heights
    // apart), to see what each corner would hide.
    constexpr double kOffsetX = 0.02;
    constexpr double kOffsetY = 0.03;
    const double width = (kLegendSample + 2.0 * kOffsetX) * m_plot.Width() + 2.5 * Text() + widest;
    const double height =
        (kLegendSpacing * static_cast<double>(options.size()) + 0.5) * kLegendTextScale * Text();
    const double insetX = kOffsetX * m_plot.Width();
    const double insetY = kOffsetY * m_plot.Height();
    const Occupancy occupancy = DataOccupancy();
    struct Corner {
      PLINT position;
      Rect box;
    };
    const Corner corners[] = {
        {PL_POSITION_TOP | PL_POSITION_RIGHT,
         {m_plot.x1 - insetX - width, m_plot.x1 - insetX, m_plot.y1 - insetY - height, m_plot.y1 - insetY}},
        {PL_POSITION_TOP | PL_POSITION_LEFT,
         {m_plot.x0 + insetX, m_plot.x0 + insetX + width, m_plot.y1 - insetY - height, m_plot.y1 - insetY}},
        {PL_POSITION_BOTTOM | PL_POSITION_RIGHT,
         {m_plot.x1 - insetX - width, m_plot.x1 - insetX, m_plot.y0 + insetY, m_plot.y0 + insetY + height}},
        {PL_POSITION_BOTTOM | PL_POSITION_LEFT,
         {m_plot.x0 + insetX, m_plot.x0 + insetX + width, m_plot.y0 + insetY, m_plot.y0 + insetY + height}},
    };
    PLINT position = corners[0].position;
    int hidden = occupancy.Count(corners[0].box);
    for (const Corner& corner : corners) {
      const int count = occupancy.Count(corner.box);
      if (count < hidden) {
        hidden = count;
        position = corner.position;
      }
    }

    UsePlotArea();
    TextSize(Text());
    Pen(kFrameWidth);
    PLFLT drawnWidth = 0.0;
    PLFLT drawnHeight = 0.0;
    pllegend(&drawnWidth, &drawnHeight, PL_LEGEND_BACKGROUND | PL_LEGEND_BOUNDING_BOX,
             position | PL_POSITION_INSIDE, kOffsetX, kOffsetY, kLegendSample, kBackground, kLegendEdge, 1, 0,
             0, static_cast<PLINT>(options.size()), options.data(), 0.8 * squashX, kLegendTextScale,
             kLegendSpacing * squashY, 0.0, textColours.data(), textPointers.data(), boxColours.data(),
             boxPatterns.data(), boxScales.data(), boxWidths.data(), lineColours.data(), lineStyles.data(),
             lineWidths.data(), symbolColours.data(), symbolScales.data(), symbolNumbers.data(),
             symbols.data());
  }

  const Panel& m_panel;
  Rect m_cell;
  Canvas m_canvas;
  double m_scale;
  PanelRanges m_ranges;
  Rect m_plot;
  AxisTicks m_xTicks;
  AxisTicks m_yTicks;
};

}  // namespace

void SetUpColours() {
  plscmap0n(kColourCount);
  plscolbg(255, 255, 255);
  plscol0(kText, 30, 30, 30);
  plscol0(kFrame, 60, 60, 60);
  plscol0(kGrid, 228, 228, 228);
  plscol0(kBand, 90, 90, 90);
  plscol0(kLegendEdge, 190, 190, 190);
  plscol0(kZeroLine, 110, 110, 110);
  for (int i = 0; i < kPaletteSize; ++i) {
    const Rgb& c = kPalette[i];
    plscol0(kSeries + i, c.r, c.g, c.b);
    // 55% white: light enough for large areas, still clearly the series' hue.
    const auto light = [](int v) { return static_cast<PLINT>(std::lround(v + 0.55 * (255 - v))); };
    plscol0(kSeriesLight + i, light(c.r), light(c.g), light(c.b));
  }
}

void PaintFigure(const Figure& figure, const PageGeometry& geometry) {
  PLFLT xmin = 0.0, xmax = 0.0, ymin = 0.0, ymax = 0.0;
  plgspa(&xmin, &xmax, &ymin, &ymax);
  Canvas canvas;
  canvas.deviceWidth = xmax - xmin;
  canvas.deviceHeight = ymax - ymin;
  canvas.page = {0.0, geometry.widthMm > 0.0 ? geometry.widthMm : canvas.deviceWidth, 0.0,
                 geometry.heightMm > 0.0 ? geometry.heightMm : canvas.deviceHeight};
  canvas.lineScale = geometry.lineScale;
  canvas.textScale = geometry.textScale;
  plfont(1);
  plsfont(PL_FCI_SANS, PL_FCI_UPRIGHT, PL_FCI_MEDIUM);
  const int rows = std::max(figure.rows, 1);
  const int cols = std::max(figure.cols, 1);
  const double cellWidth = canvas.page.Width() / cols;
  const double cellHeight = canvas.page.Height() / rows;
  // Text and marks shrink in small cells, down to 70% of their full size.
  canvas.scale = std::clamp(std::min(cellWidth / 130.0, cellHeight / 100.0), 0.7, 1.0);
  const std::size_t count = std::min(figure.panels.size(), static_cast<std::size_t>(rows) * cols);
  for (std::size_t k = 0; k < count; ++k) {
    const int row = static_cast<int>(k) / cols;
    const int col = static_cast<int>(k) % cols;
    const Rect cell{col * cellWidth, (col + 1) * cellWidth, canvas.page.y1 - (row + 1) * cellHeight,
                    canvas.page.y1 - row * cellHeight};
    PanelPainter(figure.panels[k], cell, canvas).Paint();
  }
}

}  // namespace plot
