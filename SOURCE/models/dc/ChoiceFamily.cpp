// The family interpreter of the choices among several alternatives: mnlogit (MNLogit), mnprobit
// (MNProbit), clogit (CLogit) and cprobit (CProbit).
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <memory>
#include <set>

#include "Alternatives.h"
#include "ConditionalLogit.h"
#include "Dataset.h"
#include "MIM_Choice.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "MultinomialLogit.h"
#include "MultinomialProbit.h"
#include "RandomIntercepts.h"

namespace {

// Vague but proper, as for the binary models: N(0, 1/0.001) for each coefficient.
constexpr double kDefaultPrecision = 0.001;
// The probits' covariance: Sigma~ ~ inverse Wishart(p + 3, I), whose Sigma~ / Sigma~_11 is spread
// widely over correlations and relative variances; S's scale does not matter.
constexpr double kExtraDegreesOfFreedom = 3.0;

std::string Code(long long code) { return code < 0 ? "m" + std::to_string(-code) : std::to_string(code); }

// The inverse-Wishart prior of the probits' covariance of p utility differences: "nu" (greater
// than p - 1) and "S" (p x p symmetric positive definite).
std::string ReadCovariancePrior(const ModelRequest& request, Eigen::Index p, double& nu, Eigen::MatrixXd& S) {
  nu = static_cast<double>(p) + kExtraDegreesOfFreedom;
  S = Eigen::MatrixXd::Identity(p, p);
  const std::string size = std::to_string(p);
  if (const auto it = request.options.numeric.find("nu"); it != request.options.numeric.end()) {
    if (it->second.size() != 1 || !(it->second(0, 0) > static_cast<double>(p) - 1.0) || !std::isfinite(it->second(0, 0))) {
      return "The prior degrees of freedom \"nu\" must be a number greater than " + std::to_string(p - 1) +
             " (the number of utility differences less one).";
    }
    nu = it->second(0, 0);
  }
  if (const auto it = request.options.numeric.find("S"); it != request.options.numeric.end()) {
    const SymmetricPDCheck check = check_SymmetricPD(it->second, p);
    if (!check.sizeOK || !check.symmetric || !check.positiveDefinite) {
      return "The prior scale matrix \"S\" must be a symmetric positive-definite " + size + " by " + size +
             " matrix (one row and column per alternative other than the base).";
    }
    S = it->second;
  }
  return "OK";
}

std::unique_ptr<ModelJob> MultinomialLogitJob(const ModelRequest& request, const Eigen::VectorXd& gibbs,
                                              const ModelData& data, const Alternatives& alternatives,
                                              const LinearPrior& prior) {
  const std::vector<std::string> labels = request.labels;
  Eigen::MatrixXd codes(alternatives.Count(), 1);
  for (Eigen::Index j = 0; j < codes.rows(); ++j) codes(j, 0) = static_cast<double>(alternatives.codes[static_cast<std::size_t>(j)]);
  const double base = static_cast<double>(alternatives.base);
  return std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    MNLogit estimator(gibbs);
    if (!estimator.Sample(alternatives.choice, alternatives.Count(), data.X, prior, context.out, context.interrupt)) {
      if (estimator.noMode) {
        throw EstimationRefused("The posterior of model \"mnlogit\" has no mode that the sampler can find: the "
                                "regressors separate the alternatives and the prior does not bound the "
                                "coefficients. Give a stronger prior with \"P\".");
      }
      return nullptr;
    }
    auto model = std::make_shared<MIM_MNLogit>();
    model->SetDraws(estimator.Draws(), labels);
    model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, estimator.acceptance));
    model->AddResult("alternatives", codes);
    model->AddResult("base", Eigen::MatrixXd::Constant(1, 1, base));
    DescribeEstimate(*model, "MNLogit", "Multinomial logit model", estimator, data, estimator.logML,
                     estimator.logML_CJ);
    return model;
  });
}

std::string Number(double x) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.15g", x);
  return buffer;
}

