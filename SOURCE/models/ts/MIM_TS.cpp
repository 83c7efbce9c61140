// MIM_TimeSeries: forecasts, impulse responses, stability tests and fitted values over the draws.
#include "MIM_TS.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <sstream>

#include "Dataset.h"
#include "DrawBlocks.h"
#include "EventDispatcher.h"
#include "Figure.h"
#include "RandomEngine.h"
#include "SummaryTable.h"

namespace {

using table::Cell;
using table::Padded;
using table::Quoted;

// Without "horizon": forecasts and impulse responses this many periods ahead.
constexpr Eigen::Index kDefaultForecastHorizon = 12;
constexpr Eigen::Index kDefaultResponseHorizon = 20;
// Predictions summarise at most this many draws, evenly spaced (every draw enters the means that
// store keeps).
constexpr Eigen::Index kPredictionDraws = 4000;
// Tables of fitted values longer than this are cut in the console ("prefix" keeps them all).
constexpr Eigen::Index kRowsShown = 20;
// Forecast shocks come from an engine of their own, so that a forecast repeats exactly.
constexpr std::uint64_t kForecastStream = 0x5eed0f0eca57ULL;

bool Interrupted(const ActionContext& context) { return context.interrupt && context.interrupt->load(); }

// The quantiles of `values` at ascending `levels`, interpolating between order statistics; the
// values are reordered. Each level partitions only what lies above the previous one.
void Quantiles(std::vector<double>& values, const std::vector<double>& levels, double* out) {
  auto from = values.begin();
  for (std::size_t l = 0; l < levels.size(); ++l) {
    const double h = static_cast<double>(values.size() - 1) * levels[l];
    const auto lo = static_cast<std::ptrdiff_t>(std::floor(h));
    const auto at = values.begin() + lo;
    if (at >= from) std::nth_element(from, at, values.end());
    const double low = *at;
    const double high = lo + 1 < static_cast<std::ptrdiff_t>(values.size()) ? *std::min_element(at + 1, values.end()) : low;
    out[l] = low + (h - static_cast<double>(lo)) * (high - low);
    from = at + 1;
  }
}

std::vector<double> Copied(const Eigen::Ref<const Eigen::VectorXd>& values) {
  return std::vector<double>(values.data(), values.data() + values.size());
}

Series Line(const Eigen::VectorXd& x, const Eigen::VectorXd& y, const std::string& label) {
  Series s;
  s.kind = SeriesKind::XYLines;
  s.x = x;
  s.y = y;
  s.label = label;
  return s;
}

// A band as one closed outline: along the lower edge, then back along the upper one, so that it
// is drawn in one colour with one legend entry.
Series Band(const Eigen::VectorXd& x, const Eigen::VectorXd& lower, const Eigen::VectorXd& upper,
            const std::string& label) {
  const Eigen::Index n = x.size();
  Eigen::VectorXd bx(2 * n + 1), by(2 * n + 1);
  bx << x, x.reverse(), x(0);
  by << lower, upper.reverse(), lower(0);
  return Line(bx, by, label);
}

// Cumulative sums over the horizons, `d` times: responses of the levels of a differenced series.
void Accumulate(Eigen::MatrixXd& responses, Eigen::Index m, int d) {
  for (int k = 0; k < d; ++k) {
    for (Eigen::Index h = 1; h < responses.rows() / m; ++h) responses.middleRows(h * m, m) += responses.middleRows((h - 1) * m, m);
  }
}

}  // namespace

bool MIM_TimeSeries::ProvidesAction(const std::string& action) const {
  return action == "forecast" || action == "irf" || action == "stabtest" || action == "predict" || action == "store";
}

std::vector<std::string> MIM_TimeSeries::SeriesNames() const {
  std::vector<std::string> names;
  std::istringstream words(Description().dependent);
  for (std::string name; words >> name;) names.push_back(name);
  return names;
}

int MIM_TimeSeries::Differences() const {
  const double d = ScalarResult("diff");
  return std::isnan(d) ? 0 : static_cast<int>(d);
}

Eigen::Index MIM_TimeSeries::Presample() const {
  const double p = ScalarResult("maxlags");
  return std::isnan(p) ? 0 : static_cast<Eigen::Index>(p);
}

