// DrawsFigure: the figure plotdraws shows: for each parameter its histogram, autocorrelations,
// kernel density and trace.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

#include "Figure.h"

// One row of four panels per element, titled "Histogram: ", "ACF: ", "KDensity: " and "Lines: "
// followed by the element's label; the draws of element e of chain c in draws[e][c]. The histogram
// counts the draws of all chains pooled; the autocorrelations (lags 0 to 50, or to a third of a
// chain when shorter) are each chain's, averaged over the chains, with the 95% band of white noise
// of that many draws; the density and the trace have one series per chain, labelled "chain 1",
// ... when there are several. An element without chains leaves its row empty.
Figure DrawsFigure(std::string title, const std::vector<std::string>& elements,
                   const std::vector<std::vector<Eigen::VectorXd>>& draws);
