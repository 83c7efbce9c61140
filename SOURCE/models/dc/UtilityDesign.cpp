// UtilityDesign: the means and cross-products of the two designs of utility differences.
#include "UtilityDesign.h"

ChooserDesign::ChooserDesign(Eigen::MatrixXd X, Eigen::Index differences)
    : m_X(std::move(X)), m_p(differences), m_XtX(m_X.transpose() * m_X) {}

void ChooserDesign::Means(const Eigen::VectorXd& b, Eigen::MatrixXd& M) const {
  M.noalias() = m_X * b.reshaped(m_X.cols(), m_p);
}

void ChooserDesign::CrossProducts(const Eigen::MatrixXd& H, const Eigen::MatrixXd& WH, Eigen::MatrixXd& XtHX,
                                  Eigen::VectorXd& XtHw) const {
  const Eigen::Index k = m_X.cols();
  for (Eigen::Index j = 0; j < m_p; ++j) {
    for (Eigen::Index l = 0; l < m_p; ++l) XtHX.block(j * k, l * k, k, k) = H(j, l) * m_XtX;
  }
  // Written straight into XtHw: the design is shared by chains running at once.
  Eigen::Map<Eigen::MatrixXd>(XtHw.data(), k, m_p).noalias() = m_X.transpose() * WH;
}

AlternativeDesign::AlternativeDesign(std::vector<Eigen::MatrixXd> differences) : m_D(std::move(differences)) {
  const std::size_t p = m_D.size();
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t l = 0; l < p; ++l) m_DtD.push_back(m_D[j].transpose() * m_D[l]);
  }
}

void AlternativeDesign::Means(const Eigen::VectorXd& b, Eigen::MatrixXd& M) const {
  for (std::size_t j = 0; j < m_D.size(); ++j) M.col(static_cast<Eigen::Index>(j)).noalias() = m_D[j] * b;
}

void AlternativeDesign::CrossProducts(const Eigen::MatrixXd& H, const Eigen::MatrixXd& WH, Eigen::MatrixXd& XtHX,
                                      Eigen::VectorXd& XtHw) const {
  const std::size_t p = m_D.size();
  XtHX.setZero();
  XtHw.setZero();
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t l = 0; l < p; ++l) {
      XtHX += H(static_cast<Eigen::Index>(j), static_cast<Eigen::Index>(l)) * m_DtD[j * p + l];
    }
    XtHw.noalias() += m_D[j].transpose() * WH.col(static_cast<Eigen::Index>(j));
  }
}
