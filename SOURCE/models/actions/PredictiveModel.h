// PredictiveModel: the post-estimation actions mfx, predict and store, written once for every
// family that predicts through an index x'b; a family supplies its link and its own series.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <Eigen/Dense>

#include "DrawBlocks.h"
#include "IndexLink.h"
#include "Model.h"
#include "ModelData.h"

// The estimation sample of a model as its dataset holds it now.
struct ActionData {
  ModelData data;  // y, X (main list), Z (second list), extra variables, rows used
  Eigen::Index datasetRows = 0;
  std::shared_ptr<Dataset> dataset;

  // A series over the sample spread over the dataset's rows (NaN for the rows not used).
  Eigen::VectorXd Spread(const Eigen::VectorXd& values) const;
};

// Marginal effects over the posterior draws: one column of draws per regressor with an effect.
struct MarginalEffects {
  std::vector<std::string> names;
  std::vector<bool> discrete;  // the change from 0 to 1 of a regressor holding only 0 and 1
  Eigen::MatrixXd draws;       // rows: posterior draws
  std::string where;           // "at the means of the regressors", ...
};

class PredictiveModel : public Model {
public:
  bool ProvidesAction(const std::string& action) const override;
  std::string RunAction(const std::string& action, const ActionOptions& options,
                        const ActionContext& context, ActionResult& result) const override;

  // The computations behind mfx and predict, without printing: "OK" or the refusal; `interrupted`
  // tells that the user stopped them. Predictions are for the sample's observations (`data`
  // filled) or for the given points.
  std::string ComputeMarginalEffects(const ActionOptions& options, const ActionContext& context,
                                     MarginalEffects& out, bool& interrupted) const;
  std::string ComputePredictions(const ActionOptions& options, const ActionContext& context,
                                 RowSummaries& out, ActionData& data, bool& interrupted) const;

protected:
  // The link from the index to the predicted quantities (types 1 to Link().Types()).
  virtual const IndexLink& Link() const = 0;
  // Quantities that are not functions of the index alone (types after the link's), drawn per
  // observation of the sample by the family: the index block (rows: draws; column c: observation
  // first + c of the sample) is replaced by the quantity. They need the sample, so they have no
  // "point".
  virtual int FurtherTypes() const { return 0; }
  virtual std::string DescribeFurther(int /*type*/) const { return {}; }
  virtual void FurtherQuantity(int /*type*/, const ActionData& /*data*/, Eigen::Index /*first*/,
                               Eigen::MatrixXd& /*index*/) const {}
  // Models whose quantities depend on the regressors through several indices (one per alternative
  // of a choice, ...) give them from the regressors instead of through Link(), which then only
  // names the types: `out` (rows: the draws; columns: the rows of X) receives the quantity of
  // `type`. Their marginal effects are discrete changes (binary regressors) or central
  // differences of the quantity.
  virtual bool SeveralIndices() const { return false; }
  virtual void QuantityOfRegressors(int /*type*/, const Eigen::Ref<const Eigen::MatrixXd>& /*X*/,
                                    const Eigen::MatrixXd& /*draws*/, Eigen::MatrixXd& /*out*/) const {}
  // Whether the quantity of `type` is a function of the second list's index z'g (its coefficients
  // follow the main list's among the parameters) instead of x'b.
  virtual bool IndexOfSecondList(int /*type*/) const { return false; }
  // The link of marginal effects and whether its index is the second list's: by default those of
  // predictions; a family whose effects are on other quantities (the frontiers' determinants of
  // inefficiency) gives its own.
  virtual const IndexLink& EffectsLink() const { return Link(); }
  virtual bool EffectsOfSecondList(int type) const { return IndexOfSecondList(type); }
  // Whether the rows used include those whose dependent value is missing.
  virtual MissingDependent DependentValues() const { return MissingDependent::LeaveOut; }
  // Variables besides the model's lists that decide which rows were used (a panel's groups).
  virtual std::vector<std::string> ExtraVariables(const Dataset& /*dataset*/) const { return {}; }
  // The series `store` offers, and the variables each one adds (name, values over the sample).
  virtual std::vector<std::string> StoredSeries() const { return {}; }
  virtual std::vector<std::pair<std::string, Eigen::VectorXd>> StoreSeries(const std::string& name,
                                                                           const ActionData& data) const;

  // For families: the coefficients of the main list (pooled draws, one row per draw) and every
  // parameter's pooled draws.
  Eigen::MatrixXd CoefficientDraws() const;
  // The second list's coefficients, which follow the main list's.
  Eigen::MatrixXd SecondListCoefficientDraws() const;
  const Eigen::MatrixXd& PooledDraws() const;
  int Types() const { return Link().Types() + FurtherTypes(); }
  std::string DescribeType(int type) const;

private:
  std::string ReadData(const ActionContext& context, const std::string& action, ActionData& data) const;
  std::string Mfx(const ActionOptions& options, const ActionContext& context, ActionResult& result) const;
  std::string Predict(const ActionOptions& options, const ActionContext& context, ActionResult& result) const;
  std::string Store(const ActionOptions& options, const ActionContext& context, ActionResult& result) const;
  std::string CheckType(const ActionOptions& options, const ActionContext& context, const std::string& action) const;
  std::string CheckEffectsType(const ActionOptions& options, const ActionContext& context) const;
  std::string DescribeEffect(int type) const;
  // The marginal effects (rows: draws) of the models with several indices at one point, or averaged
  // over the rows of X; false when interrupted.
  bool EffectsOfRegressors(int type, const Eigen::MatrixXd& X, const std::vector<bool>& binary, bool average,
                           const std::atomic<bool>* interrupt, Eigen::MatrixXd& effects) const;
};
