// The family interpreter of the choices among several alternatives: mnlogit (MNLogit), mnprobit
// (MNProbit), clogit (CLogit) and cprobit (CProbit).
#include <memory>

#include "Alternatives.h"
#include "MIM_Choice.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "MultinomialLogit.h"

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
  ModelData data;
  if ((status = ExtractModelData(request, data)) != "OK") return status;
  Alternatives alternatives;
  if ((status = ReadAlternatives(request, data.y, alternatives)) != "OK") return status;
  const auto k = static_cast<Eigen::Index>(request.labels.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  if ((status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P)) != "OK") return status;
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);
  job = MultinomialLogitJob(request, gibbs, data, alternatives, prior);
  return "OK";
}

namespace {
const ModelFamilyRegistration kChoice({"mnlogit"}, &Intrepr_DC2, &LabelPerAlternative);
}
