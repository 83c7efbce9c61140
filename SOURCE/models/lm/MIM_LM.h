// MIM_LM, MIM_LM_HET, MIM_LM_RE: the estimated linear models as the workspace holds them.
#pragma once

#include <string>
#include <vector>

#include "Estimator.h"
#include "Model.h"

// An estimated model of the linear family: its draws under their labels and the two
// log-marginal likelihoods.
class MIM_LinearFamily : public Model {
public:
  MIM_LinearFamily(const Estimator& estimator, const std::string& typeName, const std::string& title,
                   std::vector<std::string> labels, double logML, double logML_CJ) {
    Description().typeName = typeName;
    Description().title = title;
    Description().gibbs = estimator.Settings().ToVector();
    SetDraws(estimator.Draws(), std::move(labels));
    AddResult("logML", Eigen::MatrixXd::Constant(1, 1, logML));
    AddResult("logML_CJ", Eigen::MatrixXd::Constant(1, 1, logML_CJ));
  }
};
