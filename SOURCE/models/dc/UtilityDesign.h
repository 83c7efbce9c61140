// UtilityDesign: how the coefficients enter the means of the utility differences of a choice
// among alternatives, m_i = X_i b (p differences per observation).
#pragma once

#include <vector>

#include <Eigen/Dense>

// Shared by the chains, which run at once: its methods keep no state.
class UtilityDesign {
public:
  virtual ~UtilityDesign() = default;
  virtual Eigen::Index Coefficients() const = 0;
  virtual Eigen::Index Differences() const = 0;
  virtual Eigen::Index Observations() const = 0;
  // M (n x p): row i is (X_i b)'.
  virtual void Means(const Eigen::VectorXd& b, Eigen::MatrixXd& M) const = 0;
  // sum_i X_i' H X_i into `XtHX` and sum_i X_i' (H w_i) into `XtHw`, given WH = W H (n x p).
  virtual void CrossProducts(const Eigen::MatrixXd& H, const Eigen::MatrixXd& WH, Eigen::MatrixXd& XtHX,
                             Eigen::VectorXd& XtHw) const = 0;
};

// The multinomial probit: one coefficient vector per alternative other than the base, X_i = I_p
// (x) x_i', b stacked alternative by alternative; sum X_i'HX_i = H (x) X'X.
class ChooserDesign : public UtilityDesign {
public:
  ChooserDesign(Eigen::MatrixXd X, Eigen::Index differences);
  Eigen::Index Coefficients() const override { return m_X.cols() * m_p; }
  Eigen::Index Differences() const override { return m_p; }
  Eigen::Index Observations() const override { return m_X.rows(); }
  void Means(const Eigen::VectorXd& b, Eigen::MatrixXd& M) const override;
  void CrossProducts(const Eigen::MatrixXd& H, const Eigen::MatrixXd& WH, Eigen::MatrixXd& XtHX,
                     Eigen::VectorXd& XtHw) const override;

private:
  Eigen::MatrixXd m_X;
  Eigen::Index m_p;
  Eigen::MatrixXd m_XtX;
};

// The conditional probit: coefficients common to every alternative, row j of X_i the regressors
// of alternative j less the base's (D_j, n x k, one matrix per alternative);
// sum X_i'HX_i = sum_jl H_jl D_j'D_l with the D_j'D_l kept.
class AlternativeDesign : public UtilityDesign {
public:
  explicit AlternativeDesign(std::vector<Eigen::MatrixXd> differences);
  Eigen::Index Coefficients() const override { return m_D.front().cols(); }
  Eigen::Index Differences() const override { return static_cast<Eigen::Index>(m_D.size()); }
  Eigen::Index Observations() const override { return m_D.front().rows(); }
  void Means(const Eigen::VectorXd& b, Eigen::MatrixXd& M) const override;
  void CrossProducts(const Eigen::MatrixXd& H, const Eigen::MatrixXd& WH, Eigen::MatrixXd& XtHX,
                     Eigen::VectorXd& XtHw) const override;

private:
  std::vector<Eigen::MatrixXd> m_D;
  std::vector<Eigen::MatrixXd> m_DtD;  // D_j'D_l at j * p + l
};
