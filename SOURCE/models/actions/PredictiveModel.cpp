// PredictiveModel: marginal effects, predictions and stored series over the posterior draws.
#include "PredictiveModel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "Dataset.h"
#include "DrawBlocks.h"
#include "EventDispatcher.h"
#include "ModelsInterpreter.h"
#include "SummaryTable.h"

namespace {

using table::Cell;
using table::Header;
using table::Padded;
using table::Quoted;
using table::Row;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
// Per-observation tables longer than this are cut in the console ("prefix" keeps them all).
constexpr Eigen::Index kRowsShown = 20;
// Draws per slice in averages over observations: a slice of 64 observations is 1 MB.
constexpr Eigen::Index kDrawSlice = 2048;

// to += the sums of the rows of m, a column at a time (contiguous, unlike a row-wise reduction).
void AddRowSums(const Eigen::MatrixXd& m, Eigen::Ref<Eigen::VectorXd> to) {
  for (Eigen::Index c = 0; c < m.cols(); ++c) to += m.col(c);
}

// The 50% point, with the interpolation between order statistics that the intervals use.
double Median(const Eigen::VectorXd& values) {
  std::vector<double> v(values.data(), values.data() + values.size());
  std::sort(v.begin(), v.end());
  const double h = static_cast<double>(v.size() - 1) * 0.5;
  const auto lo = static_cast<std::size_t>(std::floor(h));
  return lo + 1 < v.size() ? v[lo] + (h - static_cast<double>(lo)) * (v[lo + 1] - v[lo]) : v[lo];
}

}  // namespace

Eigen::VectorXd ActionData::Spread(const Eigen::VectorXd& values) const {
  Eigen::VectorXd all = Eigen::VectorXd::Constant(datasetRows, kNaN);
  for (std::size_t i = 0; i < data.rows.size(); ++i) all(data.rows[i]) = values(static_cast<Eigen::Index>(i));
  return all;
}

bool PredictiveModel::ProvidesAction(const std::string& action) const {
  return action == "mfx" || action == "predict" || (action == "store" && !StoredSeries().empty());
}

std::string PredictiveModel::RunAction(const std::string& action, const ActionOptions& options,
                                       const ActionContext& context, ActionResult& result) const {
  if (action == "mfx") return Mfx(options, context, result);
  if (action == "predict") return Predict(options, context, result);
  if (action == "store") return Store(options, context, result);
  return Model::RunAction(action, options, context, result);
}

std::vector<std::pair<std::string, Eigen::VectorXd>> PredictiveModel::StoreSeries(const std::string&,
                                                                                 const ActionData&) const {
  return {};
}

const Eigen::MatrixXd& PredictiveModel::PooledDraws() const { return *GetpMatrix("draws"); }

Eigen::MatrixXd PredictiveModel::CoefficientDraws() const {
  return PooledDraws().leftCols(static_cast<Eigen::Index>(Description().regressors.size()));
}

Eigen::MatrixXd PredictiveModel::SecondListCoefficientDraws() const {
  return PooledDraws().middleCols(static_cast<Eigen::Index>(Description().regressors.size()),
                                  static_cast<Eigen::Index>(Description().secondList.size()));
}

std::string PredictiveModel::DescribeType(int type) const {
  return type <= Link().Types() ? Link().Describe(type) : DescribeFurther(type);
}

std::string PredictiveModel::CheckType(const ActionOptions& options, const ActionContext& context,
                                       const std::string& action) const {
  if (options.type >= 1 && options.type <= Types()) return "OK";
  std::string text = "Model " + Quoted(context.modelName) + " offers " + std::to_string(Types()) + " type" +
                     (Types() == 1 ? "" : "s") + " of " + action + ":";
  for (int t = 1; t <= Types(); ++t) text += "\n-> " + std::to_string(t) + ": " + DescribeType(t);
  return text;
}

