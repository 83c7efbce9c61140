// ModelFamily: what a model statement hands to a family of models, and the table of families.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <Eigen/Dense>

class Dataset;
class EventDispatcher;
class Model;

// The options of one model statement, by name.
struct ModelOptions {
  std::map<std::string, bool> logical;
  std::map<std::string, Eigen::MatrixXd> numeric;
  std::map<std::string, std::string> strings;
};

// Linear constraints R * coefficients = r, with their precision Xi (checked by the family).
struct LinearConstraints {
  Eigen::MatrixXd R;  // one row per constraint, one column per label (main list, then second)
  Eigen::VectorXd r;
  std::vector<std::string> texts;  // each constraint as typed
  Eigen::Index Count() const { return R.rows(); }
};

// One equation of a statement: its dependent variable, regressors and their labels. A series
// model (arima, varm) has one equation without a dependent variable, its series as regressors.
struct ModelEquationRequest {
  std::string dependent;
  std::vector<std::string> regressors;
  std::vector<std::string> secondList;
  std::vector<std::string> labels;  // dependent$regressor
};

// Everything a model statement read, after the dataset and the constraints are known.
struct ModelRequest {
  std::string keyword;
  std::string dependent;  // the first equation's
  std::vector<std::string> regressors;  // plain variable names, in order (the first equation's)
  std::vector<std::string> secondList;
  std::vector<std::string> labels;  // dependent$regressor, of every equation in order
  std::vector<ModelEquationRequest> equations;  // one for a single-equation model
  std::vector<std::string> secondLabels;  // prefix$variable
  ModelOptions options;
  std::shared_ptr<Dataset> dataset;
  std::string datasetName;
  LinearConstraints constraints;
};

// What an estimation sees while it runs.
struct ModelRunContext {
  const EventDispatcher& out;
  const std::atomic<bool>* interrupt;  // set by the user to stop; may be null
  std::vector<std::string>* warnings = nullptr;  // what the statement should warn about after the results
};

// A checked model statement, ready to estimate.
class ModelJob {
public:
  virtual ~ModelJob() = default;
  // Samples and returns the estimated model; null when the user interrupted.
  virtual std::shared_ptr<Model> Estimate(const ModelRunContext& context) = 0;
};

// A job given as a function over the family's checked data (a closure that owns a copy of it).
class ModelJobFunction : public ModelJob {
public:
  using Function = std::function<std::shared_ptr<Model>(const ModelRunContext& context)>;
  explicit ModelJobFunction(Function estimate) : m_estimate(std::move(estimate)) {}
  std::shared_ptr<Model> Estimate(const ModelRunContext& context) override { return m_estimate(context); }

private:
  Function m_estimate;
};

// A family's interpreter: checks the statement's options and data; returns "OK" and sets `job`,
// or returns the message of the refusal.
using FamilyInterpreter = std::string (*)(const ModelRequest& request, std::unique_ptr<ModelJob>& job);

// A family whose coefficients are not one per regressor (a set per alternative of a choice, ...)
// names them from its data: it rewrites request.labels before the constraints are resolved
// against them. Returns "OK" or the message.
using FamilyLabeller = std::string (*)(ModelRequest& request);

// Registers a family's interpreter (and its labeller, if it has one) for the keywords it serves
// (done once per family folder, by a static ModelFamilyRegistration in its own file).
struct ModelFamilyRegistration {
  ModelFamilyRegistration(std::vector<std::string> keywords, FamilyInterpreter interpreter,
                          FamilyLabeller labeller = nullptr);
};

// The interpreter of a keyword; null when no family serves it (yet).
FamilyInterpreter FindModelFamily(const std::string& keyword);
// The labeller of a keyword; null when its labels are the usual dependent$regressor.
FamilyLabeller FindModelLabeller(const std::string& keyword);
