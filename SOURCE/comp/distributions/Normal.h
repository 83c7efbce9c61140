// The normal distribution with mean and standard deviation.
#pragma once

#include "RandomEngine.h"

namespace dist {

double NormalPdf(double x, double mean, double sd);
double NormalCdf(double x, double mean, double sd);
// mean + sd * z with z from the engine's polar-method normal.
double NormalDraw(RandomEngine& rng, double mean, double sd);

}  // namespace dist