// Long data of clogit and cprobit: the rows sorted by situation (`data` reordered), each
// situation with at least two alternatives and exactly one chosen, each regressor varying among
// the alternatives of some situation. Returns "OK" or the message.
std::string ReadSituations(const ModelRequest& request, ModelData& data, ChoiceSituations& situations) {
  std::vector<int> groups;
  std::string status = ReadPanelGroups(request, data, groups);
  if (status != "OK") return status;
  if (!ModelsInterpreter::check_Binary(data.y)) {
    return "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword +
           "\" must be 1 for the alternative chosen and 0 for the others.";
  }
  const PanelGroups panel = PanelGroups::FromCodes(groups);
  data = KeepObservations(data, panel.members);
  const std::string& variable = request.dataset->Structure().groupVariable;
  const Eigen::VectorXd codes = request.dataset->GetVariable(variable);
  situations.start = panel.start;
  situations.chosen.assign(static_cast<std::size_t>(panel.Count()), 0);
  std::vector<bool> varies(static_cast<std::size_t>(data.X.cols()), false);
  for (Eigen::Index g = 0; g < panel.Count(); ++g) {
    const Eigen::Index from = panel.start[static_cast<std::size_t>(g)], to = panel.start[static_cast<std::size_t>(g) + 1];
    const std::string which = "Choice situation " + Number(codes(data.rows[static_cast<std::size_t>(from)])) +
                              " (\"" + variable + "\")";
    if (to - from < 2) {
      return which + " has only one alternative: model \"" + request.keyword +
             "\" needs at least two alternatives in every choice situation.";
    }
    const double chosen = data.y.segment(from, to - from).sum();
    if (chosen != 1.0) {
      return which + " has " + Number(chosen) + " alternatives chosen: model \"" + request.keyword +
             "\" needs exactly one (\"" + request.dependent + "\" = 1) in every choice situation.";
    }
    for (Eigen::Index r = from; r < to; ++r) {
      if (data.y(r) == 1.0) situations.chosen[static_cast<std::size_t>(g)] = r;
    }
    for (Eigen::Index j = 0; j < data.X.cols(); ++j) {
      if ((data.X.col(j).segment(from, to - from).array() != data.X(from, j)).any()) varies[static_cast<std::size_t>(j)] = true;
    }
  }
  for (std::size_t j = 0; j < varies.size(); ++j) {
    if (!varies[j]) {
      return "Regressor \"" + request.regressors[j] + "\" of model \"" + request.keyword +
             "\" takes the same value for every alternative of each choice situation: its coefficient is not "
             "identified (only differences between alternatives matter).";
    }
  }
  return "OK";
}

std::unique_ptr<ModelJob> ConditionalLogitJob(const ModelRequest& request, const Eigen::VectorXd& gibbs,
                                              const ModelData& data, const ChoiceSituations& situations,
                                              const LinearPrior& prior) {
  const std::vector<std::string> labels = request.labels;
  return std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    CLogit estimator(gibbs);
    if (!estimator.Sample(situations, data.X, prior, context.out, context.interrupt)) {
      if (estimator.noMode) {
        throw EstimationRefused("The posterior of model \"clogit\" has no mode that the sampler can find: the "
                                "regressors separate the alternatives and the prior does not bound the "
                                "coefficients. Give a stronger prior with \"P\".");
      }
      return nullptr;
    }
    auto model = std::make_shared<MIM_CLogit>();
    model->SetDraws(estimator.Draws(), labels);
    model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, estimator.acceptance));
    DescribeEstimate(*model, "CLogit", "Conditional logit model", estimator, data, estimator.logML,
                     estimator.logML_CJ);
    model->AddResult("nsituations", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(situations.Count())));
    return model;
  });
}

