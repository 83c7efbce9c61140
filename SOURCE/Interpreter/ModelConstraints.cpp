// Linear constraints of model statements: terms resolved against the coefficient labels.
#include <cmath>
#include <set>

#include "AstModels.h"

std::string SecondListPrefix(const std::string& keyword) {
  if (keyword == "lm") return "logtau";
  if (keyword == "sf") return "u";
  if (keyword == "sf_dyn" || keyword == "tobitII" || keyword == "tobitII_re") return "s";
  return "TavixSystemVar_DefaultString";
}

std::string ResolveConstraints(const std::vector<ConstraintNode>& constraints,
                               const std::vector<std::string>& labels,
                               const std::vector<std::string>& secondLabels,
                               LinearConstraints& out, const ConstraintNode*& failing) {
  std::vector<std::string> all = labels;
  all.insert(all.end(), secondLabels.begin(), secondLabels.end());
  const auto count = static_cast<Eigen::Index>(constraints.size());
  out.R = Eigen::MatrixXd::Zero(count, static_cast<Eigen::Index>(all.size()));
  out.r = Eigen::VectorXd::Zero(count);
  out.texts.clear();
  for (Eigen::Index i = 0; i < count; ++i) {
    const ConstraintNode& constraint = constraints[static_cast<std::size_t>(i)];
    failing = &constraint;
    std::set<std::size_t> used;
    for (const ConstraintTerm& term : constraint.terms) {
      std::vector<std::size_t> matches;
      for (std::size_t j = 0; j < all.size(); ++j) {
        const std::string& label = all[j];
        const std::size_t dollar = label.find('$');
        const std::string variable = dollar == std::string::npos ? label : label.substr(dollar + 1);
        const bool matched = term.prefix.empty() ? variable == term.name
                                                 : label == term.prefix + "$" + term.name;
        if (matched) matches.push_back(j);
      }
      if (matches.empty()) {
        return "There is no coefficient associated with variable \"" + term.name +
               "\" in the current model.";
      }
      if (matches.size() > 1) {
        return "The use of \"" + term.name + "\" in linear constraints is ambiguous. Use \"$\" to "
               "distinguish among the multiple instances of \"" + term.name + "\" in the model.";
      }
      if (!used.insert(matches[0]).second) {
        return "Variable \"" + term.name + "\" has been used multiple times in the current constraint.";
      }
      out.R(i, static_cast<Eigen::Index>(matches[0])) = term.coefficient;
    }
    out.r(i) = constraint.value;
  }
  failing = nullptr;
  return "";
}

std::vector<std::pair<std::size_t, std::size_t>> ContradictingConstraints(const LinearConstraints& constraints) {
  std::vector<std::pair<std::size_t, std::size_t>> pairs;
  const Eigen::MatrixXd& R = constraints.R;
  for (Eigen::Index i = 0; i < R.rows(); ++i) {
    Eigen::Index pivot = 0;
    R.row(i).cwiseAbs().maxCoeff(&pivot);
    if (R(i, pivot) == 0.0) continue;
    for (Eigen::Index j = i + 1; j < R.rows(); ++j) {
      const double factor = R(j, pivot) / R(i, pivot);
      if (factor == 0.0 || (R.row(j) - factor * R.row(i)).cwiseAbs().maxCoeff() > 0.0) continue;
      const double expected = factor * constraints.r(i);
      const double scale = std::max({1.0, std::fabs(expected), std::fabs(constraints.r(j))});
      if (std::fabs(constraints.r(j) - expected) > 1e-12 * scale) {
        pairs.emplace_back(static_cast<std::size_t>(i), static_cast<std::size_t>(j));
      }
    }
  }
  return pairs;
}
