// IndexLink: the derivative of a link by central differences.
#include "IndexLink.h"

#include <cmath>

void IndexLink::Derivative(int type, Eigen::Ref<Eigen::MatrixXd> index,
                           const Eigen::Ref<const Eigen::MatrixXd>& draws) const {
  // A step of about the cube root of the machine epsilon, relative to the index, balances
  // truncation against rounding.
  const Eigen::MatrixXd step = 6e-6 * (1.0 + index.array().abs());
  Eigen::MatrixXd up = index + step;
  Eigen::MatrixXd down = index - step;
  Quantity(type, up, draws);
  Quantity(type, down, draws);
  index = (up - down).array() / (2.0 * step.array());
}
