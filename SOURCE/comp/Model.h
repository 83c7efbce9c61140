// Model: the base of every estimated model: named result matrices and how it prints.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <Eigen/Dense>

class Dataset;
class EventDispatcher;

class Model {
public:
  virtual ~Model() = default;

  // The model's kind, as results name it.
  virtual std::string TypeName() const = 0;
  // Prints the model's results; the base prints its type and the names of its results.
  virtual void PrintResults(const EventDispatcher& out) const;

  void AddResult(const std::string& name, Eigen::MatrixXd value);
  // Whether a member exists, and its kind code (results are matrices).
  bool HasMember(const std::string& name, int& code) const;
  std::shared_ptr<Eigen::MatrixXd> GetpMatrix(const std::string& name) const;
  std::vector<std::string> MemberNames() const;

  void SetDataset(std::weak_ptr<Dataset> dataset, std::string name);
  const std::string& DatasetName() const { return m_datasetName; }
  std::shared_ptr<Dataset> GetDataset() const { return m_dataset.lock(); }

private:
  std::map<std::string, std::shared_ptr<Eigen::MatrixXd>> m_results;
  std::weak_ptr<Dataset> m_dataset;
  std::string m_datasetName;
};
