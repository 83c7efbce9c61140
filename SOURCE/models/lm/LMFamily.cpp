// The linear family's interpreter: lm (LM, or LM_HET with a second list) and lm_re (LM_RE).
#include <cmath>
#include <limits>

#include "Dataset.h"
#include "LM.h"
#include "MIM_LM.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"

namespace {

// Vague but proper defaults: coefficients N(0, 1000) each, precisions Gamma(0.001, 0.001).
constexpr double kDefaultPrecision = 0.001;
constexpr double kDefaultShape = 0.001;
constexpr double kDefaultRate = 0.001;

// The constraints' columns for the main list and for the second list.
void SplitConstraints(const ModelRequest& request, Eigen::MatrixXd& main, Eigen::MatrixXd& second) {
  const auto k = static_cast<Eigen::Index>(request.labels.size());
  const Eigen::MatrixXd& R = request.constraints.R;
  main = R.leftCols(std::min(k, R.cols()));
  second = R.cols() > k ? Eigen::MatrixXd(R.rightCols(R.cols() - k)) : Eigen::MatrixXd(R.rows(), 0);
}

class LMJob : public ModelJob {
public:
  LMJob(Eigen::VectorXd gibbs, ModelData data, LinearPrior prior, double a, double b,
        std::vector<std::string> labels)
      : m_gibbs(std::move(gibbs)), m_data(std::move(data)), m_prior(std::move(prior)), m_a(a),
        m_b(b), m_labels(std::move(labels)) {}

  std::shared_ptr<Model> Estimate(const ModelRunContext& context) override {
    LM estimator(m_gibbs);
    if (!estimator.Sample(m_data.y, m_data.X, m_prior, m_a, m_b, context.out, context.interrupt)) {
      return nullptr;
    }
    m_labels.push_back("tau");
    auto model = std::make_shared<MIM_LinearFamily>(estimator, "LM", "Linear regression model",
                                                    m_labels, estimator.logML, estimator.logML_CJ);
    model->Description().observations = static_cast<long>(m_data.y.size());
    model->Description().observationsDropped = m_data.dropped;
    return model;
  }

private:
  Eigen::VectorXd m_gibbs;
  ModelData m_data;
  LinearPrior m_prior;
  double m_a, m_b;
  std::vector<std::string> m_labels;
};

}  // namespace

// Checks an lm or lm_re statement: options, Gibbs settings, constraints, data and priors.
std::string Intrepr_LM1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const bool randomEffects = request.keyword == "lm_re";
  const bool heteroskedastic = !request.secondList.empty();
  if (randomEffects && heteroskedastic) {
    return "Model \"lm_re\" does not take a second list of variables.";
  }
  std::vector<std::string> numeric = {"m", "P", "a", "b"};
  if (heteroskedastic) numeric.insert(numeric.end(), {"mz", "Pz"});
  if (randomEffects) numeric.insert(numeric.end(), {"a_re", "b_re"});
  std::string status = CheckOptionNames(request, numeric);
  if (status != "OK") return status;

  Eigen::VectorXd gibbs;
  status = ModelsInterpreter::read_Gibbs(request.options.numeric, gibbs);
  if (status != "OK") return status;

  Eigen::MatrixXd xi(0, 0);
  if (request.constraints.Count() > 0) {
    status = ModelsInterpreter::CheckForRestrictions(request.options.numeric,
                                                     request.constraints.Count(), xi);
    if (status != "OK") return status;
  }

  ModelData data;
  status = ExtractModelData(request, data);
  if (status != "OK") return status;

  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P);
  if (status != "OK") return status;
  double a = 0.0, b = 0.0;
  status = ReadGammaPrior(request, "a", "b", kDefaultShape, kDefaultRate, a, b);
  if (status != "OK") return status;

  Eigen::MatrixXd Rmain, Rsecond;
  SplitConstraints(request, Rmain, Rsecond);
  if (randomEffects || heteroskedastic) {
    return "Model \"" + request.keyword + "\"" + (heteroskedastic ? " with a second list" : "") +
           " is not available yet.";
  }
  job = std::make_unique<LMJob>(gibbs, std::move(data),
                                LinearPrior::Combine(m, P, Rmain, request.constraints.r, xi), a, b,
                                request.labels);
  return "OK";
}

namespace {
const ModelFamilyRegistration kLinearFamily({"lm", "lm_re"}, &Intrepr_LM1);
}