std::string PredictiveModel::ReadData(const ActionContext& context, const std::string& action,
                                      ActionData& data) const {
  if (!context.dataset) {
    return "Model " + Quoted(context.modelName) + " was estimated on dataset " + Quoted(DatasetName()) +
           ", which is no longer in the workspace: " + Quoted(action) + " needs its data.";
  }
  ModelRequest request;
  request.keyword = Description().keyword;
  request.dependent = Description().dependent;
  request.regressors = Description().regressors;
  request.secondList = Description().secondList;
  request.dataset = context.dataset;
  request.datasetName = DatasetName();
  const std::string status = ExtractModelData(request, data.data, ExtraVariables(*context.dataset), DependentValues());
  if (status != "OK") {
    return "Model " + Quoted(context.modelName) + " cannot use its dataset any more: " + status;
  }
  if (static_cast<long>(data.data.y.size()) != Description().observations) {
    return "Dataset " + Quoted(DatasetName()) + " has changed since model " + Quoted(context.modelName) +
           " was estimated on it: " + std::to_string(data.data.y.size()) +
           " observations are complete now, " + std::to_string(Description().observations) +
           " were used then. Estimate the model again.";
  }
  data.datasetRows = context.dataset->NumberOfObservations();
  data.dataset = context.dataset;
  return "OK";
}

std::string PredictiveModel::DescribeEffect(int type) const {
  return &EffectsLink() == &Link() ? DescribeType(type) : EffectsLink().Describe(type);
}

std::string PredictiveModel::CheckEffectsType(const ActionOptions& options, const ActionContext& context) const {
  if (&EffectsLink() == &Link()) return CheckType(options, context, "marginal effects");
  const int types = EffectsLink().Types();
  if (options.type >= 1 && options.type <= types) return "OK";
  std::string text = "Model " + Quoted(context.modelName) + " offers " + std::to_string(types) + " type" +
                     (types == 1 ? "" : "s") + " of marginal effects:";
  for (int t = 1; t <= types; ++t) text += "\n-> " + std::to_string(t) + ": " + EffectsLink().Describe(t);
  return text;
}