std::vector<DynamicParameters> MIM_TimeSeries::ParameterDraws() const {
  const Eigen::MatrixXd& pooled = *GetpMatrix("draws");
  std::vector<DynamicParameters> draws;
  draws.reserve(static_cast<std::size_t>(pooled.rows()));
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) draws.push_back(ParametersOfDraw(pooled.row(g)));
  return draws;
}

DynamicParameters MIM_TimeSeries::ParametersAtMean() const {
  const Eigen::RowVectorXd mean = GetpMatrix("draws")->colwise().mean();
  return ParametersOfDraw(mean);
}

std::string MIM_TimeSeries::RunAction(const std::string& action, const ActionOptions& options,
                                      const ActionContext& context, ActionResult& result) const {
  if (action == "forecast") return Forecast(options, context, result);
  if (action == "irf") return ImpulseResponses(options, context, result);
  if (action == "stabtest") return StabilityTest(context, result);
  return FittedValues(action, options, context, result);
}

std::string MIM_TimeSeries::ReadSample(const ActionContext& context, const std::string& action, Sample& sample) const {
  if (!context.dataset) {
    return "The dataset of model " + Quoted(context.modelName) + " was cleared: \"" + action + "\" needs its series.";
  }
  const std::string status =
      ReadTimeSeries(*context.dataset, Description().keyword, SeriesNames(), ExogenousNames(), sample.data);
  if (status != "OK") return status;
  const int d = Differences();
  if (sample.data.Y.rows() <= d + Presample()) {
    return "The dataset of model " + Quoted(context.modelName) + " no longer holds enough observations of its series.";
  }
  sample.W = dynamic::Difference(sample.data.Y, d);
  sample.X = sample.data.X.bottomRows(sample.W.rows());
  return "OK";
}

std::string MIM_TimeSeries::ComputeForecasts(const ActionOptions& options, const ActionContext& context,
                                             Forecasts& out, bool& interrupted) const {
  const auto kx = static_cast<Eigen::Index>(ExogenousNames().size());
  std::string exogenous;
  for (const auto& x : ExogenousNames()) exogenous += (exogenous.empty() ? "" : " ") + x;
  if (kx > 0 && !options.WGiven) {
    return "Model " + Quoted(context.modelName) + " has exogenous variables (" + exogenous +
           "): give their values over the forecast periods in \"W\", one row per period and one column per variable.";
  }
  if (options.WGiven && options.W.cols() != kx) {
    return kx == 0 ? "Model " + Quoted(context.modelName) + " has no exogenous variables: leave out \"W\"."
                   : "\"W\" must have one column per exogenous variable of model " + Quoted(context.modelName) +
                         " (" + exogenous + "), " + std::to_string(kx) + " in all.";
  }
  if (options.WGiven && !options.W.allFinite()) return "\"W\" must not hold missing values.";
  Sample sample;
  std::string status = ReadSample(context, "forecast", sample);
  if (status != "OK") return status;
  const Eigen::Index horizon =
      options.horizon > 0 ? options.horizon : options.WGiven ? options.W.rows() : kDefaultForecastHorizon;
  const Eigen::MatrixXd Xf = options.WGiven ? options.W : Eigen::MatrixXd(horizon, 0);
  const std::vector<DynamicParameters> draws = ParameterDraws();
  const Eigen::Index m = static_cast<Eigen::Index>(SeriesNames().size());
  const auto G = static_cast<Eigen::Index>(draws.size());
  const int d = Differences();
  RandomEngine rng;
  rng.Seed(static_cast<std::uint64_t>(Description().gibbs.size() == 5 ? Description().gibbs(4) : 42) ^ kForecastStream);
  Eigen::MatrixXd paths(G, horizon * m);  // column h m + i: series i, period h + 1
  Eigen::MatrixXd noErrors = Eigen::MatrixXd::Zero(sample.W.rows(), m), shocks(horizon, m);
  for (Eigen::Index g = 0; g < G; ++g) {
    if ((g & 255) == 0 && Interrupted(context)) {
      interrupted = true;
      return "OK";
    }
    const DynamicParameters& p = draws[static_cast<std::size_t>(g)];
    const Eigen::MatrixXd E = p.MovingAverage() > 0 ? dynamic::Residuals(p, sample.W, sample.X, Presample()) : noErrors;
    const Eigen::MatrixXd L = p.Sigma.llt().matrixL();
    for (Eigen::Index i = 0; i < shocks.size(); ++i) shocks(i) = rng.Normal();
    const Eigen::MatrixXd future =
        dynamic::Integrate(dynamic::SimulateFuture(p, sample.W, E, Xf, L, shocks), sample.data.Y, d);
    for (Eigen::Index h = 0; h < horizon; ++h) paths.row(g).segment(h * m, m) = future.row(h);
  }

  std::vector<double> scratch;
  out.mean.resize(horizon, m);
  out.sd.resize(horizon, m);
  out.lower.resize(horizon, m);
  out.upper.resize(horizon, m);
  for (Eigen::Index h = 0; h < horizon; ++h) {
    for (Eigen::Index i = 0; i < m; ++i) {
      const Eigen::VectorXd column = paths.col(h * m + i);
      SummarizeDraws(column.data(), G, scratch, out.mean(h, i), out.sd(h, i), out.lower(h, i), out.upper(h, i));
    }
  }
  out.observed = sample.data.Y;
  out.last = sample.data.times.back();
  return "OK";
}

