// Running model statements: options, the default dataset, constraints, the family, the estimate.
#include "AstModels.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <set>

#include "Dataset.h"
#include "Estimator.h"
#include "ExecContext.h"
#include "Model.h"
#include "TavixError.h"

namespace {

constexpr Colour kUnknownModelColour{200, 50, 0};  // "UNKNOWN MODEL" is printed in this colour

// Keywords the lexer knows whose families have no estimator: they print "UNKNOWN MODEL".
bool WithoutEstimator(const std::string& keyword) {
  return keyword == "tobitI_re" || keyword == "tobitII_re";
}

// Fills the option tables in order; a later option of the same name replaces an earlier one.
void ReadOptions(ExecContext& context, const ModelExpression& node, ModelRequest& request) {
  for (const ModelOptionNode& option : node.options) {
    request.options.logical.erase(option.name);
    request.options.numeric.erase(option.name);
    request.options.strings.erase(option.name);
    if (option.logical) {
      if (option.word != "true" && option.word != "false") {
        context.Fail(option, "The \"" + option.name +
                                 "\" argument must be set to either \"true\" or \"false\".");
      }
      request.options.logical[option.name] = option.word == "true";
      continue;
    }
    const TavixValue value = option.value->Evaluate(context);
    if (option.name == "dataset") {
      if (!value.IsDataset()) {
        context.Fail(*option.value, "\"" + context.stream().Text(option.value->first,
                                                                          option.value->last) +
                                        "\" is not a dataset.");
      }
      request.dataset = value.dataset;
      request.datasetName = context.stream().Text(option.value->first, option.value->last);
      continue;
    }
    switch (value.code) {
      case kind::MATRIX: request.options.numeric[option.name] = *value.matrix; break;
      case kind::DATASET: request.options.numeric[option.name] = value.dataset->GetData(); break;
      case kind::STRING: request.options.strings[option.name] = *value.string; break;
      case kind::MODEL:
        context.Fail(*option.value, "Model \"" + node.keyword +
                                        "\" does not take models as optional arguments.");
      default:
        context.Fail(*option.value, "Model \"" + node.keyword +
                                        "\" does not take structures as optional arguments.");
    }
  }
}

// The name under which the workspace holds a dataset (the option's text may be a path).
std::string WorkspaceNameOf(const Workspace& ws, const std::shared_ptr<Dataset>& dataset,
                            const std::string& fallback) {
  for (const auto& [name, held] : ws.datasets) {
    if (held == dataset) return name;
  }
  return fallback;
}

// A variable may appear once in a list: twice would give two coefficients of the same label
// that the data cannot tell apart.
void RefuseRepeatedVariable(ExecContext& context, const Node& at, const std::vector<std::string>& list,
                            const std::string& what) {
  std::set<std::string> seen;
  for (const std::string& name : list) {
    if (!seen.insert(name).second) {
      context.Fail(at, "Variable \"" + name + "\" appears more than once in the " + what + ".");
    }
  }
}

std::string Labelled(const std::string& prefix, const std::string& name) { return prefix + "$" + name; }

// Results that are not numbers mean the data defeated the arithmetic (values so large or small
// that their squares overflow or vanish, a chain that never moved): say so rather than leave a
// table of dashes and zeros to be read as an answer.
void WarnAboutNonFiniteResults(ExecContext& context, const Node& at, const Model& model) {
  const numerics::DrawSummary& s = model.Summary();
  std::vector<std::string> bad;
  for (std::size_t j = 0; j < model.Labels().size(); ++j) {
    const auto i = static_cast<Eigen::Index>(j);
    if (!std::isfinite(s.mean(i)) || !std::isfinite(s.sd(i)) || s.sd(i) == 0.0) bad.push_back(model.Labels()[j]);
  }
  const bool logML = std::isnan(model.ScalarResult("logML"));
  if (bad.empty() && !logML) return;
  std::string message = "The estimates of this model are not reliable:";
  if (!bad.empty()) {
    message += " the draws of";
    for (const auto& label : bad) message += " " + label;
    message += " are not finite or never changed;";
  }
  if (logML) message += " the log-marginal likelihood could not be computed;";
  message += " check the scale of the data and the number of draws.";
  context.Warn(at, message);
}

}  // namespace