std::string PredictiveModel::ComputeMarginalEffects(const ActionOptions& options, const ActionContext& context,
                                                    MarginalEffects& out, bool& interrupted) const {
  interrupted = false;
  const IndexLink& link = EffectsLink();
  if (&link == &Link() && options.type > Link().Types() && options.type <= Types()) {
    return "Marginal effects of model " + Quoted(context.modelName) + " are available for the quantities " +
           "of types 1 to " + std::to_string(Link().Types()) + " only.";
  }
  std::string status = CheckEffectsType(options, context);
  if (status != "OK") return status;
  if (options.optGiven) return "Model " + Quoted(context.modelName) + " takes no \"opt\" argument.";
  const int type = static_cast<int>(options.type);
  const bool second = EffectsOfSecondList(type);
  const std::vector<std::string>& names = second ? Description().secondList : Description().regressors;
  const auto k = static_cast<Eigen::Index>(names.size());
  if (options.point == ActionOptions::Point::Given && options.pointValues.size() != k) {
    return "The \"point\" vector must hold one value for each of the " + std::to_string(k) +
           " regressors of model " + Quoted(context.modelName) + ".";
  }

  // The sample tells which regressors are binary (discrete change) or constant (no effect); a
  // given point needs no data, and without them every regressor is taken as continuous.
  ActionData data;
  const bool needsData = options.point != ActionOptions::Point::Given;
  const bool haveData = context.dataset != nullptr;
  if (needsData || haveData) {
    status = ReadData(context, "mfx", data);
    if (status != "OK") return status;
  }
  const Eigen::MatrixXd& regressorData = second ? data.data.Z : data.data.X;
  std::vector<bool> binary(static_cast<std::size_t>(k), false), constant(static_cast<std::size_t>(k), false);
  if (regressorData.rows() == 0) {
    for (Eigen::Index j = 0; j < k; ++j) constant[static_cast<std::size_t>(j)] = names[static_cast<std::size_t>(j)] == "constant";
  } else {
    for (Eigen::Index j : ModelsInterpreter::locs_Constants(regressorData)) constant[static_cast<std::size_t>(j)] = true;
    for (Eigen::Index j : ModelsInterpreter::locs_Binaries(regressorData)) {
      if (!constant[static_cast<std::size_t>(j)]) binary[static_cast<std::size_t>(j)] = true;
    }
  }

  const Eigen::MatrixXd& draws = PooledDraws();
  const Eigen::MatrixXd B = second ? SecondListCoefficientDraws() : CoefficientDraws();
  const Eigen::Index D = B.rows();
  Eigen::MatrixXd effects(D, k);  // one column per regressor
  std::string where;
  if (SeveralIndices()) {
    const bool average = options.point == ActionOptions::Point::PerObservation;
    Eigen::MatrixXd at;
    if (average) {
      at = regressorData;
      where = "averaged over the " + std::to_string(at.rows()) + " observations";
    } else if (options.point == ActionOptions::Point::Given) {
      at = Eigen::Map<const Eigen::RowVectorXd>(options.pointValues.data(), k);
      where = "at the given point";
    } else if (options.point == ActionOptions::Point::Median) {
      at.resize(1, k);
      for (Eigen::Index j = 0; j < k; ++j) at(0, j) = Median(regressorData.col(j));
      where = "at the medians of the regressors";
    } else {
      at = regressorData.colwise().mean();
      where = "at the means of the regressors";
    }
    if (!EffectsOfRegressors(type, at, binary, average, context.interrupt, effects)) {
      interrupted = true;
      return "OK";
    }
  } else if (options.point == ActionOptions::Point::PerObservation) {
    // One pass over the observations: per draw, the average derivative of the quantity (column
    // 0) and the average discrete change of each binary regressor (column 1 + its position
    // among them): q(x_i'b + (1 - x_ij) b_j) - q(x_i'b - x_ij b_j).
    const Eigen::MatrixXd& X = regressorData;
    std::vector<Eigen::Index> binaries;
    for (Eigen::Index j = 0; j < k; ++j) {
      if (binary[static_cast<std::size_t>(j)]) binaries.push_back(j);
    }
    Eigen::MatrixXd averages;
    const bool complete = AverageOverObservations(
        X.rows(), D, 1 + static_cast<Eigen::Index>(binaries.size()),
        [&](Eigen::Index first, Eigen::Index count, Eigen::MatrixXd& sums) {
          // Draws are taken a slice at a time so that the working matrices stay in the cache.
          thread_local Eigen::MatrixXd index, atOne, atZero;
          const Eigen::MatrixXd Xt = X.middleRows(first, count).transpose();
          for (Eigen::Index d0 = 0; d0 < D; d0 += kDrawSlice) {
            const Eigen::Index nd = std::min(kDrawSlice, D - d0);
            const auto slice = draws.middleRows(d0, nd);
            index.noalias() = B.middleRows(d0, nd) * Xt;
            for (std::size_t m = 0; m < binaries.size(); ++m) {
              const Eigen::Index j = binaries[m];
              atZero.noalias() = index - B.col(j).segment(d0, nd) * Xt.row(j);
              atOne = atZero.colwise() + B.col(j).segment(d0, nd);
              link.Quantity(type, atOne, slice);
              link.Quantity(type, atZero, slice);
              atOne -= atZero;
              AddRowSums(atOne, sums.col(static_cast<Eigen::Index>(m) + 1).segment(d0, nd));
            }
            link.Derivative(type, index, slice);
            AddRowSums(index, sums.col(0).segment(d0, nd));
          }
        },
        context.interrupt, averages);
    if (!complete) {
      interrupted = true;
      return "OK";
    }
    for (Eigen::Index j = 0; j < k; ++j) effects.col(j) = averages.col(0).cwiseProduct(B.col(j));
    for (std::size_t m = 0; m < binaries.size(); ++m) effects.col(binaries[m]) = averages.col(static_cast<Eigen::Index>(m) + 1);
    where = "averaged over the " + std::to_string(X.rows()) + " observations";
  } else {
    Eigen::VectorXd x(k);
    if (options.point == ActionOptions::Point::Given) {
      x = Eigen::Map<const Eigen::VectorXd>(options.pointValues.data(), k);
      where = "at the given point";
    } else if (options.point == ActionOptions::Point::Median) {
      for (Eigen::Index j = 0; j < k; ++j) x(j) = Median(regressorData.col(j));
      where = "at the medians of the regressors";
    } else {
      x = regressorData.colwise().mean().transpose();
      where = "at the means of the regressors";
    }
    const Eigen::MatrixXd index = B * x;  // D x 1
    Eigen::MatrixXd derivative = index;
    link.Derivative(type, derivative, draws);
    for (Eigen::Index j = 0; j < k; ++j) {
      if (!binary[static_cast<std::size_t>(j)]) {
        effects.col(j) = derivative.col(0).cwiseProduct(B.col(j));
        continue;
      }
      Eigen::MatrixXd atOne = index + (1.0 - x(j)) * B.col(j);
      Eigen::MatrixXd atZero = index - x(j) * B.col(j);
      link.Quantity(type, atOne, draws);
      link.Quantity(type, atZero, draws);
      effects.col(j) = atOne.col(0) - atZero.col(0);
    }
  }

  for (Eigen::Index j = 0; j < k; ++j) {
    if (constant[static_cast<std::size_t>(j)]) continue;
    out.names.push_back(names[static_cast<std::size_t>(j)]);
    out.discrete.push_back(binary[static_cast<std::size_t>(j)]);
  }
  out.draws.resize(D, static_cast<Eigen::Index>(out.names.size()));
  for (Eigen::Index j = 0, c = 0; j < k; ++j) {
    if (!constant[static_cast<std::size_t>(j)]) out.draws.col(c++) = effects.col(j);
  }
  out.where = where;
  return "OK";
}

