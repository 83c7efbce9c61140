// Alternatives: the codes, the base, the choices and the labels of a multinomial choice.
#include "Alternatives.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "ModelData.h"
#include "ModelsInterpreter.h"

std::vector<long long> Alternatives::Others() const {
  std::vector<long long> others;
  for (long long c : codes) {
    if (c != base) others.push_back(c);
  }
  return others;
}

std::string Alternatives::Prefix(const std::string& dependent, long long code) {
  return dependent + "_" + (code < 0 ? "m" + std::to_string(-code) : std::to_string(code));
}

std::string ReadAlternatives(const ModelRequest& request, const Eigen::VectorXd& y, Alternatives& out) {
  int error = 0;
  Eigen::VectorXi renumbered;
  ModelsInterpreter::check_Integral(y, error, renumbered);
  const std::string which = "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword + "\"";
  if (error == 1) return which + " must hold the integer code of the alternative chosen.";
  if (error == 2) {
    return which + " must hold consecutive integer codes of the alternatives (every code from the lowest to "
                   "the highest chosen at least once).";
  }
  const long long lowest = static_cast<long long>(y.minCoeff());
  const Eigen::Index J = renumbered.maxCoeff() + 1;
  if (J < 2) return which + " must hold at least two alternatives: every observation chose the same one.";
  out.codes.clear();
  for (Eigen::Index j = 0; j < J; ++j) out.codes.push_back(lowest + j);
  out.base = lowest;
  if (const auto it = request.options.numeric.find("base"); it != request.options.numeric.end()) {
    std::int64_t base = 0;
    if (!ModelsInterpreter::check_Integer(it->second, base) ||
        std::find(out.codes.begin(), out.codes.end(), static_cast<long long>(base)) == out.codes.end()) {
      return "\"base\" must be the code of one of the alternatives of \"" + request.dependent + "\" (" +
             std::to_string(out.codes.front()) + " to " + std::to_string(out.codes.back()) + ").";
    }
    out.base = base;
  }
  const int baseIndex = static_cast<int>(out.base - lowest);
  out.choice.resize(renumbered.size());
  for (Eigen::Index i = 0; i < renumbered.size(); ++i) {
    const int a = renumbered(i);
    out.choice(i) = a == baseIndex ? 0 : (a < baseIndex ? a + 1 : a);
  }
  return "OK";
}

std::string LabelPerAlternative(ModelRequest& request) {
  ModelData data;
  std::string status = ExtractModelData(request, data);
  if (status != "OK") return status;
  Alternatives alternatives;
  status = ReadAlternatives(request, data.y, alternatives);
  if (status != "OK") return status;
  request.labels.clear();
  for (long long code : alternatives.Others()) {
    const std::string prefix = Alternatives::Prefix(request.dependent, code);
    for (const auto& x : request.regressors) request.labels.push_back(prefix + "$" + x);
  }
  return "OK";
}
