// CompositeError: the density of w = u + v, v ~ N(0, sigma^2), for each inefficiency distribution
// (u integrated out), and the means of u and of the efficiency exp(-u).
#pragma once

#include <Eigen/Dense>

// The inefficiency distributions of the frontier models. Parameters: HalfNormal (omega: u is
// |N(0, 1/omega)|), TruncatedNormal (mu, omega: N(mu, 1/omega) truncated to u >= 0), Exponential
// (lambda: the rate, mean 1/lambda), Gamma (shape, lambda: the rate), LogNormal (mu, omega: log u
// ~ N(mu, 1/omega)).
enum class InefficiencyDistribution { HalfNormal, TruncatedNormal, Exponential, Gamma, LogNormal };

// log f(w) with f the density of u + v, v ~ N(0, sigma^2); p1, p2 the distribution's parameters
// in the order above (p2 unused for one-parameter distributions). Closed forms for the
// half-normal, truncated-normal and exponential; adaptive quadrature over u for the others.
double LogCompositeDensity(InefficiencyDistribution d, double w, double sigma, double p1, double p2);
// The sum of log densities over residuals w with noise precision tau and the same parameters for
// every observation.
double SumLogCompositeDensity(InefficiencyDistribution d, const Eigen::VectorXd& w, double tau, double p1, double p2);

// E(u) and E(exp(-u)) under the distribution (the log-normal's by Gauss-Hermite quadrature).
double MeanInefficiency(InefficiencyDistribution d, double p1, double p2);
double MeanEfficiency(InefficiencyDistribution d, double p1, double p2);
