// The action layer: predictions and marginal effects against the closed forms computed over the
// same draws, for the identity link of the linear models and for a nonlinear link whose
// derivative the layer takes numerically.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Dataset.h"
#include "EventDispatcher.h"
#include "LM.h"
#include "MIM_LM.h"
#include "McmcDiagnostics.h"
#include "RandomEngine.h"

namespace {

// y = 1 + 2 x + 0.5 d + e on 300 observations, d binary; the third row has a missing x.
std::shared_ptr<Dataset> Simulate() {
  RandomEngine rng;
  rng.Seed(3);
  const int n = 300;
  Eigen::MatrixXd data(n, 3);
  for (int i = 0; i < n; ++i) {
    const double x = rng.Normal();
    const double d = rng.Uniform() < 0.4 ? 1.0 : 0.0;
    data.row(i) << 1.0 + 2.0 * x + 0.5 * d + 0.3 * rng.Normal(), x, d;
  }
  data(2, 1) = NAN;
  return std::make_shared<Dataset>(std::vector<std::string>{"y", "x", "d"}, data);
}

// Estimates y ~ constant x d on the complete rows of the dataset and describes the model as a
// model statement would.
template <class Mim>
std::shared_ptr<Mim> Estimate(const std::shared_ptr<Dataset>& dataset) {
  std::vector<Eigen::Index> rows;
  for (Eigen::Index i = 0; i < dataset->NumberOfObservations(); ++i) {
    if (!dataset->Data().row(i).array().isNaN().any()) rows.push_back(i);
  }
  Eigen::MatrixXd X(static_cast<Eigen::Index>(rows.size()), 3);
  Eigen::VectorXd y(X.rows());
  for (Eigen::Index r = 0; r < X.rows(); ++r) {
    const auto i = rows[static_cast<std::size_t>(r)];
    X.row(r) << 1.0, dataset->Data()(i, 1), dataset->Data()(i, 2);
    y(r) = dataset->Data()(i, 0);
  }
  Eigen::VectorXd gibbs(5);
  gibbs << 2000, 200, 2, 1, 42;
  LM lm(gibbs);
  const LinearPrior prior = LinearPrior::Combine(Eigen::VectorXd::Zero(3), Eigen::MatrixXd::Identity(3, 3) * 1e-3,
                                                 Eigen::MatrixXd(0, 3), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  EXPECT_TRUE(lm.Sample(y, X, prior, 0.001, 0.001, EventDispatcher(), nullptr));
  auto model = std::make_shared<Mim>();
  model->SetEstimates(lm, "LM", "Linear regression model", {"y$constant", "y$x", "y$d", "tau"}, lm.logML,
                      lm.logML_CJ);
  model->Description().keyword = "lm";
  model->Description().dependent = "y";
  model->Description().regressors = {"constant", "x", "d"};
  model->Description().observations = static_cast<long>(rows.size());
  model->SetDataset(dataset, "data");
  return model;
}

ActionContext Context(const std::shared_ptr<Dataset>& dataset) {
  static const EventDispatcher out;
  return ActionContext{out, nullptr, "m", dataset};
}

Eigen::MatrixXd Coefficients(const Model& model) { return model.GetpMatrix("draws")->leftCols(3); }

// E(y|x) = exp(x'b): a link without its own derivative.
class ExpLink : public IndexLink {
public:
  std::string Describe(int) const override { return "exp(x'b)"; }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = index.array().exp();
  }
};

class ExpModel : public MIM_LinearFamily {
protected:
  const IndexLink& Link() const override {
    static const ExpLink link;
    return link;
  }
};

}  // namespace

// Per observation, the summaries of x_i'b over the draws; the row with a missing x is left out.
TEST(PostEstimation, LinearPredictionsMatchTheDrawsOfTheIndex) {
  const auto dataset = Simulate();
  const auto model = Estimate<MIM_LinearFamily>(dataset);
  ActionOptions options;
  options.point = ActionOptions::Point::PerObservation;
  RowSummaries summaries;
  ActionData data;
  bool interrupted = true;
  ASSERT_EQ(model->ComputePredictions(options, Context(dataset), summaries, data, interrupted), "OK");
  EXPECT_FALSE(interrupted);
  ASSERT_EQ(summaries.mean.size(), 299);
  EXPECT_EQ(data.data.rows[2], 3);  // row 2 of the dataset has no x
  const Eigen::MatrixXd B = Coefficients(*model);
  for (Eigen::Index i : {0, 2, 150, 298}) {
    const Eigen::VectorXd draws = B * data.data.X.row(i).transpose();
    const double mean = draws.mean();
    const double sd = std::sqrt((draws.array() - mean).square().sum() / static_cast<double>(draws.size() - 1));
    std::vector<double> values(draws.data(), draws.data() + draws.size());
    EXPECT_NEAR(summaries.mean(i), mean, 1e-12 * (1 + std::fabs(mean)));
    EXPECT_NEAR(summaries.sd(i), sd, 1e-10);
    EXPECT_NEAR(summaries.lower(i), numerics::Quantile(values, 0.025), 1e-12);
    EXPECT_NEAR(summaries.upper(i), numerics::Quantile(values, 0.975), 1e-12);
  }
  // At given points: one row each.
  options.point = ActionOptions::Point::Given;
  options.pointValues = (Eigen::MatrixXd(2, 3) << 1, 0, 0, 1, 1, 1).finished();
  ASSERT_EQ(model->ComputePredictions(options, Context(dataset), summaries, data, interrupted), "OK");
  EXPECT_NEAR(summaries.mean(1), B.rowwise().sum().mean(), 1e-12);
  // The spread of the stored means over the dataset keeps the missing row missing.
  const Eigen::VectorXd spread = data.Spread(Eigen::VectorXd::Ones(299));
  EXPECT_TRUE(std::isnan(spread(2)));
  EXPECT_EQ(spread.size(), 300);
}