// The job of mnprobit and cprobit: the design owns the data it needs.
std::unique_ptr<ModelJob> ProbitJob(const ModelRequest& request, const Eigen::VectorXd& gibbs, const ModelData& data,
                                    std::shared_ptr<const UtilityDesign> design, const Eigen::VectorXi& choice,
                                    const Eigen::MatrixXd& available, const std::vector<long long>& codes,
                                    long long base, const LinearPrior& prior, double nu, const Eigen::MatrixXd& S) {
  const bool conditional = request.keyword == "cprobit";
  std::vector<std::string> names;
  for (long long c : codes) {
    if (c != base) names.push_back(Code(c));
  }
  std::vector<std::string> labels = request.labels;
  for (const auto& label : MNProbit::CovarianceLabels(names)) labels.push_back(label);
  Eigen::MatrixXd codeColumn(static_cast<Eigen::Index>(codes.size()), 1);
  for (std::size_t j = 0; j < codes.size(); ++j) codeColumn(static_cast<Eigen::Index>(j), 0) = static_cast<double>(codes[j]);
  return std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    MNProbit estimator(gibbs);
    if (!estimator.Sample(*design, choice, available, prior, nu, S, context.out, context.interrupt)) return nullptr;
    std::shared_ptr<Model> model;
    if (conditional) {
      model = std::make_shared<MIM_CProbit>();
    } else {
      model = std::make_shared<MIM_MNProbit>();
    }
    model->SetDraws(estimator.Draws(), labels);
    model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, estimator.acceptance));
    model->AddResult("alternatives", codeColumn);
    model->AddResult("base", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(base)));
    // Chib's method would need the ordinate of the covariance's Metropolis-Hastings step: not given.
    DescribeEstimate(*model, conditional ? "CProbit" : "MNProbit",
                     conditional ? "Conditional probit model" : "Multinomial probit model", estimator, data,
                     estimator.logML, std::numeric_limits<double>::quiet_NaN());
    return model;
  });
}

// cprobit's utility differences: for every situation, the regressors of each alternative less the
// base's (zero where a situation does not offer it, `available` then 0), and which was chosen.
std::string AlternativeDifferences(const ModelRequest& request, const ModelData& data, const ChoiceSituations& situations,
                                   std::vector<long long>& codes, long long& base, std::vector<Eigen::MatrixXd>& D,
                                   Eigen::VectorXi& choice, Eigen::MatrixXd& available) {
  const std::string& variable = request.dataset->Structure().timeVariable;
  const Eigen::VectorXd all = request.dataset->GetVariable(variable);
  Eigen::VectorXd alternative(data.y.size());
  for (Eigen::Index r = 0; r < alternative.size(); ++r) alternative(r) = all(data.rows[static_cast<std::size_t>(r)]);
  std::set<long long> distinct;
  for (Eigen::Index r = 0; r < alternative.size(); ++r) {
    if (!std::isfinite(alternative(r)) || alternative(r) != std::floor(alternative(r))) {
      return "The alternatives of model \"cprobit\" (\"" + variable + "\") must be integer codes.";
    }
    distinct.insert(static_cast<long long>(alternative(r)));
  }
  codes.assign(distinct.begin(), distinct.end());
  base = codes.front();
  if (const auto it = request.options.numeric.find("base"); it != request.options.numeric.end()) {
    std::int64_t value = 0;
    if (!ModelsInterpreter::check_Integer(it->second, value) || !distinct.count(value)) {
      return "\"base\" must be the code of one of the alternatives (\"" + variable + "\").";
    }
    base = value;
  }
  std::map<long long, Eigen::Index> position;  // difference of each alternative other than the base
  for (long long c : codes) {
    if (c != base) position.emplace(c, static_cast<Eigen::Index>(position.size()));
  }
  const Eigen::Index S = situations.Count(), p = static_cast<Eigen::Index>(position.size()), k = data.X.cols();
  D.assign(static_cast<std::size_t>(p), Eigen::MatrixXd::Zero(S, k));
  available = Eigen::MatrixXd::Zero(S, p);
  choice = Eigen::VectorXi::Zero(S);
  for (Eigen::Index g = 0; g < S; ++g) {
    const Eigen::Index from = situations.start[static_cast<std::size_t>(g)], to = situations.start[static_cast<std::size_t>(g) + 1];
    Eigen::Index baseRow = -1;
    for (Eigen::Index r = from; r < to; ++r) {
      if (static_cast<long long>(alternative(r)) == base) baseRow = r;
    }
    if (baseRow < 0) {
      return "Choice situation " + std::to_string(g + 1) + " does not offer the base alternative " + std::to_string(base) +
             " (\"" + variable + "\"): model \"cprobit\" measures utilities from the base, which every situation "
             "must offer. Choose another with \"base\".";
    }
    for (Eigen::Index r = from; r < to; ++r) {
      const long long c = static_cast<long long>(alternative(r));
      if (c == base) continue;
      const Eigen::Index j = position.at(c);
      if (available(g, j) != 0.0) {
        return "Choice situation " + std::to_string(g + 1) + " lists alternative " + std::to_string(c) + " (\"" +
               variable + "\") more than once.";
      }
      available(g, j) = 1.0;
      D[static_cast<std::size_t>(j)].row(g) = data.X.row(r) - data.X.row(baseRow);
      if (r == situations.chosen[static_cast<std::size_t>(g)]) choice(g) = static_cast<int>(j) + 1;
    }
  }
  if ((available.array() != 0.0).all()) available.resize(0, 0);
  return "OK";
}

}  // namespace