std::string MIM_TimeSeries::Forecast(const ActionOptions& options, const ActionContext& context,
                                     ActionResult& result) const {
  const std::vector<std::string> names = SeriesNames();
  Forecasts f;
  const std::string status = ComputeForecasts(options, context, f, result.interrupted);
  if (status != "OK" || result.interrupted) return status;
  const Eigen::Index horizon = f.mean.rows(), m = f.mean.cols();
  const Eigen::MatrixXd &mean = f.mean, &sd = f.sd, &lower = f.lower, &upper = f.upper;
  const std::string& last = f.last;
  std::string text = "\nForecasts of model " + Quoted(context.modelName) + ", " + std::to_string(horizon) +
                     " period" + (horizon == 1 ? "" : "s") + " after " + last +
                     " (posterior predictive: parameter uncertainty and future shocks)\n";
  context.out.Print(text);
  for (Eigen::Index i = 0; i < m; ++i) {
    context.out.Print("\n" + table::Header(names[static_cast<std::size_t>(i)], 14), true);
    text.clear();
    for (Eigen::Index h = 0; h < horizon; ++h) {
      text += table::Row(last + "+" + std::to_string(h + 1), 14, mean(h, i), sd(h, i), lower(h, i), upper(h, i));
    }
    context.out.Print(text);
  }

  // The end of the observed series (three times the horizon, at least 24 periods), then the
  // forecast mean and its 95% band.
  auto figure = std::make_shared<Figure>("", static_cast<int>(m), 1);
  const Eigen::Index T = f.observed.rows();
  const Eigen::Index shown = std::min(T, std::max<Eigen::Index>(24, 3 * horizon));
  const Eigen::VectorXd observed =
      Eigen::VectorXd::LinSpaced(shown, static_cast<double>(T - shown + 1), static_cast<double>(T));
  Eigen::VectorXd ahead(horizon + 1);
  for (Eigen::Index h = 0; h <= horizon; ++h) ahead(h) = static_cast<double>(T + h);
  for (Eigen::Index i = 0; i < m; ++i) {
    Panel& panel = figure->panels[static_cast<std::size_t>(i)];
    const std::string& name = names[static_cast<std::size_t>(i)];
    panel.title = "Forecast: " + name;
    panel.xlabel = "period";
    panel.ylabel = name;
    panel.legend = true;
    panel.series.push_back(Line(observed, f.observed.col(i).tail(shown), "observed"));
    // Each forecast line starts from the last observation, so that it joins the series.
    auto joined = [&](const Eigen::MatrixXd& values) {
      Eigen::VectorXd y(horizon + 1);
      y(0) = f.observed(T - 1, i);
      y.tail(horizon) = values.col(i);
      return y;
    };
    panel.series.push_back(Line(ahead, joined(mean), "forecast mean"));
    panel.series.push_back(Band(ahead, joined(lower), joined(upper), "95% band"));
  }
  result.figure = figure;
  return "OK";
}