bool PredictiveModel::EffectsOfRegressors(int type, const Eigen::MatrixXd& X, const std::vector<bool>& binary,
                                          bool average, const std::atomic<bool>* interrupt,
                                          Eigen::MatrixXd& effects) const {
  const Eigen::MatrixXd& draws = PooledDraws();
  const Eigen::Index k = X.cols(), D = draws.rows();
  // Each regressor moved down and up: to 0 and 1 when it is binary, by a small central step otherwise.
  auto effectsOf = [&](Eigen::Index first, Eigen::Index count, Eigen::MatrixXd& sums) {
    thread_local Eigen::MatrixXd moved, low, high;
    for (Eigen::Index j = 0; j < k; ++j) {
      const bool discrete = binary[static_cast<std::size_t>(j)];
      moved = X.middleRows(first, count);
      const Eigen::ArrayXd step = 1e-5 * (1.0 + moved.col(j).array().abs());
      if (discrete) {
        moved.col(j).setZero();
      } else {
        moved.col(j).array() -= step;
      }
      QuantityOfRegressors(type, moved, draws, low);
      if (discrete) {
        moved.col(j).setOnes();
      } else {
        moved.col(j).array() += 2.0 * step;
      }
      QuantityOfRegressors(type, moved, draws, high);
      high -= low;
      if (!discrete) high *= (0.5 / step).matrix().asDiagonal();
      AddRowSums(high, sums.col(j));
    }
  };
  if (average) return AverageOverObservations(X.rows(), D, k, effectsOf, interrupt, effects);
  effects = Eigen::MatrixXd::Zero(D, k);
  effectsOf(0, 1, effects);
  return true;
}