// Checks an mnlogit, mnprobit, clogit or cprobit statement: options, Gibbs settings, the
// constraints' precision, the alternatives and their data, the priors.
std::string Intrepr_DC2(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  if (!request.secondList.empty()) {
    return "Model \"" + request.keyword + "\" does not take a second list of variables.";
  }
  std::string status = CheckOptionNames(request, {"m", "P", "base", "nu", "S"});
  if (status != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  const bool conditional = request.keyword == "clogit" || request.keyword == "cprobit";
  const bool probit = request.keyword == "mnprobit" || request.keyword == "cprobit";
  if (conditional && (status = CheckPanel(request)) != "OK") return status;
  if (request.keyword == "clogit" && request.options.numeric.count("base")) {
    return "Model \"clogit\" takes no \"base\": its coefficients are common to every alternative.";
  }
  if (!probit && (request.options.numeric.count("nu") || request.options.numeric.count("S"))) {
    return "Model \"" + request.keyword + "\" has no error covariance: \"nu\" and \"S\" are options of the probits.";
  }
  ModelData data;
  if ((status = ExtractModelData(request, data)) != "OK") return status;
  Alternatives alternatives;
  ChoiceSituations situations;
  if (conditional) {
    status = ReadSituations(request, data, situations);
  } else {
    status = ReadAlternatives(request, data.y, alternatives);
  }
  if (status != "OK") return status;
  const auto k = static_cast<Eigen::Index>(request.labels.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  if ((status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P)) != "OK") return status;
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);
  if (!probit) {
    if (conditional) {
      job = ConditionalLogitJob(request, gibbs, data, situations, prior);
    } else {
      job = MultinomialLogitJob(request, gibbs, data, alternatives, prior);
    }
    return "OK";
  }
  std::shared_ptr<const UtilityDesign> design;
  Eigen::VectorXi choice;
  Eigen::MatrixXd available;
  std::vector<long long> codes;
  long long base = 0;
  if (conditional) {
    std::vector<Eigen::MatrixXd> D;
    status = AlternativeDifferences(request, data, situations, codes, base, D, choice, available);
    if (status != "OK") return status;
    design = std::make_shared<AlternativeDesign>(std::move(D));
  } else {
    codes = alternatives.codes;
    base = alternatives.base;
    choice = alternatives.choice;
    design = std::make_shared<ChooserDesign>(data.X, alternatives.Count() - 1);
  }
  double nu = 0.0;
  Eigen::MatrixXd S;
  if ((status = ReadCovariancePrior(request, design->Differences(), nu, S)) != "OK") return status;
  job = ProbitJob(request, gibbs, data, design, choice, available, codes, base, prior, nu, S);
  return "OK";
}

namespace {
const ModelFamilyRegistration kMultinomial({"mnlogit", "mnprobit"}, &Intrepr_DC2, &LabelPerAlternative);
const ModelFamilyRegistration kConditional({"clogit", "cprobit"}, &Intrepr_DC2);
}
