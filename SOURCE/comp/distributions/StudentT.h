// Student's t distribution, standard (location 0, scale 1), with its degrees of freedom.
#pragma once

#include "RandomEngine.h"

namespace dist {

double StudentTPdf(double x, double dof);
double StudentTCdf(double x, double dof);
double StudentTDraw(RandomEngine& rng, double dof);

}  // namespace dist