std::string PredictiveModel::Mfx(const ActionOptions& options, const ActionContext& context,
                                 ActionResult& result) const {
  MarginalEffects effects;
  const std::string status = ComputeMarginalEffects(options, context, effects, result.interrupted);
  if (status != "OK" || result.interrupted) return status;
  std::size_t width = 12;
  for (const auto& name : effects.names) width = std::max(width, name.size() + 12);
  std::string text = "\nMarginal effects on " + DescribeEffect(static_cast<int>(options.type)) + " (model " +
                     Quoted(context.modelName) + "), " + effects.where + "\n\n";
  context.out.Print(text);
  context.out.Print(Header("Variable", width), true);
  text.clear();
  std::vector<double> scratch;
  bool anyBinary = false;
  for (std::size_t j = 0; j < effects.names.size(); ++j) {
    double mean = 0, sd = 0, lower = 0, upper = 0;
    SummarizeDraws(effects.draws.col(static_cast<Eigen::Index>(j)).data(), effects.draws.rows(), scratch, mean, sd,
                   lower, upper);
    anyBinary = anyBinary || effects.discrete[j];
    text += Row(effects.names[j] + (effects.discrete[j] ? " (0 -> 1)" : ""), width, mean, sd, lower, upper);
  }
  if (anyBinary) text += "(0 -> 1): the discrete change of a regressor that takes only the values 0 and 1\n";
  context.out.Print(text);
  return "OK";
}

std::string PredictiveModel::ComputePredictions(const ActionOptions& options, const ActionContext& context,
                                                RowSummaries& summaries, ActionData& data, bool& interrupted) const {
  interrupted = false;
  std::string status = CheckType(options, context, "predictions");
  if (status != "OK") return status;
  if (options.optGiven) return "Model " + Quoted(context.modelName) + " takes no \"opt\" argument.";
  const int type = static_cast<int>(options.type);
  const bool further = type > Link().Types();
  const bool atPoints = options.point == ActionOptions::Point::Given;
  const bool second = IndexOfSecondList(type);
  const auto k = static_cast<Eigen::Index>((second ? Description().secondList : Description().regressors).size());
  if (atPoints && further) {
    return "Predictions of type " + std::to_string(type) + " (" + DescribeType(type) +
           ") need the observations of the sample: use \"point\" = \"x_i\".";
  }
  if (atPoints && options.pointValues.cols() != k) {
    return "The \"point\" matrix must have one column for each of the " + std::to_string(k) +
           " regressors of model " + Quoted(context.modelName) + ".";
  }
  if (atPoints && !options.prefix.empty()) {
    return "The \"prefix\" option adds predictions for the observations of the dataset: it cannot be "
           "used with \"point\".";
  }
  if (!atPoints) {
    status = ReadData(context, "predict", data);
    if (status != "OK") return status;
  }
  const Eigen::MatrixXd& X = atPoints ? options.pointValues : second ? data.data.Z : data.data.X;
  const Eigen::MatrixXd& draws = PooledDraws();
  const Eigen::MatrixXd B = second ? SecondListCoefficientDraws() : CoefficientDraws();
  const bool complete = SummarizeObservations(X.rows(), B.rows(), [&](Eigen::Index first, Eigen::Index count, Eigen::MatrixXd& out) {
    if (SeveralIndices() && !further) {
      QuantityOfRegressors(type, X.middleRows(first, count), draws, out);
      return;
    }
    out.noalias() = B * X.middleRows(first, count).transpose();
    if (further) {
      FurtherQuantity(type, data, first, out);
    } else {
      Link().Quantity(type, out, draws);
    }
  }, context.interrupt, summaries);
  interrupted = !complete;
  return "OK";
}

