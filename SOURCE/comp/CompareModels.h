// CompareModels: posterior model probabilities from log-marginal likelihoods and prior model
// probabilities, and their table.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

class EventDispatcher;

class CompareModels {
public:
  // logML: one row per model, one column per method (labels printed as given); priors: one per
  // model, positive, summing to one (checked by the caller).
  CompareModels(std::vector<std::string> models, std::vector<std::string> methodLabels, Eigen::MatrixXd logML,
                Eigen::VectorXd priors);
  // Posterior probabilities, the shape of logML; a method with a value that is missing or not
  // finite gives NaN for every model.
  const Eigen::MatrixXd& Probabilities() const { return m_probabilities; }
  // Per method: each model's log-marginal likelihood, prior and posterior probability ("-" where
  // missing).
  void Print(const EventDispatcher& out) const;

private:
  std::vector<std::string> m_models;
  std::vector<std::string> m_methods;
  Eigen::MatrixXd m_logML;
  Eigen::VectorXd m_priors;
  Eigen::MatrixXd m_probabilities;
};
