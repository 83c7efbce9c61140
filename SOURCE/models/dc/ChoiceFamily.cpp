// The family interpreter of the choices among several alternatives: mnlogit (MNLogit), mnprobit
// (MNProbit), clogit (CLogit) and cprobit (CProbit).
#include <cstdio>
#include <memory>

#include "Alternatives.h"
#include "ConditionalLogit.h"
#include "Dataset.h"
#include "MIM_Choice.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "MultinomialLogit.h"
#include "RandomIntercepts.h"

namespace {

// Vague but proper, as for the binary models: N(0, 1/0.001) for each coefficient.
constexpr double kDefaultPrecision = 0.001;

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

}  // namespace

// Checks an mnlogit, mnprobit, clogit or cprobit statement: options, Gibbs settings, the
// constraints' precision, the alternatives and their data, the priors.
std::string Intrepr_DC2(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  if (!request.secondList.empty()) {
    return "Model \"" + request.keyword + "\" does not take a second list of variables.";
  }
  std::string status = CheckOptionNames(request, {"m", "P", "base"});
  if (status != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  const bool conditional = request.keyword == "clogit" || request.keyword == "cprobit";
  if (conditional && (status = CheckPanel(request)) != "OK") return status;
  if (conditional && request.options.numeric.count("base")) {
    return "Model \"" + request.keyword + "\" takes no \"base\": its coefficients are common to every alternative.";
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
  if (conditional) {
    job = ConditionalLogitJob(request, gibbs, data, situations, prior);
  } else {
    job = MultinomialLogitJob(request, gibbs, data, alternatives, prior);
  }
  return "OK";
}

namespace {
const ModelFamilyRegistration kMultinomial({"mnlogit"}, &Intrepr_DC2, &LabelPerAlternative);
const ModelFamilyRegistration kConditional({"clogit"}, &Intrepr_DC2);
}
