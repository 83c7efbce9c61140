// The discrete-choice family's interpreter: probit (Probit) and logit (Logit).
#include <cmath>

#include "Dataset.h"
#include "Logit.h"
#include "MIM_DC.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "Probit.h"

namespace {

// Vague but proper: coefficients N(0, 1/0.001) each. On the probit scale that is already wide.
constexpr double kDefaultPrecision = 0.001;

// Whether the index at `b` puts every observation on the side of zero its outcome says: the
// data are then separated, and the likelihood alone would send the coefficients to infinity.
bool Separated(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::VectorXd& b) {
  const Eigen::VectorXd index = X * b;
  for (Eigen::Index i = 0; i < y.size(); ++i) {
    if ((y(i) > 0.5) != (index(i) > 0.0)) return false;
  }
  return true;
}

}  // namespace

// Checks a probit or logit statement: options, Gibbs settings, constraints, a binary dependent variable,
// the prior.
std::string Intrepr_DC1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  std::string status = CheckOptionNames(request, {"m", "P"});
  if (status != "OK") return status;
  Eigen::VectorXd gibbs;
  status = ModelsInterpreter::read_Gibbs(request.options.numeric, gibbs);
  if (status != "OK") return status;
  Eigen::MatrixXd xi(0, 0);
  if (request.constraints.Count() > 0) {
    status = ModelsInterpreter::CheckForRestrictions(request.options.numeric, request.constraints.Count(), xi);
    if (status != "OK") return status;
  }
  ModelData data;
  status = ExtractModelData(request, data);
  if (status != "OK") return status;
  if (!ModelsInterpreter::check_Binary(data.y)) {
    return "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword +
           "\" must hold only the values 0 and 1.";
  }
  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P);
  if (status != "OK") return status;
  const bool vaguePrior = !request.options.numeric.count("m") && !request.options.numeric.count("P");
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);
  const std::vector<std::string> labels = request.labels;
  const bool logit = request.keyword == "logit";
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    std::shared_ptr<Model> model;
    double logML = 0.0, logML_CJ = 0.0;
    if (logit) {
      Logit estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, prior, context.out, context.interrupt)) {
        if (estimator.noMode) {
          throw EstimationRefused("The posterior of model \"logit\" has no mode that the sampler can find: the "
                                  "regressors separate the outcomes and the prior does not bound the "
                                  "coefficients. Give a stronger prior with \"P\".");
        }
        return nullptr;
      }
      model = std::make_shared<MIM_Logit>();
      model->Description().typeName = "Logit";
      model->Description().title = "Binary logit model";
      model->Description().gibbs = estimator.Settings().ToVector();
      model->SetDraws(estimator.Draws(), labels);
      model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, estimator.acceptance));
      logML = estimator.logML;
      logML_CJ = estimator.logML_CJ;
    } else {
      Probit estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, prior, context.out, context.interrupt)) return nullptr;
      model = std::make_shared<MIM_Probit>();
      model->Description().typeName = "Probit";
      model->Description().title = "Binary probit model";
      model->Description().gibbs = estimator.Settings().ToVector();
      model->SetDraws(estimator.Draws(), labels);
      logML = estimator.logML;
      logML_CJ = estimator.logML_CJ;
    }
    model->Description().observations = static_cast<long>(data.y.size());
    model->Description().observationsDropped = data.dropped;
    model->AddResult("logML", Eigen::MatrixXd::Constant(1, 1, logML));
    model->AddResult("logML_CJ", Eigen::MatrixXd::Constant(1, 1, logML_CJ));
    if (vaguePrior && context.warnings && Separated(data.y, data.X, model->Summary().mean)) {
      context.warnings->push_back("The outcomes are perfectly separated by the regressors: the data do not bound the "
                                  "coefficients, which the vague default prior then decides. Give a stronger prior "
                                  "with \"P\", or drop the regressor that separates them.");
    }
    return model;
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kDiscreteChoice({"probit", "logit"}, &Intrepr_DC1);
}
