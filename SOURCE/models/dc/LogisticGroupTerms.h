// LogisticGroupTerms: the logit likelihood's terms summed per group of a panel whose observations
// are sorted group by group, computed in blocks of consecutive observations.
#pragma once

#include <array>
#include <vector>

#include <Eigen/Dense>

class LogisticGroupTerms {
public:
  // Per group: the log-likelihood, its derivative in the group's intercept (the sum of y - p) and
  // minus its second derivative (the sum of p (1 - p)).
  struct Sums {
    Eigen::VectorXd logLikelihood, gradient, curvature;

    explicit Sums(Eigen::Index groups);
    void CopyGroup(const Sums& from, Eigen::Index g);
  };

  // `start` holds the G + 1 offsets of the groups in the sorted observations; the blocks are
  // numbered 0 ... blocks - 1.
  LogisticGroupTerms(const Eigen::VectorXd& y, const std::vector<Eigen::Index>& start, Eigen::Index blocks);

  // At the index eta + effects(g) for the observations [first, end), one block of a fixed layout
  // (blocks may run at once, each with its own number): each observation's y - p into `residual`,
  // the sums of the groups inside the block into `sums`. A group that a block boundary cuts is
  // kept aside until JoinCutGroups, once every block is done.
  void Evaluate(Eigen::Index block, Eigen::Index first, Eigen::Index end, const Eigen::VectorXd& eta,
                const Eigen::VectorXd& effects, Eigen::VectorXd& residual, Sums& sums);
  void JoinCutGroups(Sums& sums) const;

private:
  // A block's share of a group that one of its boundaries cuts.
  struct CutGroup {
    Eigen::Index group = -1;
    double logLikelihood = 0.0, gradient = 0.0, curvature = 0.0;
  };

  const Eigen::VectorXd& m_y;
  const std::vector<Eigen::Index>& m_start;
  std::vector<Eigen::Index> m_groupOf;         // per observation
  std::vector<std::array<CutGroup, 2>> m_cut;  // per block: the group cut at its start, at its end
  Eigen::ArrayXd m_t, m_e, m_p, m_logLikelihood;
};