TavixValue ModelExpression::Evaluate(ExecContext& context) const {
  ModelRequest request;
  request.keyword = keyword;
  const ModelEquation& equation = equations.front();
  request.dependent = equation.dependent;
  request.regressors = equation.regressors;
  request.secondList = equation.secondList;
  for (const ModelEquation& e : equations) {
    ModelEquationRequest er{e.dependent, e.regressors, e.secondList, {}};
    // A series model's coefficients are named by its family once the lags are known.
    if (!e.dependent.empty()) {
      for (const auto& r : e.regressors) er.labels.push_back(Labelled(e.dependent, r));
    }
    request.labels.insert(request.labels.end(), er.labels.begin(), er.labels.end());
    request.equations.push_back(std::move(er));
  }
  const std::string prefix = SecondListPrefix(keyword);
  for (const auto& z : equation.secondList) request.secondLabels.push_back(Labelled(prefix, z));

  for (const ModelEquation& e : equations) {
    RefuseRepeatedVariable(context, *this, e.regressors, "list of regressors");
    RefuseRepeatedVariable(context, *this, e.secondList, "second list of variables");
  }
  ReadOptions(context, *this, request);
  Workspace& ws = context.workspace();
  if (!request.dataset) {
    if (ws.datasets.empty()) context.Fail(*this, "The current workspace does not contain any datasets.");
    request.datasetName = ws.datasets.begin()->first;
    request.dataset = ws.datasets.begin()->second;
  } else {
    request.datasetName = WorkspaceNameOf(ws, request.dataset, request.datasetName);
  }

  if (const FamilyLabeller labeller = FindModelLabeller(keyword)) {
    const std::string status = labeller(request);
    if (status != "OK") context.Fail(*this, status);
  }
  if (request.options.numeric.count("Xi") && !hasConstraints) {
    context.Fail(*this, "A precision matrix for linear constraints was provided, but without constraints.");
  }
  if (hasConstraints && equation.dependent.empty()) {
    context.Fail(constraints.front(), "Model \"" + keyword + "\" does not take linear constraints.");
  }
  if (hasConstraints) {
    const ConstraintNode* failing = nullptr;
    const std::string message = ResolveConstraints(constraints, request.labels, request.secondLabels,
                                                   request.constraints, failing);
    if (!message.empty()) context.Fail(failing ? static_cast<const Node&>(*failing) : *this, message);
    for (const ConstraintNode& c : constraints) {
      request.constraints.texts.push_back(context.stream().Text(c.first, c.last));
    }
    for (const auto& [i, j] : ContradictingConstraints(request.constraints)) {
      context.Warn(constraints[j], "The constraints \"" + request.constraints.texts[i] + "\" and \"" +
                                       request.constraints.texts[j] +
                                       "\" contradict each other: no coefficients satisfy both, and the "
                                       "estimates will sit between the two.");
    }
  }

  if (WithoutEstimator(keyword)) {
    context.dispatcher().PrintColor("UNKNOWN MODEL", kUnknownModelColour);
    context.dispatcher().PrintNewLine();
    return {};
  }
  const FamilyInterpreter family = FindModelFamily(keyword);
  if (!family) context.Fail(*this, "Model \"" + keyword + "\" is not available yet.");
  std::unique_ptr<ModelJob> job;
  const std::string status = family(request, job);
  if (status != "OK") context.Fail(*this, status);

  const auto start = std::chrono::steady_clock::now();
  std::shared_ptr<Model> model;
  std::vector<std::string> warnings;
  try {
    model = job->Estimate(ModelRunContext{context.dispatcher(), &context.session().interruptRequested, &warnings});
  } catch (const EstimationRefused& refusal) {
    context.dispatcher().HideProgressBar();
    context.Fail(*this, refusal.what());
  } catch (const std::bad_alloc&) {
    context.dispatcher().HideProgressBar();
    context.Fail(*this, "There is not enough memory to estimate model \"" + keyword +
                            "\": lower \"draws\" or \"chains\", or raise \"thin\".");
  }
  if (!model) {
    context.CheckInterrupt();
    throw TavixInterrupted{};
  }
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - start);
  ModelDescription& description = model->Description();
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.3f", static_cast<double>(elapsed.count()) / 1000.0);
  description.estimationTime = seconds;
  description.keyword = keyword;
  // Systems and series models describe their own lists.
  if (description.dependent.empty() && description.regressors.empty()) {
    description.dependent = request.dependent;
    description.regressors = request.regressors;
    description.secondList = request.secondList;
  }
  description.constraints = request.constraints.texts;
  model->AddResult("nobs", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(description.observations)));
  model->SetDataset(request.dataset, request.datasetName);
  model->PrintResults(context.dispatcher());
  for (const std::string& warning : warnings) context.Warn(*this, warning);
  WarnAboutNonFiniteResults(context, *this, *model);
  return TavixValue::FromModel(model);
}

TavixValue ExternalModelExpression::Evaluate(ExecContext& context) const {
  const TavixValue file = modelFile->Evaluate(context);
  if (!file.IsString()) {
    context.Fail(*modelFile, "The first argument of \"" + keyword + "\" must be a string (model file).");
  }
  for (const ModelOptionNode& option : options) {
    if (option.logical) {
      context.Fail(option, "Unknown argument type for \"" + option.name + "\"");
    }
    const TavixValue value = option.value->Evaluate(context);
    if (!value.IsMatrix() && !value.IsStructure() && !value.IsString()) {
      context.Fail(*option.value, "The optional arguments of \"" + keyword +
                                      "\" must be either matrices, structures or strings.");
    }
    if (value.IsStructure() && option.name != "data" && option.name != "inits") {
      context.Fail(*option.value, "Unknown optional strucutre argument \"" + option.name + "\"");
    }
    if (keyword == "jags" && option.name == "summarize") {
      context.Fail(option, "JAGS cannot set summmary monitors.");
    }
  }
  context.Fail(*this, "Model \"" + keyword + "\" is not available yet: the external samplers are "
                      "not part of this version.");
}
