// RandomIntercepts: models with one random intercept per group of a panel. The joint draw of the
// coefficients and the intercepts given a working response, the integrated likelihood of binary
// outcomes, and the groups themselves.
#pragma once

#include <vector>

#include <Eigen/Dense>

#include "LinearPrior.h"
#include "RandomEngine.h"

// Each observation's group (0 ... G-1) and the observations listed group by group.
struct PanelGroups {
  std::vector<int> group;              // per observation
  std::vector<Eigen::Index> members;   // observations, group by group
  std::vector<Eigen::Index> start;     // G + 1 offsets into `members`
  Eigen::VectorXd size;                // T_g

  // From the group of each observation; every number 0 ... G-1 must be used.
  static PanelGroups FromCodes(const std::vector<int>& groups);
  Eigen::Index Count() const { return size.size(); }
  // index_i += a_{g(i)} for the observations [first, end).
  void AddEffects(const Eigen::VectorXd& effects, Eigen::Index first, Eigen::Index end, Eigen::VectorXd& index) const;
};

// z_i = x_i'b + a_{g(i)} + e_i, e_i ~ N(0, 1/w_i), a_g ~ N(0, 1/omega), b ~ N(m, P^-1): one draw
// of (b, a) as a block: b from its conditional with the intercepts integrated out, then each a_g
// given b. With weights (Polya-Gamma) the response enters as kappa = w .* z. A draw costs O(n k)
// with unit weights (the cross products are kept per group size), O(n k^2) with weights.
class RandomInterceptStep {
public:
  RandomInterceptStep(const Eigen::MatrixXd& X, const PanelGroups& groups, const LinearPrior& prior);

  // Unit precisions: z is the response.
  void Draw(const Eigen::VectorXd& z, double omega, RandomEngine& rng, Eigen::VectorXd& b, Eigen::VectorXd& a);
  // Precisions w_i; kappa_i = w_i z_i.
  void DrawWeighted(const Eigen::VectorXd& kappa, const Eigen::VectorXd& w, double omega, RandomEngine& rng,
                    Eigen::VectorXd& b, Eigen::VectorXd& a);
  // log N(bStar; mean, precision^-1) of the conditional the last draw of b came from (Chib's
  // ordinate).
  double LogOrdinate(const Eigen::VectorXd& bStar) const;

private:
  // Given M and v (without the prior), b then a, from the group totals of the response and of
  // the weights.
  void Finish(const Eigen::VectorXd& groupResponse, const Eigen::VectorXd& groupWeight, const Eigen::MatrixXd& groupX,
              double omega, RandomEngine& rng, Eigen::VectorXd& b, Eigen::VectorXd& a);

  const Eigen::MatrixXd& m_X;
  const PanelGroups& m_groups;
  const LinearPrior& m_prior;
  Eigen::MatrixXd m_XtX;                  // X'X
  Eigen::MatrixXd m_groupX;               // k x G: the sums of x over each group
  std::vector<double> m_sizes;            // the distinct group sizes
  std::vector<Eigen::MatrixXd> m_sizeSS;  // per size: the sum of s_g s_g' over its groups
  // Working space.
  Eigen::MatrixXd m_M, m_weightedX, m_weightedGroupX, m_root;
  Eigen::VectorXd m_v, m_groupResponse, m_groupWeight, m_scale, m_z;
  Eigen::LLT<Eigen::MatrixXd> m_factor;
};

// The two binary links with a random intercept: P(y = 1 | x, a) = F(x'b + a).
enum class BinaryLink { Probit, Logit };

// log p(y | b, omega) = sum_g log of the integral over a of prod_{i in g} F(+-(index_i + a))
// N(a; 0, 1/omega), each integral by 48-point Gauss-Hermite quadrature centred at the integrand's
// mode and scaled by its curvature: exact for a Normal-shaped integrand, so the longer a group the
// better; within 1e-5 per group for effect standard deviations up to 2, and about 1e-3 for a
// single probit outcome under a standard deviation of 4.5 (the integrand is then a cut Normal).
double IntegratedBinaryLogLikelihood(const Eigen::VectorXd& y, const Eigen::VectorXd& index, const PanelGroups& groups,
                                     double omega, BinaryLink link);