std::string MIM_TimeSeries::ImpulseResponses(const ActionOptions& options, const ActionContext& context,
                                             ActionResult& result) const {
  const std::vector<std::string> names = SeriesNames();
  const Eigen::Index horizon = options.horizon > 0 ? options.horizon : kDefaultResponseHorizon;
  const std::vector<DynamicParameters> draws = ParameterDraws();
  const Eigen::Index m = static_cast<Eigen::Index>(SeriesNames().size());
  const auto G = static_cast<Eigen::Index>(draws.size());
  const int d = Differences();
  // Column (h m + i) m + j: the response of series i, h periods after a shock to series j.
  Eigen::MatrixXd responses(G, (horizon + 1) * m * m);
  for (Eigen::Index g = 0; g < G; ++g) {
    if ((g & 255) == 0 && Interrupted(context)) {
      result.interrupted = true;
      return "OK";
    }
    const DynamicParameters& p = draws[static_cast<std::size_t>(g)];
    Eigen::MatrixXd impact;
    if (options.orthogonal) {
      impact = p.Sigma.llt().matrixL();
      if (!options.scaled) impact = impact * impact.diagonal().cwiseInverse().asDiagonal();
    } else {
      impact = options.scaled ? Eigen::MatrixXd(p.Sigma.diagonal().cwiseSqrt().asDiagonal())
                              : Eigen::MatrixXd::Identity(m, m);
    }
    Eigen::MatrixXd r = dynamic::ImpulseResponses(p, horizon, impact);
    Accumulate(r, m, d);
    for (Eigen::Index h = 0; h <= horizon; ++h) {
      for (Eigen::Index i = 0; i < m; ++i) responses.row(g).segment((h * m + i) * m, m) = r.row(h * m + i);
    }
  }
  // Median, 68% and 95% bands of each response.
  // Columns of `bands`: 2.5%, 16%, median, 84%, 97.5%.
  const std::vector<double> levels = {0.025, 0.16, 0.5, 0.84, 0.975};
  Eigen::Matrix<double, Eigen::Dynamic, 5, Eigen::RowMajor> bands(responses.cols(), 5);
  std::vector<double> values;
  for (Eigen::Index c = 0; c < responses.cols(); ++c) {
    values.assign(responses.col(c).data(), responses.col(c).data() + G);
    Quantiles(values, levels, bands.row(c).data());
  }
  auto at = [&](Eigen::Index h, Eigen::Index i, Eigen::Index j) { return (h * m + i) * m + j; };

  const std::string kind = std::string(options.orthogonal ? "orthogonal" : "non-orthogonal") + " shocks of " +
                           (options.scaled ? "one standard deviation" : "one unit");
  std::string text = "\nImpulse responses of model " + Quoted(context.modelName) + ": " + kind +
                     (d > 0 ? ", responses of the levels" : "") + "; posterior medians\n";
  context.out.Print(text);
  for (Eigen::Index j = 0; j < m; ++j) {
    std::string header = "\nShock to " + names[static_cast<std::size_t>(j)] + "\n" + Padded("Horizon", 10);
    for (Eigen::Index i = 0; i < m; ++i) {
      char cell[64];
      std::snprintf(cell, sizeof cell, " %10s", names[static_cast<std::size_t>(i)].c_str());
      header += cell;
    }
    context.out.Print(header + "\n", true);
    text.clear();
    for (Eigen::Index h = 0; h <= horizon; ++h) {
      text += Padded(std::to_string(h), 10);
      for (Eigen::Index i = 0; i < m; ++i) text += Cell(bands(at(h, i, j), 2));
      text += "\n";
    }
    context.out.Print(text);
  }

  auto figure = std::make_shared<Figure>("", static_cast<int>(m), static_cast<int>(m));
  const Eigen::VectorXd x = Eigen::VectorXd::LinSpaced(horizon + 1, 0.0, static_cast<double>(horizon));
  for (Eigen::Index i = 0; i < m; ++i) {
    for (Eigen::Index j = 0; j < m; ++j) {
      Panel& panel = figure->panels[static_cast<std::size_t>(i * m + j)];
      panel.title = names[static_cast<std::size_t>(i)] + " to " + names[static_cast<std::size_t>(j)];
      panel.xlabel = "horizon";
      panel.ylabel = "response";
      panel.legend = i == 0 && j == 0;
      Eigen::MatrixXd y(horizon + 1, 5);
      for (Eigen::Index h = 0; h <= horizon; ++h) {
        for (int l = 0; l < 5; ++l) y(h, l) = bands(at(h, i, j), l);
      }
      panel.series.push_back(Line(x, y.col(2), "median"));
      panel.series.push_back(Band(x, y.col(1), y.col(3), "68% band"));
      panel.series.push_back(Band(x, y.col(0), y.col(4), "95% band"));
    }
  }
  result.figure = figure;
  return "OK";
}

