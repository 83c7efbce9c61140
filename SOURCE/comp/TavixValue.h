// TavixValue: the result of every expression: a kind code and one shared pointer per kind.
#pragma once

#include <memory>
#include <string>

#include <Eigen/Dense>

#include "ValueKind.h"

class Dataset;
class Model;
class TavixStructure;

// Copies share their contents; only the pointer of the value's kind is set.
struct TavixValue {
  int code = kind::UNKNOWN;
  std::shared_ptr<Eigen::MatrixXd> matrix;
  std::shared_ptr<Dataset> dataset;
  std::shared_ptr<Model> model;
  std::shared_ptr<TavixStructure> structure;
  std::shared_ptr<std::string> string;

  static TavixValue FromMatrix(std::shared_ptr<Eigen::MatrixXd> m) {
    TavixValue v;
    v.code = kind::MATRIX;
    v.matrix = std::move(m);
    return v;
  }
  static TavixValue FromMatrix(Eigen::MatrixXd m) {
    return FromMatrix(std::make_shared<Eigen::MatrixXd>(std::move(m)));
  }
  static TavixValue FromScalar(double x) {
    return FromMatrix(std::make_shared<Eigen::MatrixXd>(Eigen::MatrixXd::Constant(1, 1, x)));
  }
  static TavixValue FromDataset(std::shared_ptr<Dataset> d) {
    TavixValue v;
    v.code = kind::DATASET;
    v.dataset = std::move(d);
    return v;
  }
  static TavixValue FromModel(std::shared_ptr<Model> m) {
    TavixValue v;
    v.code = kind::MODEL;
    v.model = std::move(m);
    return v;
  }
  static TavixValue FromStructure(std::shared_ptr<TavixStructure> s) {
    TavixValue v;
    v.code = kind::STRUCTURE;
    v.structure = std::move(s);
    return v;
  }
  static TavixValue FromString(std::shared_ptr<std::string> s) {
    TavixValue v;
    v.code = kind::STRING;
    v.string = std::move(s);
    return v;
  }
  static TavixValue FromString(std::string s) {
    return FromString(std::make_shared<std::string>(std::move(s)));
  }

  bool IsMatrix() const { return code == kind::MATRIX; }
  bool IsDataset() const { return code == kind::DATASET; }
  bool IsModel() const { return code == kind::MODEL; }
  bool IsStructure() const { return code == kind::STRUCTURE; }
  bool IsString() const { return code == kind::STRING; }
};
