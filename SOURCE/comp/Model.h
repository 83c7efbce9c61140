// Model: an estimated model: what was estimated on which data, its draws per chain, their
// summary and diagnostics, named result matrices, and how it prints.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <Eigen/Dense>

#include "McmcDiagnostics.h"

class Dataset;
class EventDispatcher;
struct Figure;

// What a model statement asked for, kept with the model for printing, saving and later actions.
struct ModelDescription {
  std::string typeName;  // the estimator's class name ("LM", "LM_HET", ...)
  std::string keyword;   // the statement's keyword ("lm", ...)
  std::string title;     // a line a user reads ("Linear regression model", ...)
  std::string dependent;
  std::vector<std::string> regressors;
  std::vector<std::string> secondList;
  std::string estimationTime;  // seconds, as text
  long observations = 0;       // observations used
  long observationsDropped = 0;  // left out for missing values
  Eigen::VectorXd gibbs;         // draws, burn-in, chains, thinning, seed
  std::vector<std::string> constraints;  // as typed, for printing
};

// The options of a post-estimation action, read and checked by its statement.
struct ActionOptions {
  enum class Point { Mean, Median, PerObservation, Given };
  Point point = Point::Mean;
  bool pointGiven = false;
  Eigen::MatrixXd pointValues;  // with Point::Given: a vector (mfx) or one row per point (predict)
  long type = 1;
  bool typeGiven = false;
  Eigen::MatrixXd opt;
  bool optGiven = false;
  std::string prefix;  // predict: name prefix of the new variables ("" when absent)
  bool stats = false;
  long horizon = 0;  // forecast, irf: 0 when absent
  Eigen::MatrixXd W;
  bool WGiven = false;
  bool orthogonal = false;
  bool scaled = false;
  std::vector<std::string> names;  // store: the series asked for
};

// What an action works with besides its options.
struct ActionContext {
  const EventDispatcher& out;
  const std::atomic<bool>* interrupt;  // the user's stop request; may be null
  std::string modelName;                // as the workspace names the model
  std::shared_ptr<Dataset> dataset;  // the model's dataset (read only); null when it is gone
};

// What an action leaves besides its printed output: series to add to the model's dataset (one
// value per observation of the dataset, NaN for rows the model did not use).
struct ActionResult {
  std::vector<std::pair<std::string, Eigen::VectorXd>> variables;
  bool interrupted = false;
  // A figure the action drew (forecasts, impulse responses); the statement names and shows it.
  std::shared_ptr<Figure> figure;
};

class Model {
public:
  Model() = default;
  virtual ~Model() = default;

  // The estimator's class name, as results name it.
  virtual std::string TypeName() const { return m_description.typeName; }
  // Prints the results: the model, the data, the sampler settings, then per parameter the
  // posterior mean, standard deviation, 95% credible interval and convergence figures, then the
  // log-marginal likelihoods.
  virtual void PrintResults(const EventDispatcher& out) const;
  // Whether the description and the labels of the draws agree as this class reads them (a model
  // read from a file is checked before use); a plain model reads nothing by position.
  virtual bool LayoutHolds() const { return true; }
  // Whether the model offers a post-estimation action ("mfx", "predict", ...).
  virtual bool ProvidesAction(const std::string&) const { return false; }
  // Carries out an action the model provides: prints its results through `context.out` and
  // fills `result`. Returns "OK" or the message of a refusal (the statement raises it).
  virtual std::string RunAction(const std::string& action, const ActionOptions& options,
                                const ActionContext& context, ActionResult& result) const;
  // Prints the MCMC diagnostics of the draws: per parameter, per chain and pooled. False when
  // the model holds no draws to diagnose.
  bool PrintDiagnostics(const EventDispatcher& out) const;

  // Makes an empty model of an estimator's class, so that a model read back from a file acts as
  // the one that was saved; a plain Model for classes nobody registered.
  static std::shared_ptr<Model> Create(const std::string& typeName);
  // Registers the class of an estimator's models (done once per class, by a static
  // ModelClassRegistration in the family's folder).
  static void RegisterClass(const std::string& typeName, std::function<std::shared_ptr<Model>()> make);

  // Sets the draws (one matrix per chain, columns labelled), computes their summary and
  // diagnostics once, and adds the summary results.
  void SetDraws(std::vector<Eigen::MatrixXd> draws, std::vector<std::string> labels);
  const std::vector<Eigen::MatrixXd>& Draws() const { return m_draws; }
  const std::vector<std::string>& Labels() const { return m_labels; }
  const numerics::DrawSummary& Summary() const { return m_summary; }
  // The pooled draws of one parameter (all chains, in order); empty when no such label.
  Eigen::VectorXd ParameterDraws(const std::string& label) const;

  ModelDescription& Description() { return m_description; }
  const ModelDescription& Description() const { return m_description; }

  void AddResult(const std::string& name, Eigen::MatrixXd value);
  // Whether a member exists, and its kind code (results are matrices).
  bool HasMember(const std::string& name, int& code) const;
  std::shared_ptr<Eigen::MatrixXd> GetpMatrix(const std::string& name) const;
  std::vector<std::string> MemberNames() const;
  // A scalar result, NaN when absent.
  double ScalarResult(const std::string& name) const;

  void SetDataset(std::weak_ptr<Dataset> dataset, std::string name);
  const std::string& DatasetName() const { return m_datasetName; }
  std::shared_ptr<Dataset> GetDataset() const { return m_dataset.lock(); }
  // The dataset the model was estimated on was cleared: the model stays, without its data.
  void SetDatasetWasDeleted() { m_dataset.reset(); m_datasetDeleted = true; }
  bool DatasetWasDeleted() const { return m_datasetDeleted; }

protected:
  Model(const Model&) = default;
  Model& operator=(const Model&) = default;

public:
  // Copies what a model holds (description, draws, results, dataset link) into another, as
  // loading does for models of a registered class.
  void CopyContentsFrom(const Model& other) { *this = other; }

private:
  ModelDescription m_description;
  std::map<std::string, std::shared_ptr<Eigen::MatrixXd>> m_results;
  std::vector<Eigen::MatrixXd> m_draws;
  std::vector<std::string> m_labels;
  numerics::DrawSummary m_summary;
  std::weak_ptr<Dataset> m_dataset;
  std::string m_datasetName;
  bool m_datasetDeleted = false;
};

// Registers a model class by the estimator's name at start-up.
struct ModelClassRegistration {
  ModelClassRegistration(const std::string& typeName, std::function<std::shared_ptr<Model>()> make) {
    Model::RegisterClass(typeName, std::move(make));
  }
};