std::string PredictiveModel::Predict(const ActionOptions& options, const ActionContext& context,
                                     ActionResult& result) const {
  RowSummaries summaries;
  ActionData data;
  const std::string status = ComputePredictions(options, context, summaries, data, result.interrupted);
  if (status != "OK" || result.interrupted) return status;
  const bool atPoints = options.point == ActionOptions::Point::Given;
  const Eigen::Index rows = summaries.mean.size();
  const int type = static_cast<int>(options.type);
  const std::string what = "Predictions of " + DescribeType(type) + " (model " + Quoted(context.modelName) + ")";
  if (!options.prefix.empty()) {
    result.variables.emplace_back(options.prefix + "_mean", data.Spread(summaries.mean));
    result.variables.emplace_back(options.prefix + "_sd", data.Spread(summaries.sd));
    result.variables.emplace_back(options.prefix + "_lower", data.Spread(summaries.lower));
    result.variables.emplace_back(options.prefix + "_upper", data.Spread(summaries.upper));
  }
  if (options.stats) {
    // Across observations: how the four columns are spread.
    std::string text = "\n" + what + ": " + std::to_string(rows) + (atPoints ? " points" : " observations") + "\n\n";
    context.out.Print(text);
    std::string header = Padded("", 14);
    for (const char* column : {"Mean", "Sd", "Min", "Max"}) {
      char buffer[32];
      std::snprintf(buffer, sizeof buffer, " %10s", column);
      header += buffer;
    }
    context.out.Print(header + "\n", true);
    text.clear();
    const std::pair<const char*, const Eigen::VectorXd*> columns[] = {
        {"Mean", &summaries.mean}, {"Sd", &summaries.sd}, {"2.5%", &summaries.lower}, {"97.5%", &summaries.upper}};
    for (const auto& [name, values] : columns) {
      const double mean = values->mean();
      const double sd = values->size() > 1
                            ? std::sqrt((values->array() - mean).square().sum() / static_cast<double>(values->size() - 1))
                            : kNaN;
      text += Padded(name, 14) + Cell(mean) + Cell(sd) + Cell(values->minCoeff()) + Cell(values->maxCoeff()) + "\n";
    }
    context.out.Print(text);
  }
  if (!options.prefix.empty()) {
    context.out.Print("\n" + what + " added to dataset " + Quoted(DatasetName()) + " as " + options.prefix +
                      "_mean, " + options.prefix + "_sd, " + options.prefix + "_lower and " + options.prefix +
                      "_upper.\n");
  }
  if (options.stats || !options.prefix.empty()) return "OK";

  std::string text = "\n" + what + (atPoints ? ", at the given points" : "") + "\n\n";
  context.out.Print(text);
  context.out.Print(Header(atPoints ? "Point" : "Observation", 12), true);
  text.clear();
  const Eigen::Index shown = std::min(rows, kRowsShown);
  for (Eigen::Index i = 0; i < shown; ++i) {
    const Eigen::Index number = atPoints ? i + 1 : data.data.rows[static_cast<std::size_t>(i)] + 1;
    text += Row(std::to_string(number), 12, summaries.mean(i), summaries.sd(i), summaries.lower(i), summaries.upper(i));
  }
  if (rows > shown) {
    text += "... and " + std::to_string(rows - shown) +
            " more: \"prefix\" keeps them all in the dataset, \"stats\" = true summarises them.\n";
  }
  context.out.Print(text);
  return "OK";
}

std::string PredictiveModel::Store(const ActionOptions& options, const ActionContext& context,
                                   ActionResult& result) const {
  const std::vector<std::string> offered = StoredSeries();
  for (const std::string& name : options.names) {
    if (std::find(offered.begin(), offered.end(), name) == offered.end()) {
      std::string text = "Model " + Quoted(context.modelName) + " has no series " + Quoted(name) +
                         " to store. It offers:";
      for (const auto& o : offered) text += " " + o;
      return text + ".";
    }
  }
  ActionData data;
  const std::string status = ReadData(context, "store", data);
  if (status != "OK") return status;
  for (const std::string& name : options.names) {
    for (auto& [variable, values] : StoreSeries(name, data)) {
      result.variables.emplace_back(variable, data.Spread(values));
    }
  }
  return "OK";
}