std::string MIM_TimeSeries::StabilityTest(const ActionContext& context, ActionResult& result) const {
  const std::vector<std::string> names = SeriesNames();
  const std::vector<DynamicParameters> draws = ParameterDraws();
  const Eigen::Index m = static_cast<Eigen::Index>(SeriesNames().size());
  const auto G = static_cast<Eigen::Index>(draws.size());
  const Eigen::Index q = draws.empty() ? 0 : draws.front().MovingAverage();
  Eigen::VectorXd ar(G), ma(G);
  for (Eigen::Index g = 0; g < G; ++g) {
    if ((g & 255) == 0 && Interrupted(context)) {
      result.interrupted = true;
      return "OK";
    }
    const DynamicParameters& p = draws[static_cast<std::size_t>(g)];
    ar(g) = dynamic::LargestModulus(p.A, m);
    // The moving-average part is invertible when the companion roots of -T_1..-T_q are inside.
    ma(g) = q > 0 ? dynamic::LargestModulus(-p.Theta, m) : 0.0;
  }
  std::string text = "\nStability test of model " + Quoted(context.modelName) + " (" + std::to_string(G) + " draws)\n\n";
  auto describe = [&](const char* what, const char* property, const Eigen::VectorXd& modulus) {
    const double share = (modulus.array() < 1.0).cast<double>().mean();
    std::vector<double> values = Copied(modulus);
    double quantiles[5];
    Quantiles(values, {0.025, 0.25, 0.5, 0.75, 0.975}, quantiles);
    char line[256];
    std::snprintf(line, sizeof line, "Posterior probability that the %s part is %s: %.4f\n", what, property, share);
    std::string out = line;
    out += "Largest modulus of the companion matrix's eigenvalues over the draws:\n";
    out += Padded("", 4);
    for (const char* column : {"2.5%", "25%", "50%", "75%", "97.5%"}) {
      std::snprintf(line, sizeof line, " %10s", column);
      out += line;
    }
    out += "\n" + Padded("", 4);
    for (double q : quantiles) out += Cell(q);
    return out + "\n";
  };
  const DynamicParameters mean = ParametersAtMean();
  if (mean.A.cols() == 0) {
    text += "The model has no autoregressive part: it is stable.\n";
  } else {
    text += describe("autoregressive", "stable", ar);
    const Eigen::EigenSolver<Eigen::MatrixXd> solver(dynamic::Companion(mean.A, m), false);
    Eigen::VectorXcd roots = solver.eigenvalues();
    std::vector<std::complex<double>> sorted(roots.data(), roots.data() + roots.size());
    std::sort(sorted.begin(), sorted.end(), [](auto a, auto b) { return std::abs(a) > std::abs(b); });
    text += "\nEigenvalues of the companion matrix at the posterior mean\n";
    context.out.Print(text);
    std::string header = Padded("", 4);
    for (const char* column : {"Real", "Imaginary", "Modulus"}) {
      char cell[32];
      std::snprintf(cell, sizeof cell, " %10s", column);
      header += cell;
    }
    context.out.Print(header + "\n", true);
    text.clear();
    for (std::size_t r = 0; r < sorted.size(); ++r) {
      text += Padded(std::to_string(r + 1), 4) + Cell(sorted[r].real()) + Cell(sorted[r].imag()) + Cell(std::abs(sorted[r])) + "\n";
    }
  }
  if (q > 0) text += "\n" + describe("moving-average", "invertible", ma);
  context.out.Print(text);
  return "OK";
}

