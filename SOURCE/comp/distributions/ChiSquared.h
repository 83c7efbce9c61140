// The chi-squared distribution with its degrees of freedom (any positive real).
#pragma once

#include "RandomEngine.h"

namespace dist {

double ChiSquaredPdf(double x, double dof);
double ChiSquaredCdf(double x, double dof);
double ChiSquaredDraw(RandomEngine& rng, double dof);

}  // namespace dist
