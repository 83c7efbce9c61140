// Figures of every kind exported to every format and checked as files; failures that must come
// back as messages; the RGB buffer; the axis ranges and ticks behind the drawing.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numbers>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include "Figure.h"
#include "PlotAxes.h"
#include "PlotRenderer.h"

using Eigen::VectorXd;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// A fresh directory for one test's files, removed with everything in it afterwards.
class TempDir {
 public:
  TempDir() {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    m_path = std::filesystem::temp_directory_path() /
             (std::string("tavix_plot_") + info->name() + "_" + std::to_string(::getpid()));
    std::filesystem::remove_all(m_path);
    std::filesystem::create_directories(m_path);
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  std::string File(const std::string& name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

unsigned Byte(const std::string& bytes, std::size_t i) { return static_cast<unsigned char>(bytes[i]); }

unsigned BigEndian(const std::string& bytes, std::size_t at, int count) {
  unsigned value = 0;
  for (int k = 0; k < count; ++k) value = value << 8 | Byte(bytes, at + k);
  return value;
}

// The width and height in a PNG's header chunk, or false when the file is not a PNG.
bool PngSize(const std::string& bytes, unsigned& width, unsigned& height) {
  static const std::string kSignature("\x89PNG\r\n\x1a\n", 8);
  if (bytes.size() < 24 || bytes.compare(0, 8, kSignature) != 0 || bytes.compare(12, 4, "IHDR") != 0)
    return false;
  width = BigEndian(bytes, 16, 4);
  height = BigEndian(bytes, 20, 4);
  return true;
}

// The width and height in a JPEG's start-of-frame segment, or false when there is none.
bool JpegSize(const std::string& bytes, unsigned& width, unsigned& height) {
  if (bytes.size() < 4 || Byte(bytes, 0) != 0xFF || Byte(bytes, 1) != 0xD8) return false;
  std::size_t at = 2;
  while (at + 9 < bytes.size()) {
    if (Byte(bytes, at) != 0xFF) return false;
    const unsigned marker = Byte(bytes, at + 1);
    const bool frame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (frame) {
      height = BigEndian(bytes, at + 5, 2);
      width = BigEndian(bytes, at + 7, 2);
      return true;
    }
    at += 2 + BigEndian(bytes, at + 2, 2);
  }
  return false;
}

VectorXd Wave(int n, double phase) {
  VectorXd y(n);
  for (int i = 0; i < n; ++i) y[i] = std::sin(0.07 * i + phase) + 0.3 * std::cos(0.31 * i);
  return y;
}

// A panel with one series of `kind` and its own title and axis labels.
Panel PanelOf(SeriesKind kind) {
  Panel panel;
  const std::string name = SeriesKindName(kind);
  panel.title = "Title of " + name;
  panel.xlabel = "X axis of " + name;
  panel.ylabel = "Y axis of " + name;
  panel.legend = true;
  Series series;
  series.kind = kind;
  series.label = "series " + name;
  switch (kind) {
    case SeriesKind::Lines: series.y = Wave(300, 0.0); break;
    case SeriesKind::XYLines:
    case SeriesKind::KDensity:
      series.x = VectorXd::LinSpaced(200, -3, 3);
      series.y = (-0.5 * series.x.array().square()).exp() / std::sqrt(2 * std::numbers::pi);
      break;
    case SeriesKind::Scatter:
      series.x = Wave(300, 1.0);
      series.y = Wave(300, 2.0);
      break;
    case SeriesKind::Histogram:
      series.x = VectorXd::LinSpaced(13, 0, 6);
      series.y = VectorXd::LinSpaced(12, 1, 12).array().sqrt() * 10;
      break;
    case SeriesKind::ACF:
      series.x = VectorXd::LinSpaced(21, 0, 20);
      series.y = VectorXd::LinSpaced(21, 0, 20).unaryExpr([](double k) { return std::pow(0.7, k); });
      series.band = 0.1;
      break;
  }
  panel.series.push_back(series);
  return panel;
}

Figure SingleFigure(SeriesKind kind) {
  Figure figure("Figure 1", 1, 1);
  figure.panels[0] = PanelOf(kind);
  return figure;
}

Figure GridFigure() {
  Figure figure("Figure 2", 2, 2);
  figure.panels[0] = PanelOf(SeriesKind::Lines);
  figure.panels[1] = PanelOf(SeriesKind::Histogram);
  figure.panels[2] = PanelOf(SeriesKind::ACF);
  figure.panels[3] = PanelOf(SeriesKind::KDensity);
  return figure;
}

const SeriesKind kKinds[] = {SeriesKind::Lines,     SeriesKind::XYLines, SeriesKind::Scatter,
                             SeriesKind::Histogram, SeriesKind::ACF,     SeriesKind::KDensity};

std::size_t DistinctColours(const std::vector<unsigned char>& rgb) {
  std::set<unsigned> colours;
  for (std::size_t i = 0; i + 2 < rgb.size(); i += 3)
    colours.insert(rgb[i] << 16 | rgb[i + 1] << 8 | rgb[i + 2]);
  return colours.size();
}

// Checks the file of `figure` in `format` at 640 x 480 and returns its bytes.
std::string ExportAndCheck(const Figure& figure, const TempDir& dir, const std::string& name,
                           const std::string& format) {
  const std::string path = dir.File(name + "." + format);
  const std::string problem = RenderFigureToFile(figure, path, format, RenderSize{640, 480, 0, 0});
  EXPECT_EQ(problem, "") << name << " as " << format;
  const std::string bytes = ReadBytes(path);
  unsigned width = 0;
  unsigned height = 0;
  if (format == "png") {
    EXPECT_TRUE(PngSize(bytes, width, height)) << name;
    EXPECT_EQ(width, 640u);
    EXPECT_EQ(height, 480u);
  } else if (format == "jpeg") {
    EXPECT_TRUE(JpegSize(bytes, width, height)) << name;
    EXPECT_EQ(width, 640u);
    EXPECT_EQ(height, 480u);
  } else if (format == "svg") {
    EXPECT_NE(bytes.find("<svg"), std::string::npos) << name;
    EXPECT_NE(bytes.find("width=\"640pt\""), std::string::npos) << name;
    EXPECT_NE(bytes.find("height=\"480pt\""), std::string::npos) << name;
  } else if (format == "eps") {
    EXPECT_EQ(bytes.compare(0, 10, "%!PS-Adobe"), 0) << name;
    EXPECT_NE(bytes.find("%%BoundingBox: 0 0 640 480"), std::string::npos) << name;
  } else if (format == "pdf") {
    EXPECT_EQ(bytes.compare(0, 5, "%PDF-"), 0) << name;
    EXPECT_NE(bytes.find("/MediaBox [ 0 0 640 480 ]"), std::string::npos) << name;
  }
  return bytes;
}

}  // namespace

TEST(PlotRenderer, EveryKindExportsToEveryFormat) {
  TempDir dir;
  for (SeriesKind kind : kKinds) {
    const Figure figure = SingleFigure(kind);
    const Panel& panel = figure.panels[0];
    for (const std::string format : {"png", "jpeg", "svg", "eps", "pdf"}) {
      const std::string bytes = ExportAndCheck(figure, dir, SeriesKindName(kind), format);
      if (format == "svg" || format == "eps") {
        for (const std::string& text : {panel.title, panel.xlabel, panel.ylabel}) {
          EXPECT_NE(bytes.find(text), std::string::npos) << text << " in " << format;
        }
      }
    }
    std::vector<unsigned char> rgb;
    ASSERT_EQ(RenderFigureToRGB(figure, 320, 240, rgb), "");
    EXPECT_GT(DistinctColours(rgb), 1u) << SeriesKindName(kind);
  }
}

TEST(PlotRenderer, MultiPanelFigureExportsToEveryFormat) {
  TempDir dir;
  const Figure figure = GridFigure();
  for (const std::string format : {"png", "jpeg", "svg", "eps", "pdf"}) {
    const std::string bytes = ExportAndCheck(figure, dir, "grid", format);
    if (format == "svg" || format == "eps") {
      for (const Panel& panel : figure.panels)
        EXPECT_NE(bytes.find(panel.title), std::string::npos) << format;
    }
  }
}

TEST(PlotRenderer, RgbBufferIsFilledTopDownAndEmptyPanelsStayBlank) {
  Figure figure("Figure 3", 1, 2);
  figure.panels[1] = PanelOf(SeriesKind::Histogram);  // the left panel stays empty
  std::vector<unsigned char> rgb(5, 0);
  ASSERT_EQ(RenderFigureToRGB(figure, 400, 200, rgb), "");
  ASSERT_EQ(rgb.size(), 400u * 200u * 3u);
  std::vector<unsigned char> left;
  std::vector<unsigned char> right;
  for (int row = 0; row < 200; ++row) {
    const auto line = rgb.begin() + row * 400 * 3;
    left.insert(left.end(), line, line + 200 * 3);
    right.insert(right.end(), line + 200 * 3, line + 400 * 3);
  }
  EXPECT_EQ(DistinctColours(left), 1u);
  EXPECT_EQ(left[0], 255);  // white
  EXPECT_GT(DistinctColours(right), 10u);
  // The title sits at the top: the first rows of the right half hold dark text pixels, the same
  // number of rows at the bottom (below the axis label) none.
  const auto darkIn = [&](int fromRow, int toRow) {
    int dark = 0;
    for (int row = fromRow; row < toRow; ++row) {
      for (int col = 200; col < 400; ++col) dark += rgb[(row * 400 + col) * 3] < 100 ? 1 : 0;
    }
    return dark;
  };
  EXPECT_GT(darkIn(0, 20), 0);
  EXPECT_EQ(darkIn(197, 200), 0);
}

TEST(PlotRenderer, FailuresComeBackAsMessages) {
  TempDir dir;
  const Figure figure = SingleFigure(SeriesKind::Lines);
  const std::string blocker = dir.File("plain_file");
  std::ofstream(blocker) << "not a directory";
  const RenderSize size;
  const std::string inFile = RenderFigureToFile(figure, blocker + "/figure.png", "png", size);
  EXPECT_NE(inFile.find("cannot write"), std::string::npos) << inFile;
  const std::string noDirectory = RenderFigureToFile(figure, dir.File("missing/figure.eps"), "eps", size);
  EXPECT_NE(noDirectory.find("cannot write"), std::string::npos) << noDirectory;
  EXPECT_FALSE(std::filesystem::exists(dir.File("missing")));
  const std::string isDirectory = RenderFigureToFile(figure, dir.File(""), "jpeg", size);
  EXPECT_NE(isDirectory, "");
  const std::string format = RenderFigureToFile(figure, dir.File("figure.bmp"), "bmp", size);
  EXPECT_NE(format.find("unknown figure format"), std::string::npos) << format;
  EXPECT_FALSE(std::filesystem::exists(dir.File("figure.bmp")));
  EXPECT_NE(RenderFigureToFile(figure, dir.File("tiny.png"), "png", RenderSize{4, 4, 0, 0}), "");
  EXPECT_NE(RenderFigureToFile(Figure("Figure 4", 0, 1), dir.File("none.png"), "png", size), "");
  std::vector<unsigned char> rgb;
  EXPECT_NE(RenderFigureToRGB(figure, 0, 100, rgb), "");
  // Nothing above disturbed the library: the next render works.
  ExportAndCheck(figure, dir, "after_failures", "png");
}

TEST(PlotRenderer, AwkwardDataStillDraws) {
  TempDir dir;
  Figure figure("Figure 5", 2, 2);
  Series gaps;
  gaps.kind = SeriesKind::Lines;
  gaps.y = VectorXd::LinSpaced(50, 0, 1);
  gaps.y[10] = kNaN;
  gaps.y[20] = kInf;
  gaps.y[21] = -kInf;
  figure.panels[0].series.push_back(gaps);
  Series constant;
  constant.kind = SeriesKind::Scatter;
  constant.x = VectorXd::Constant(5, 3.0);
  constant.y = VectorXd::Constant(5, 3.0);
  figure.panels[1].series.push_back(constant);
  Series nothing;  // no finite point at all
  nothing.kind = SeriesKind::XYLines;
  nothing.x = VectorXd::Constant(3, kNaN);
  nothing.y = VectorXd::Constant(3, 1.0);
  figure.panels[2].series.push_back(nothing);
  Series ragged;  // edges and counts that do not match
  ragged.kind = SeriesKind::Histogram;
  ragged.x = VectorXd::LinSpaced(4, 0, 3);
  ragged.y = VectorXd::Constant(7, 2.0);
  ragged.label = "label with # and \"quotes\" <tags>";
  figure.panels[3].series.push_back(ragged);
  figure.panels[3].legend = true;
  for (const std::string format : {"png", "svg", "eps"}) ExportAndCheck(figure, dir, "awkward", format);
  std::vector<unsigned char> rgb;
  EXPECT_EQ(RenderFigureToRGB(figure, 500, 400, rgb), "");
}

TEST(PlotRenderer, RendersFromSeveralThreads) {
  TempDir dir;
  std::vector<std::string> results(4);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      const Figure figure = SingleFigure(kKinds[t]);
      results[t] =
          RenderFigureToFile(figure, dir.File("thread" + std::to_string(t) + ".png"), "png", RenderSize{});
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < 4; ++t) {
    EXPECT_EQ(results[t], "");
    unsigned width = 0;
    unsigned height = 0;
    EXPECT_TRUE(PngSize(ReadBytes(dir.File("thread" + std::to_string(t) + ".png")), width, height));
    EXPECT_EQ(width, 800u);
  }
}

TEST(PlotAxes, NiceTicksStayInsideTheRange) {
  const plot::AxisTicks ticks = plot::NiceTicks(-0.13, 1.07, 6);
  ASSERT_EQ(ticks.values.size(), 6u);  // steps of 0.2 from 0 to 1
  EXPECT_EQ(ticks.labels.front(), "0.0");
  EXPECT_EQ(ticks.labels.back(), "1.0");
  const plot::AxisTicks integers = plot::NiceTicks(1, 2000, 5);
  EXPECT_EQ(integers.labels, (std::vector<std::string>{"500", "1000", "1500", "2000"}));
  const plot::AxisTicks negative = plot::NiceTicks(-5.2, -4.9, 4);
  ASSERT_GE(negative.values.size(), 2u);
  for (double v : negative.values) {
    EXPECT_GE(v, -5.2);
    EXPECT_LE(v, -4.9);
  }
  EXPECT_EQ(negative.labels.front(), "-5.2");
  // Very large values go to exponent notation, and every label differs.
  const plot::AxisTicks large = plot::NiceTicks(1e7, 1.4e7, 5);
  EXPECT_EQ(large.labels.front(), "1.0e+07");
  EXPECT_EQ(std::set<std::string>(large.labels.begin(), large.labels.end()).size(), large.labels.size());
  EXPECT_TRUE(plot::NiceTicks(1, 1, 5).values.empty());
  EXPECT_TRUE(plot::NiceTicks(0, kNaN, 5).values.empty());
}

TEST(PlotAxes, RangesSkipNonFiniteValuesAndWidenConstantOnes) {
  Panel panel;
  Series series;
  series.kind = SeriesKind::XYLines;
  series.x = (VectorXd(4) << 1, 2, kNaN, 4).finished();
  series.y = (VectorXd(4) << 5, kInf, 100, 5).finished();
  panel.series.push_back(series);
  const plot::PanelRanges ranges = plot::DataRanges(panel);
  EXPECT_TRUE(ranges.hasData);
  EXPECT_DOUBLE_EQ(ranges.x.lo, 1.0);  // the points (2, inf) and (nan, 100) are skipped
  EXPECT_DOUBLE_EQ(ranges.x.hi, 4.0);
  EXPECT_DOUBLE_EQ(ranges.y.lo, 4.5);  // all drawn y equal 5: +/- 10%
  EXPECT_DOUBLE_EQ(ranges.y.hi, 5.5);

  Panel bars;
  Series histogram;
  histogram.kind = SeriesKind::Histogram;
  histogram.x = (VectorXd(3) << 0, 1, 2).finished();
  histogram.y = (VectorXd(2) << 4, 10).finished();
  bars.series.push_back(histogram);
  const plot::PanelRanges barRanges = plot::DataRanges(bars);
  EXPECT_EQ(barRanges.y.lo, 0.0);
  EXPECT_NEAR(barRanges.y.hi, 10.5, 1e-12);
  EXPECT_LT(barRanges.x.lo, 0.0);
  EXPECT_GT(barRanges.x.hi, 2.0);

  Panel acf;
  Series correlations;
  correlations.kind = SeriesKind::ACF;
  correlations.x = (VectorXd(2) << 0, 1).finished();
  correlations.y = (VectorXd(2) << 1, 0.5).finished();
  correlations.band = 0.2;
  acf.series.push_back(correlations);
  EXPECT_LT(plot::DataRanges(acf).y.lo, -0.2);  // the lower band shows

  Panel empty;
  empty.series.push_back(Series{});
  EXPECT_FALSE(plot::DataRanges(empty).hasData);
}
