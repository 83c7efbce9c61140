// IndexLink: what an index model predicts from its linear index x'b, as a family supplies it.
#pragma once

#include <string>

#include <Eigen/Dense>

// The quantities a model predicts through its index (the mean of y, the probability that y = 1,
// the probability of each category, ...), numbered from 1.
class IndexLink {
public:
  virtual ~IndexLink() = default;
  virtual int Types() const { return 1; }
  // What quantity `type` is, as tables head it ("E(y|x)", "Prob(y = 1|x)", ...).
  virtual std::string Describe(int type) const = 0;
  // Replaces each index (row d: posterior draw d; columns: observations or points) by the
  // quantity of `type`; `draws` holds every parameter, one row per draw (the rows of `index`), for
  // links that depend on more than the index.
  virtual void Quantity(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const = 0;
  // Replaces each index by the derivative of the quantity with respect to the index. By default
  // a central difference of Quantity; links whose derivative is cheap give it.
  virtual void Derivative(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const;
};

// E(y|x) = x'b: the linear models.
class IdentityLink : public IndexLink {
public:
  std::string Describe(int) const override { return "E(y|x)"; }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd>, const Eigen::Ref<const Eigen::MatrixXd>&) const override {}
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index.setOnes();
  }
};
