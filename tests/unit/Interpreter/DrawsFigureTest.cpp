// The figure of plotdraws: its panels, series and axis words for one and several chains, and its
// rendering.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

#include "DrawsFigure.h"
#include "PlotRenderer.h"
#include "RandomEngine.h"

namespace {

// Draws of `elements` parameters in `chains` chains of n: AR(1) series with coefficient 0.6.
std::vector<std::vector<Eigen::VectorXd>> Draws(std::size_t elements, std::size_t chains, Eigen::Index n) {
  RandomEngine rng;
  rng.Seed(17);
  std::vector<std::vector<Eigen::VectorXd>> draws(elements);
  for (auto& element : draws) {
    for (std::size_t c = 0; c < chains; ++c) {
      Eigen::VectorXd x(n);
      double v = static_cast<double>(c);
      for (Eigen::Index i = 0; i < n; ++i) x(i) = v = 0.6 * v + rng.Normal();
      element.push_back(x);
    }
  }
  return draws;
}

}  // namespace

TEST(DrawsFigure, PanelsPerElementAndChain) {
  const std::vector<std::string> elements = {"y$x", "y$constant", "tau"};
  for (const std::size_t chains : {std::size_t{1}, std::size_t{2}}) {
    const Eigen::Index n = 300;
    const auto draws = Draws(elements.size(), chains, n);
    const Figure figure = DrawsFigure("Figure 3", elements, draws);
    const bool several = chains > 1;
    EXPECT_EQ(figure.title, "Figure 3");
    ASSERT_EQ(figure.rows, 3);
    ASSERT_EQ(figure.cols, 4);
    ASSERT_EQ(figure.panels.size(), 12u);
    for (std::size_t e = 0; e < elements.size(); ++e) {
      const std::string& name = elements[e];
      const Panel& histogram = figure.panels[4 * e];
      const Panel& acf = figure.panels[4 * e + 1];
      const Panel& density = figure.panels[4 * e + 2];
      const Panel& trace = figure.panels[4 * e + 3];
      EXPECT_EQ(histogram.title, "Histogram: " + name);
      EXPECT_EQ(acf.title, "ACF: " + name);
      EXPECT_EQ(density.title, "KDensity: " + name);
      EXPECT_EQ(trace.title, "Lines: " + name);
      EXPECT_EQ(histogram.ylabel, "frequency");
      EXPECT_EQ(acf.xlabel, "lag");
      EXPECT_EQ(density.ylabel, several ? "density (per chain)" : "density");
      EXPECT_EQ(trace.xlabel, several ? "draw index (per chain)" : "draw index");

      // The histogram counts every draw of every chain once.
      ASSERT_EQ(histogram.series.size(), 1u);
      const Series& bars = histogram.series[0];
      EXPECT_EQ(bars.kind, SeriesKind::Histogram);
      EXPECT_EQ(bars.x.size(), bars.y.size() + 1);
      EXPECT_EQ(bars.y.sum(), static_cast<double>(n) * static_cast<double>(chains));

      // Autocorrelations from lag 0, where they are 1, averaged over the chains.
      ASSERT_EQ(acf.series.size(), 1u);
      const Series& r = acf.series[0];
      EXPECT_EQ(r.kind, SeriesKind::ACF);
      ASSERT_EQ(r.x.size(), r.y.size());
      ASSERT_EQ(r.y.size(), 51);
      EXPECT_EQ(r.x(0), 0.0);
      EXPECT_NEAR(r.y(0), 1.0, 1e-12);
      EXPECT_NEAR(r.y(1), 0.6, 0.15);
      EXPECT_NEAR(r.band, 1.96 / std::sqrt(static_cast<double>(n) * static_cast<double>(chains)), 1e-12);

      // One density and one trace per chain, named in a legend when there are several.
      ASSERT_EQ(density.series.size(), chains);
      ASSERT_EQ(trace.series.size(), chains);
      EXPECT_EQ(density.legend, several);
      EXPECT_EQ(trace.legend, several);
      for (std::size_t c = 0; c < chains; ++c) {
        const std::string label = several ? "chain " + std::to_string(c + 1) : "";
        EXPECT_EQ(density.series[c].kind, SeriesKind::KDensity);
        EXPECT_EQ(density.series[c].label, label);
        EXPECT_GT(density.series[c].y.size(), 1);
        EXPECT_EQ(trace.series[c].kind, SeriesKind::Lines);
        EXPECT_EQ(trace.series[c].label, label);
        EXPECT_EQ(trace.series[c].y, draws[e][c]);
      }
    }
  }
}

// Short chains get fewer lags (a third of a chain); a constant element still gives a density to draw.
TEST(DrawsFigure, ShortAndConstantDraws) {
  std::vector<std::vector<Eigen::VectorXd>> draws = Draws(1, 2, 30);
  draws.push_back({Eigen::VectorXd::Constant(30, 2.5), Eigen::VectorXd::Constant(30, 2.5)});
  const Figure figure = DrawsFigure("Figure 1", {"b", "fixed"}, draws);
  EXPECT_EQ(figure.panels[1].series[0].y.size(), 11);
  EXPECT_EQ(figure.panels[4].series[0].y.sum(), 60.0);
  const Series& curve = figure.panels[6].series[0];
  ASSERT_GT(curve.x.size(), 1);
  EXPECT_LT(curve.x(0), 2.5);
  EXPECT_GT(curve.x(curve.x.size() - 1), 2.5);
  EXPECT_TRUE(curve.y.allFinite());
}

TEST(DrawsFigure, RendersToPng) {
  const Figure figure = DrawsFigure("Figure 2", {"y$x", "y$z", "sigma"}, Draws(3, 2, 2000));
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("tavix_draws_figure_" + std::to_string(::getpid()) + ".png");
  ASSERT_EQ(RenderFigureToFile(figure, path.string(), "png", RenderSize{1200, 900, 0, 0}), "");
  std::ifstream in(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::filesystem::remove(path);
  ASSERT_GT(bytes.size(), 24u);
  EXPECT_EQ(bytes.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
  // The header chunk holds the size asked for.
  auto word = [&bytes](std::size_t at) {
    unsigned v = 0;
    for (std::size_t k = 0; k < 4; ++k) v = v << 8 | static_cast<unsigned char>(bytes[at + k]);
    return v;
  };
  EXPECT_EQ(word(16), 1200u);
  EXPECT_EQ(word(20), 900u);
}