std::string MIM_TimeSeries::FittedValues(const std::string& action, const ActionOptions& options,
                                         const ActionContext& context, ActionResult& result) const {
  const std::vector<std::string> names = SeriesNames();
  if (action == "store") {
    for (const std::string& name : options.names) {
      if (name != "e" && name != "yhat") {
        return "Model " + Quoted(context.modelName) + " has no series " + Quoted(name) +
               " to store. It offers: e yhat.";
      }
    }
  }
  Sample sample;
  const std::string status = ReadSample(context, action, sample);
  if (status != "OK") return status;
  const std::vector<DynamicParameters> draws = ParameterDraws();
  const Eigen::Index m = static_cast<Eigen::Index>(SeriesNames().size());
  const auto G = static_cast<Eigen::Index>(draws.size());
  const Eigen::Index first = Presample();  // first row of W with a residual
  const Eigen::Index T = sample.W.rows(), used = T - first;
  const int d = Differences();
  // Fitted values of the levels: y_t - e_t, whatever the differences.
  const Eigen::MatrixXd levels = sample.data.Y.bottomRows(used);
  const Eigen::Index kept = std::min(G, kPredictionDraws);
  Eigen::MatrixXd residualSum = Eigen::MatrixXd::Zero(used, m);
  Eigen::MatrixXd fittedDraws(kept, used * m);  // column t m + i
  Eigen::Index next = 0;
  for (Eigen::Index g = 0; g < G; ++g) {
    if ((g & 255) == 0 && Interrupted(context)) {
      result.interrupted = true;
      return "OK";
    }
    const Eigen::MatrixXd E = dynamic::Residuals(draws[static_cast<std::size_t>(g)], sample.W, sample.X, first);
    residualSum += E.bottomRows(used);
    // Draws kept for the summaries: evenly spaced over all of them.
    if (next < kept && g == next * G / kept) {
      for (Eigen::Index t = 0; t < used; ++t) {
        fittedDraws.row(next).segment(t * m, m) = levels.row(t) - E.row(first + t);
      }
      ++next;
    }
  }
  const Eigen::MatrixXd residuals = residualSum / static_cast<double>(G);
  const Eigen::MatrixXd fitted = levels - residuals;
  const Eigen::Index datasetRows = context.dataset->NumberOfObservations();
  // Rows of the sample with a fitted value: after the differences and the presample.
  auto spread = [&](const Eigen::VectorXd& values) {
    Eigen::VectorXd out = Eigen::VectorXd::Constant(datasetRows, std::nan(""));
    for (Eigen::Index t = 0; t < used; ++t) out(sample.data.rows[static_cast<std::size_t>(d + first + t)]) = values(t);
    return out;
  };
  if (action == "store") {
    for (const std::string& name : options.names) {
      for (Eigen::Index i = 0; i < m; ++i) {
        const std::string& series = names[static_cast<std::size_t>(i)];
        result.variables.emplace_back(name + "_" + series, spread(name == "e" ? residuals.col(i) : fitted.col(i)));
      }
    }
    return "OK";
  }
  std::vector<double> scratch;
  for (Eigen::Index i = 0; i < m; ++i) {
    const std::string& series = names[static_cast<std::size_t>(i)];
    Eigen::VectorXd mean(used), sd(used), lower(used), upper(used);
    for (Eigen::Index t = 0; t < used; ++t) {
      const Eigen::VectorXd column = fittedDraws.col(t * m + i);
      SummarizeDraws(column.data(), kept, scratch, mean(t), sd(t), lower(t), upper(t));
    }
    if (!options.prefix.empty()) {
      const std::string stem = options.prefix + "_" + series;
      result.variables.emplace_back(stem + "_mean", spread(mean));
      result.variables.emplace_back(stem + "_sd", spread(sd));
      result.variables.emplace_back(stem + "_lower", spread(lower));
      result.variables.emplace_back(stem + "_upper", spread(upper));
      continue;
    }
    context.out.Print("\nOne-step fitted values of " + series + " (model " + Quoted(context.modelName) + ")\n\n");
    context.out.Print(table::Header("Period", 14), true);
    std::string text;
    for (Eigen::Index t = 0; t < std::min(used, kRowsShown); ++t) {
      text += table::Row(sample.data.times[static_cast<std::size_t>(d + first + t)], 14, mean(t), sd(t), lower(t), upper(t));
    }
    if (used > kRowsShown) {
      text += "... and " + std::to_string(used - kRowsShown) + " more: \"prefix\" keeps them all in the dataset.\n";
    }
    context.out.Print(text);
  }
  if (!options.prefix.empty()) {
    context.out.Print("\nOne-step fitted values of model " + Quoted(context.modelName) + " added to dataset " +
                      Quoted(DatasetName()) + " as " + options.prefix + "_<series>_mean, _sd, _lower and _upper.\n");
  }
  return "OK";
}
