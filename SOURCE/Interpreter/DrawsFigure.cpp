// DrawsFigure: panels of a parameter's draws from the density estimates of the figures.
#include "DrawsFigure.h"

#include <algorithm>
#include <cmath>

#include "DensityEstimates.h"

namespace {

// Autocorrelations up to this lag, or a third of the draws when there are fewer.
constexpr int kMaxLag = 50;
constexpr int kDensityPoints = 256;

Eigen::VectorXd Pooled(const std::vector<Eigen::VectorXd>& chains) {
  Eigen::Index n = 0;
  for (const auto& c : chains) n += c.size();
  Eigen::VectorXd all(n);
  Eigen::Index at = 0;
  for (const auto& c : chains) {
    all.segment(at, c.size()) = c;
    at += c.size();
  }
  return all;
}

Panel NewPanel(const std::string& title, const std::string& xlabel, const std::string& ylabel) {
  Panel panel;
  panel.title = title;
  panel.xlabel = xlabel;
  panel.ylabel = ylabel;
  return panel;
}

}  // namespace

Figure DrawsFigure(std::string title, const std::vector<std::string>& elements,
                   const std::vector<std::vector<Eigen::VectorXd>>& draws) {
  Figure figure(std::move(title), static_cast<int>(elements.size()), 4);
  for (std::size_t e = 0; e < elements.size() && e < draws.size(); ++e) {
    const std::vector<Eigen::VectorXd>& chains = draws[e];
    if (chains.empty()) continue;
    const bool several = chains.size() > 1;
    const Eigen::VectorXd all = Pooled(chains);
    const std::string& name = elements[e];

    Panel histogram = NewPanel("Histogram: " + name, name, "frequency");
    Series bars;
    bars.kind = SeriesKind::Histogram;
    numerics::HistogramCounts(all, numerics::HistogramBins(all), bars.x, bars.y);
    histogram.series.push_back(std::move(bars));

    Panel acf = NewPanel("ACF: " + name, "lag", "autocorrelation");
    Series correlations;
    correlations.kind = SeriesKind::ACF;
    const Eigen::Index n = chains.front().size();
    const int lags = static_cast<int>(std::min<Eigen::Index>(kMaxLag, std::max<Eigen::Index>(1, n / 3)));
    // Within chains, averaged over them: pooling would add jumps where one chain ends. The average
    // of m chains' estimates has m times less variance, so the band is that of all the draws.
    correlations.y = Eigen::VectorXd::Zero(lags + 1);
    for (const auto& c : chains) correlations.y += numerics::Autocorrelations(c, lags);
    correlations.y /= static_cast<double>(chains.size());
    correlations.x = Eigen::VectorXd::LinSpaced(lags + 1, 0.0, static_cast<double>(lags));
    correlations.band = 1.96 / std::sqrt(static_cast<double>(std::max<Eigen::Index>(1, all.size())));
    acf.series.push_back(std::move(correlations));

    Panel density = NewPanel("KDensity: " + name, name, several ? "density (per chain)" : "density");
    Panel trace = NewPanel("Lines: " + name, several ? "draw index (per chain)" : "draw index", name);
    for (std::size_t c = 0; c < chains.size(); ++c) {
      Series curve;
      curve.kind = SeriesKind::KDensity;
      numerics::KernelDensity(chains[c], numerics::SilvermanBandwidth(chains[c]), kDensityPoints, curve.x, curve.y);
      Series line;
      line.kind = SeriesKind::Lines;
      line.y = chains[c];
      if (several) curve.label = line.label = "chain " + std::to_string(c + 1);
      density.series.push_back(std::move(curve));
      trace.series.push_back(std::move(line));
    }
    density.legend = trace.legend = several;

    const std::size_t row = 4 * e;
    figure.panels[row] = std::move(histogram);
    figure.panels[row + 1] = std::move(acf);
    figure.panels[row + 2] = std::move(density);
    figure.panels[row + 3] = std::move(trace);
  }
  return figure;
}