// For a linear mean the marginal effect of every regressor is its coefficient, and the
// discrete change of the binary one as well, wherever it is evaluated; the constant has none.
TEST(PostEstimation, LinearMarginalEffectsAreTheCoefficients) {
  const auto dataset = Simulate();
  const auto model = Estimate<MIM_LinearFamily>(dataset);
  const Eigen::MatrixXd B = Coefficients(*model);
  for (auto point : {ActionOptions::Point::Mean, ActionOptions::Point::Median, ActionOptions::Point::PerObservation}) {
    ActionOptions options;
    options.point = point;
    MarginalEffects effects;
    bool interrupted = true;
    ASSERT_EQ(model->ComputeMarginalEffects(options, Context(dataset), effects, interrupted), "OK");
    ASSERT_EQ(effects.names, (std::vector<std::string>{"x", "d"}));
    EXPECT_EQ(effects.discrete, (std::vector<bool>{false, true}));
    EXPECT_LT((effects.draws.col(0) - B.col(1)).cwiseAbs().maxCoeff(), 1e-12);
    EXPECT_LT((effects.draws.col(1) - B.col(2)).cwiseAbs().maxCoeff(), 1e-12);
  }
}

// exp(x'b): the derivative taken numerically by the layer against exp(x'b) b_j, and the discrete
// change exp(x'b with d = 1) - exp(x'b with d = 0), at the means and averaged over observations.
TEST(PostEstimation, NonlinearLinkEffectsMatchTheirClosedForms) {
  const auto dataset = Simulate();
  const auto model = Estimate<ExpModel>(dataset);
  const Eigen::MatrixXd B = Coefficients(*model);
  ActionOptions options;
  MarginalEffects effects;
  bool interrupted = true;
  ASSERT_EQ(model->ComputeMarginalEffects(options, Context(dataset), effects, interrupted), "OK");
  RowSummaries s;
  ActionData data;
  options.point = ActionOptions::Point::PerObservation;
  ASSERT_EQ(model->ComputePredictions(options, Context(dataset), s, data, interrupted), "OK");
  const Eigen::RowVectorXd xbar = data.data.X.colwise().mean();
  for (Eigen::Index d = 0; d < B.rows(); d += 97) {
    const Eigen::RowVectorXd b = B.row(d);
    const double at = std::exp(xbar.dot(b));
    EXPECT_NEAR(effects.draws(d, 0), at * b(1), 1e-6 * std::fabs(at * b(1)) + 1e-9);
    Eigen::RowVectorXd one = xbar, zero = xbar;
    one(2) = 1.0;
    zero(2) = 0.0;
    EXPECT_NEAR(effects.draws(d, 1), std::exp(one.dot(b)) - std::exp(zero.dot(b)), 1e-10);
  }
  MarginalEffects averaged;
  ASSERT_EQ(model->ComputeMarginalEffects(options, Context(dataset), averaged, interrupted), "OK");
  for (Eigen::Index d = 0; d < B.rows(); d += 211) {
    const Eigen::VectorXd index = data.data.X * B.row(d).transpose();
    const double derivative = index.array().exp().mean();
    EXPECT_NEAR(averaged.draws(d, 0), derivative * B(d, 1), 1e-6 * std::fabs(derivative * B(d, 1)));
    Eigen::MatrixXd one = data.data.X, zero = data.data.X;
    one.col(2).setOnes();
    zero.col(2).setZero();
    const double change = ((one * B.row(d).transpose()).array().exp() - (zero * B.row(d).transpose()).array().exp()).mean();
    EXPECT_NEAR(averaged.draws(d, 1), change, 1e-9 * std::fabs(change) + 1e-12);
  }
}

// Refusals: the data gone, the data changed, a point of the wrong size, a type beyond the model's.
TEST(PostEstimation, ActionsNameWhatTheyLack) {
  const auto dataset = Simulate();
  const auto model = Estimate<MIM_LinearFamily>(dataset);
  ActionOptions options;
  MarginalEffects effects;
  bool interrupted = false;
  EXPECT_EQ(model->ComputeMarginalEffects(options, Context(nullptr), effects, interrupted),
            "Model \"m\" was estimated on dataset \"data\", which is no longer in the workspace: \"mfx\" "
            "needs its data.");
  // A given point needs no data.
  options.point = ActionOptions::Point::Given;
  options.pointValues = Eigen::RowVector3d(1, 0.5, 0);
  EXPECT_EQ(model->ComputeMarginalEffects(options, Context(nullptr), effects, interrupted), "OK");
  options.pointValues = Eigen::RowVector2d(1, 0.5);
  EXPECT_EQ(model->ComputeMarginalEffects(options, Context(nullptr), effects, interrupted),
            "The \"point\" vector must hold one value for each of the 3 regressors of model \"m\".");
  auto changed = std::make_shared<Dataset>(*dataset);
  Eigen::VectorXd x = changed->GetVariable("x");
  x(10) = NAN;
  changed->ReplaceVariable("x", x);
  options.point = ActionOptions::Point::Mean;
  EXPECT_EQ(model->ComputeMarginalEffects(options, Context(changed), effects, interrupted),
            "Dataset \"data\" has changed since model \"m\" was estimated on it: 298 observations are "
            "complete now, 299 were used then. Estimate the model again.");
  options.type = 2;
  RowSummaries s;
  ActionData data;
  EXPECT_EQ(model->ComputePredictions(options, Context(dataset), s, data, interrupted),
            "Model \"m\" offers 1 type of predictions:\n-> 1: E(y|x)");
}
