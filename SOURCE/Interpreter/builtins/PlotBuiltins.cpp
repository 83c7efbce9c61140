// plot, scatter, hist, kden, acf, multiplot and subplot: figures built from matrices.
#include <cmath>
#include <set>

#include "BuiltinFamilies.h"
#include "DensityEstimates.h"
#include "ExecContext.h"
#include "Messages.h"
#include "ValueKind.h"

namespace {

// What a plot statement's options ask for.
struct PlotOptions {
  std::string title, xlabel, ylabel, figure;
  std::vector<std::string> legend;
  bool grid = true;
  int bins = 0;
  double bandwidth = 0.0;
  int lags = 20;
};

// Reads the options the function takes (`extra`: "bins", "bandwidth" or "lags").
PlotOptions ReadOptions(const BuiltinCall& call, const std::string& extra) {
  PlotOptions o;
  std::set<std::string> seen;
  const std::string f = "\"" + call.Name() + "\"";
  for (const auto& option : call.Options()) {
    const std::string& name = option.name;
    if (!seen.insert(name).second) call.Fail("Optional argument \"" + name + "\" was defined multiple times.");
    const TavixValue& v = option.value;
    auto text = [&](std::string& out) {
      if (v.code != kind::STRING) call.Fail("The \"" + name + "\" option of " + f + " must be a string.");
      out = *v.string;
    };
    if (name == "title") {
      text(o.title);
    } else if (name == "xlabel") {
      text(o.xlabel);
    } else if (name == "ylabel") {
      text(o.ylabel);
    } else if (name == "figure") {
      text(o.figure);
    } else if (name == "legend") {
      if (option.names) {
        o.legend = *option.names;
      } else if (v.code == kind::STRING) {
        o.legend = {*v.string};
      } else {
        call.Fail("The \"legend\" option of " + f + " must be a list of strings, for example {\"GDP\", \"CPI\"}.");
      }
    } else if (name == "grid") {
      double x = 0.0;
      if (v.code != kind::MATRIX || !IntrCheck_Number(*v.matrix, x) || (x != 0.0 && x != 1.0)) {
        call.Fail("The \"grid\" option of " + f + " must be true or false.");
      }
      o.grid = x == 1.0;
    } else if (name == extra && name == "bandwidth") {
      if (v.code != kind::MATRIX || !IntrCheck_PositiveNumber(*v.matrix, o.bandwidth)) {
        call.Fail("The \"bandwidth\" option of " + f + " must be a positive number.");
      }
    } else if (name == extra) {  // "bins" or "lags"
      int n = 0;
      if (v.code != kind::MATRIX || !IntrCheck_PositiveInteger(*v.matrix, n)) {
        call.Fail("The \"" + name + "\" option of " + f + " must be a positive integer.");
      }
      (name == "bins" ? o.bins : o.lags) = n;
    } else {
      call.Fail("Function " + f + " does not take an option called \"" + name + "\".");
    }
  }
  return o;
}

// Argument i as a matrix with at least one element.
Eigen::MatrixXd Data(const BuiltinCall& call, std::size_t i) {
  const auto m = call.Numeric(i);
  if (m->size() == 0) call.Fail("Function \"" + call.Name() + "\" cannot plot an empty matrix.");
  return *m;
}

// The finite values of a column.
Eigen::VectorXd Finite(const Eigen::VectorXd& column) {
  std::vector<double> kept;
  for (Eigen::Index i = 0; i < column.size(); ++i) {
    if (std::isfinite(column(i))) kept.push_back(column(i));
  }
  return Eigen::Map<Eigen::VectorXd>(kept.data(), static_cast<Eigen::Index>(kept.size()));
}

// A column of a plotted sample with too few values to summarise stops the statement.
Eigen::VectorXd Sample(const BuiltinCall& call, const Eigen::MatrixXd& data, Eigen::Index j, Eigen::Index least) {
  Eigen::VectorXd x = Finite(data.col(j));
  if (x.size() < least) {
    call.Fail("Function \"" + call.Name() + "\" needs at least " + std::to_string(least) +
              " values that are not missing in each column.");
  }
  return x;
}

Panel NewPanel(const BuiltinCall& call, const PlotOptions& o, std::vector<Series> series,
               const std::string& xlabel, const std::string& ylabel) {
  Panel panel;
  panel.title = o.title;
  panel.xlabel = o.xlabel.empty() ? xlabel : o.xlabel;
  panel.ylabel = o.ylabel.empty() ? ylabel : o.ylabel;
  panel.grid = o.grid;
  if (!o.legend.empty()) {
    if (o.legend.size() != series.size()) {
      call.Fail("The \"legend\" option of \"" + call.Name() + "\" must name each of the " +
                std::to_string(series.size()) + " series.");
    }
    for (std::size_t i = 0; i < series.size(); ++i) series[i].label = o.legend[i];
    panel.legend = true;
  }
  panel.series = std::move(series);
  return panel;
}

constexpr const char* kTooManyFigures =
    "Too many figure windows are open. Either close some figures or increase the maximum number of "
    "figures Tavix displays by using the function \"maxfigures\".";

// Puts `panel` where the statement draws: into the figure named by "figure" (replacing its
// content), into the panel of the latest multiplot that subplot chose, or into a new figure.
// Shows it in a window when there is one, and yields the figure's title.
TavixValue Place(const BuiltinCall& call, Panel panel, const std::string& figureOption) {
  Session& session = call.Context().session();
  if (session.parallelCall) call.Fail(msg::kFiguresInParallelCall);
  FigureRegistry& figures = session.figures;
  std::shared_ptr<Figure> figure;
  if (!figureOption.empty()) {
    const auto existing = figures.Find(figureOption);
    if (!existing) call.Fail("There is no figure window with title \"" + figureOption + "\" currently open.");
    figure = std::make_shared<Figure>(existing->title, 1, 1);
    figure->panels[0] = std::move(panel);
    if (figures.multiplot == figure->title) figures.multiplot.clear();
  } else if (figures.chosenPanel >= 0 && figures.Find(figures.multiplot)) {
    figure = std::make_shared<Figure>(*figures.Find(figures.multiplot));
    figure->panels[static_cast<std::size_t>(figures.chosenPanel)] = std::move(panel);
    figures.chosenPanel = -1;
  } else {
    if (static_cast<int>(figures.Count()) >= session.maxFigures) call.Fail(kTooManyFigures);
    figure = std::make_shared<Figure>(figures.NextTitle(), 1, 1);
    figure->panels[0] = std::move(panel);
  }
  const std::string title = figure->title;
  figures.Store(figure);
  if (session.postToFrontEnd) {
    FrontEndRequest request;
    request.kind = FrontEndRequest::Kind::ShowFigure;
    request.figure = figure;
    call.RequestFrontEnd(request);
  }
  return TavixValue::FromString(title);
}

Eigen::VectorXd Steps(Eigen::Index n) { return Eigen::VectorXd::LinSpaced(n, 1.0, static_cast<double>(n)); }

// plot(Y) or plot(X, Y): each column of Y a line, against 1..rows or against X.
TavixValue Plot(const BuiltinCall& call) {
  const PlotOptions o = ReadOptions(call, "");
  std::vector<Series> series;
  if (call.Count() == 1) {
    const Eigen::MatrixXd y = Data(call, 0);
    const Eigen::MatrixXd Y = y.rows() == 1 ? Eigen::MatrixXd(y.transpose()) : y;
    for (Eigen::Index j = 0; j < Y.cols(); ++j) series.push_back({SeriesKind::Lines, Steps(Y.rows()), Y.col(j), "", 0.0});
    return Place(call, NewPanel(call, o, std::move(series), "", ""), o.figure);
  }
  const Eigen::MatrixXd x = Data(call, 0);
  const Eigen::MatrixXd y = Data(call, 1);
  const Eigen::MatrixXd X = x.rows() == 1 ? Eigen::MatrixXd(x.transpose()) : x;
  const Eigen::MatrixXd Y = y.rows() == 1 && X.rows() != 1 ? Eigen::MatrixXd(y.transpose()) : y;
  if (X.rows() != Y.rows() || (X.cols() != 1 && X.cols() != Y.cols())) {
    call.Fail("The arguments of \"" + call.Name() + "\" must have the same number of rows, and the first "
              "either one column or as many as the second.");
  }
  const SeriesKind kind = call.Name() == "scatter" ? SeriesKind::Scatter : SeriesKind::XYLines;
  for (Eigen::Index j = 0; j < Y.cols(); ++j) {
    series.push_back({kind, X.col(X.cols() == 1 ? 0 : j), Y.col(j), "", 0.0});
  }
  return Place(call, NewPanel(call, o, std::move(series), "", ""), o.figure);
}

// A series for each column of argument 0 (a row vector is one column), made by `make` from the
// column's values that are not missing, of which there must be at least `least`.
template <class Make>
std::vector<Series> PerColumn(const BuiltinCall& call, Eigen::Index least, Make make) {
  const Eigen::MatrixXd data = Data(call, 0);
  const Eigen::MatrixXd X = data.rows() == 1 ? Eigen::MatrixXd(data.transpose()) : data;
  std::vector<Series> series;
  for (Eigen::Index j = 0; j < X.cols(); ++j) series.push_back(make(Sample(call, X, j, least), j));
  return series;
}

// hist(x): a histogram of each column (bins by the Freedman-Diaconis rule, or "bins").
TavixValue Hist(const BuiltinCall& call) {
  const PlotOptions o = ReadOptions(call, "bins");
  auto series = PerColumn(call, 1, [&](const Eigen::VectorXd& x, Eigen::Index) {
    Series s;
    s.kind = SeriesKind::Histogram;
    numerics::HistogramCounts(x, o.bins > 0 ? o.bins : numerics::HistogramBins(x), s.x, s.y);
    return s;
  });
  return Place(call, NewPanel(call, o, std::move(series), "", "frequency"), o.figure);
}

// kden(x): a Gaussian kernel density of each column (Silverman's bandwidth, or "bandwidth").
TavixValue KDen(const BuiltinCall& call) {
  const PlotOptions o = ReadOptions(call, "bandwidth");
  auto series = PerColumn(call, 2, [&](const Eigen::VectorXd& x, Eigen::Index j) {
    const double h = o.bandwidth > 0.0 ? o.bandwidth : numerics::SilvermanBandwidth(x);
    if (!(h > 0.0) || !std::isfinite(h)) {
      call.Fail("The values of column " + std::to_string(j + 1) +
                " are all equal: give a positive \"bandwidth\" to draw their density.");
    }
    Series s;
    s.kind = SeriesKind::KDensity;
    numerics::KernelDensity(x, h, 256, s.x, s.y);
    return s;
  });
  return Place(call, NewPanel(call, o, std::move(series), "", "density"), o.figure);
}

// acf(x): the autocorrelations of a series at lags 0 to "lags" (20), with 95% bands.
TavixValue Acf(const BuiltinCall& call) {
  const PlotOptions o = ReadOptions(call, "lags");
  const Eigen::MatrixXd data = Data(call, 0);
  if (data.cols() != 1 && data.rows() != 1) call.Fail("Function \"acf\" takes one series (a vector).");
  const Eigen::VectorXd x = Finite(Eigen::VectorXd(data.reshaped()));
  if (x.size() <= o.lags) {
    call.Fail("Function \"acf\" needs more values than lags: " + std::to_string(x.size()) + " values for " +
              std::to_string(o.lags) + " lags.");
  }
  Series s;
  s.kind = SeriesKind::ACF;
  s.y = numerics::Autocorrelations(x, o.lags);
  s.x = Eigen::VectorXd::LinSpaced(o.lags + 1, 0.0, static_cast<double>(o.lags));
  s.band = 1.96 / std::sqrt(static_cast<double>(x.size()));
  return Place(call, NewPanel(call, o, {std::move(s)}, "lag", "autocorrelation"), o.figure);
}

// multiplot(r, c): a new figure with an r by c grid of panels, filled by subplot and plots.
TavixValue Multiplot(const BuiltinCall& call) {
  int rows = 0, cols = 0;
  if (!IntrCheck_PositiveInteger(*call.Numeric(0), rows) || !IntrCheck_PositiveInteger(*call.Numeric(1), cols) ||
      rows > 10 || cols > 10) {
    call.Fail("The arguments passed to \"multiplot\" must be integers between 1 and 10.");
  }
  Session& session = call.Context().session();
  if (session.parallelCall) call.Fail(msg::kFiguresInParallelCall);
  if (static_cast<int>(session.figures.Count()) >= session.maxFigures) call.Fail(kTooManyFigures);
  auto figure = std::make_shared<Figure>(session.figures.NextTitle(), rows, cols);
  session.figures.multiplot = figure->title;
  session.figures.chosenPanel = -1;
  session.figures.Store(figure);
  if (session.postToFrontEnd) {
    FrontEndRequest request;
    request.kind = FrontEndRequest::Kind::ShowFigure;
    request.figure = figure;
    call.RequestFrontEnd(request);
  }
  return TavixValue::FromString(figure->title);
}

// subplot(k): the next plot statement draws into panel k (row by row) of the latest multiplot.
TavixValue Subplot(const BuiltinCall& call) {
  if (call.Context().session().parallelCall) call.Fail(msg::kFiguresInParallelCall);
  FigureRegistry& figures = call.Context().session().figures;
  const auto figure = figures.Find(figures.multiplot);
  if (!figure) call.Fail("There is no multiplot figure open: use \"multiplot\" first.");
  int k = 0;
  const int panels = figure->rows * figure->cols;
  if (!IntrCheck_PositiveInteger(*call.Numeric(0), k) || k > panels) {
    call.Fail("The argument passed to \"subplot\" must be an integer between 1 and " + std::to_string(panels) + ".");
  }
  figures.chosenPanel = k - 1;
  return {};
}

const BuiltinRow kRows[] = {
    {"plot", ArgCounts(1, 2), true, Plot},
    {"scatter", ArgCounts(2), true, Plot},
    {"hist", ArgCounts(1), true, Hist},
    {"kden", ArgCounts(1), true, KDen},
    {"acf", ArgCounts(1), true, Acf},
    {"multiplot", ArgCounts(2), false, Multiplot},
    {"subplot", ArgCounts(1), false, Subplot},
};

}  // namespace

std::span<const BuiltinRow> PlotBuiltins() { return kRows; }
