// DrawsFigure: the figure plotdraws shows: for each parameter its histogram, autocorrelations,
// kernel density and trace.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

#include "Figure.h"

// One row of four panels per element ("Histogram", "ACF", "KDensity", "Lines"), the draws of
// element e of chain c in draws[e][c]. The histogram and the autocorrelations are of the pooled
// draws; with several chains the density and the trace have one series per chain.
Figure DrawsFigure(std::string title, const std::vector<std::string>& elements,
                   const std::vector<std::vector<Eigen::VectorXd>>& draws);
