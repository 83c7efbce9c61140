// Speed of the action layer: mfx averaged over the observations ("x_i") and predict for every
// observation, on a linear model of 10,000 observations and 10 regressors with 20,000 draws.
#include <chrono>
#include <cstdio>

#include "Dataset.h"
#include "EventDispatcher.h"
#include "MIM_LM.h"
#include "RandomEngine.h"

namespace {

constexpr int kObservations = 10000;
constexpr int kRegressors = 10;
constexpr int kDraws = 20000;

// A model whose draws are simulated directly: the layer's cost does not depend on how they were
// sampled. Half of the regressors are binary, so the discrete changes are timed too.
class BenchModel : public MIM_LinearFamily {
public:
  BenchModel(const std::shared_ptr<Dataset>& dataset, RandomEngine& rng) {
    std::vector<std::string> labels, regressors = {"constant"};
    for (int j = 1; j < kRegressors; ++j) regressors.push_back("x" + std::to_string(j));
    for (const auto& r : regressors) labels.push_back("y$" + r);
    labels.push_back("tau");
    Eigen::MatrixXd draws(kDraws, kRegressors + 1);
    for (Eigen::Index i = 0; i < draws.size(); ++i) draws.data()[i] = 1.0 + 0.1 * rng.Normal();
    SetDraws({draws}, labels);
    Description().typeName = "LM";
    Description().keyword = "lm";
    Description().dependent = "y";
    Description().regressors = regressors;
    Description().observations = kObservations;
    SetDataset(dataset, "d");
  }
};

double Seconds(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main() {
  RandomEngine rng;
  rng.Seed(7);
  std::vector<std::string> names = {"y"};
  Eigen::MatrixXd data(kObservations, kRegressors);
  for (int j = 1; j < kRegressors; ++j) names.push_back("x" + std::to_string(j));
  for (int i = 0; i < kObservations; ++i) {
    data(i, 0) = rng.Normal();
    for (int j = 1; j < kRegressors; ++j) data(i, j) = j % 2 ? rng.Normal() : (rng.Uniform() < 0.5 ? 1.0 : 0.0);
  }
  auto dataset = std::make_shared<Dataset>(names, data);
  const BenchModel model(dataset, rng);
  const EventDispatcher out;
  const ActionContext context{out, nullptr, "m", dataset};

  ActionOptions options;
  options.point = ActionOptions::Point::PerObservation;
  auto start = std::chrono::steady_clock::now();
  MarginalEffects effects;
  bool interrupted = false;
  model.ComputeMarginalEffects(options, context, effects, interrupted);
  std::printf("mfx, \"point\" = \"x_i\" (5 continuous, 4 binary regressors): %.2f s\n", Seconds(start));

  start = std::chrono::steady_clock::now();
  RowSummaries summaries;
  ActionData actionData;
  model.ComputePredictions(options, context, summaries, actionData, interrupted);
  std::printf("predict, every observation (mean, sd, 95%% interval):     %.2f s\n", Seconds(start));
  return 0;
}
