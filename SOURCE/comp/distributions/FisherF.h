// The F distribution with numerator and denominator degrees of freedom.
#pragma once

#include "RandomEngine.h"

namespace dist {

double FisherPdf(double x, double numeratorDof, double denominatorDof);
double FisherCdf(double x, double numeratorDof, double denominatorDof);
double FisherDraw(RandomEngine& rng, double numeratorDof, double denominatorDof);

}  // namespace dist
