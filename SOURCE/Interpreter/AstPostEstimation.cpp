// Running post-estimation statements: options checked in order, the model resolved, the action
// asked for and carried out, new series added to the model's dataset.
#include "AstPostEstimation.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <map>

#include "CompareModels.h"
#include "Dataset.h"
#include "DrawsFigure.h"
#include "ExecContext.h"
#include "FigureRegistry.h"
#include "Model.h"
#include "ModelsInterpreter.h"
#include "PostEstimationMessages.h"
#include "TavixError.h"

namespace {

// A catalogue text with each "{}" replaced by the next argument.
std::string Filled(const char* text, std::initializer_list<std::string> arguments) {
  std::string out = text;
  std::size_t at = 0;
  for (const std::string& argument : arguments) {
    at = out.find("{}", at);
    if (at == std::string::npos) break;
    out.replace(at, 2, argument);
    at += argument.size();
  }
  return out;
}

bool PositiveInteger(const TavixValue& value, long& out) {
  std::int64_t n = 0;
  if (!value.IsMatrix() || !ModelsInterpreter::check_PositiveInteger(*value.matrix, n)) return false;
  out = static_cast<long>(n);
  return true;
}

// What each statement accepts besides "model".
struct Accepted {
  std::vector<std::string> expressions;  // "name" = expression
  std::vector<std::string> logicals;     // "name" = true/false
};

Accepted AcceptedOptions(const std::string& keyword) {
  if (keyword == "mfx") return {{"point", "type", "opt"}, {}};
  if (keyword == "predict") return {{"point", "type", "opt", "prefix"}, {"stats"}};
  if (keyword == "forecast") return {{"horizon", "W"}, {}};
  if (keyword == "irf") return {{"horizon"}, {"orthogonal", "scaled"}};
  if (keyword == "pmp") return {{"priors"}, {"logML_CJ"}};
  return {};
}

const char* MissingActionMessage(const std::string& keyword) {
  if (keyword == "mfx") return msg::kMfxMissing;
  if (keyword == "predict") return msg::kPredictMissing;
  if (keyword == "forecast") return msg::kForecastMissing;
  if (keyword == "irf") return msg::kIrfMissing;
  if (keyword == "stabtest") return msg::kStabtestMissing;
  return msg::kStoreMissing;
}

bool Contains(const std::vector<std::string>& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

// The options of a statement, evaluated and checked in the order they were written.
struct ReadOptions {
  ActionOptions action;
  std::shared_ptr<Model> model;
  std::string modelName;
  bool modelGiven = false;
  Eigen::MatrixXd priors;
  bool priorsGiven = false;
  bool chib = false;
};

// Refuses an option the statement does not take, in the statement's own words.
[[noreturn]] void RefuseOption(ExecContext& context, const PostEstimationStatement& node,
                               const PostOptionNode& option) {
  const std::string& k = node.keyword;
  if (k == "irf") {
    context.Fail(node, Filled(option.logical ? msg::kIrfBoolean : msg::kIrfExpression, {option.name}));
  }
  if (k == "mfx" || k == "predict" || k == "forecast") {
    context.Fail(node, Filled(msg::kUnknownOption, {option.name, k}));
  }
  if (k == "pmp") context.Fail(node, Filled(msg::kPmpUnknownOption, {option.name}));
  context.Fail(node, Filled(msg::kOnlyModelOptions, {k}));
}

void ReadModelOption(ExecContext& context, const PostEstimationStatement& node, const PostOptionNode& option,
                     ReadOptions& read) {
  const std::string text =
      option.logical ? option.word : context.stream().Text(option.value->first, option.value->last);
  if (option.logical) context.Fail(node, Filled(msg::kNotAModel, {text}));
  const TavixValue value = option.value->Evaluate(context);
  if (!value.IsModel()) context.Fail(node, Filled(msg::kNotAModel, {text}));
  read.model = value.model;
  read.modelName = text;
  read.modelGiven = true;
}

void ReadOption(ExecContext& context, const PostEstimationStatement& node, const PostOptionNode& option,
                ReadOptions& read) {
  const std::string& k = node.keyword;
  const std::string& name = option.name;
  if (name == "model" && k != "pmp" && !option.logical) {
    ReadModelOption(context, node, option, read);
    return;
  }
  const Accepted accepted = AcceptedOptions(k);
  const bool known = Contains(accepted.expressions, name) || Contains(accepted.logicals, name);
  if (k == "irf") {
    // irf tells the two kinds of option apart by their right-hand side.
    if (option.logical && !Contains(accepted.logicals, name)) RefuseOption(context, node, option);
    if (!option.logical && !Contains(accepted.expressions, name) && name != "model") RefuseOption(context, node, option);
  } else if (!known) {
    RefuseOption(context, node, option);
  }
  ActionOptions& a = read.action;
  if (name == "stats") {
    if (!option.logical) context.Fail(node, msg::kPredictStats);
    a.stats = option.word == "true";
    return;
  }
  if (name == "orthogonal" || name == "scaled") {
    (name == "orthogonal" ? a.orthogonal : a.scaled) = option.word == "true";
    return;
  }
  if (name == "logML_CJ") {
    if (!option.logical) {
      context.Fail(node, "The \"logML_CJ\" argument must be set to either \"true\" or \"false\".");
    }
    read.chib = option.word == "true";
    return;
  }
  if (name == "prefix" && !option.identifier.empty()) {
    a.prefix = option.identifier;
    return;
  }
  const bool mfx = k == "mfx";
  if (option.logical) {
    // A true/false given to an option that takes a value.
    if (name == "type") context.Fail(node, mfx ? msg::kMfxType : msg::kPredictType);
    if (name == "point") context.Fail(node, mfx ? msg::kMfxPoint : msg::kPredictPoint);
    if (name == "opt") context.Fail(node, mfx ? msg::kMfxOpt : msg::kPredictOpt);
    if (name == "horizon") context.Fail(node, k == "irf" ? msg::kIrfHorizon : msg::kForecastHorizon);
    if (name == "W") context.Fail(node, msg::kForecastW);
    if (name == "priors") context.Fail(node, msg::kPmpPriorsVector);
    context.Fail(node, "The \"prefix\" argument must be a name.");
  }
  const TavixValue value = option.value->Evaluate(context);
  if (name == "type") {
    if (!PositiveInteger(value, a.type)) context.Fail(node, mfx ? msg::kMfxType : msg::kPredictType);
    a.typeGiven = true;
  } else if (name == "opt") {
    if (!value.IsMatrix()) context.Fail(node, mfx ? msg::kMfxOpt : msg::kPredictOpt);
    a.opt = *value.matrix;
    a.optGiven = true;
  } else if (name == "point") {
    a.pointGiven = true;
    if (value.IsString()) {
      const std::string& word = *value.string;
      if (word == "x_i") {
        a.point = ActionOptions::Point::PerObservation;
      } else if (mfx && word == "mean") {
        a.point = ActionOptions::Point::Mean;
      } else if (mfx && word == "median") {
        a.point = ActionOptions::Point::Median;
      } else {
        context.Fail(node, mfx ? msg::kMfxPoint : msg::kPredictPoint);
      }
    } else if (value.IsMatrix() && (!mfx || value.matrix->rows() == 1 || value.matrix->cols() == 1) &&
               value.matrix->size() > 0) {
      a.point = ActionOptions::Point::Given;
      a.pointValues = *value.matrix;
      if (!a.pointValues.allFinite()) {
        context.Fail(node, "The \"point\" argument must hold finite numbers only.");
      }
    } else {
      context.Fail(node, mfx ? msg::kMfxPoint : msg::kPredictPoint);
    }
  } else if (name == "prefix") {
    if (!value.IsString()) context.Fail(node, "The \"prefix\" argument must be a name.");
    a.prefix = *value.string;
  } else if (name == "horizon") {
    if (!PositiveInteger(value, a.horizon)) {
      context.Fail(node, k == "irf" ? msg::kIrfHorizon : msg::kForecastHorizon);
    }
  } else if (name == "W") {
    if (!value.IsMatrix()) context.Fail(node, msg::kForecastW);
    a.W = *value.matrix;
    a.WGiven = true;
  } else if (name == "priors") {
    if (!value.IsMatrix() || (value.matrix->rows() != 1 && value.matrix->cols() != 1)) {
      context.Fail(node, msg::kPmpPriorsVector);
    }
    read.priors = *value.matrix;
    read.priorsGiven = true;
  }
}

// The model the statement acts on: the "model" option's, or the first of the workspace.
void ResolveModel(ExecContext& context, const PostEstimationStatement& node, ReadOptions& read) {
  const Workspace& ws = context.workspace();
  if (read.modelGiven) {
    // Messages name the model as the workspace knows it, when it does.
    for (const auto& [name, held] : ws.models) {
      if (held == read.model) read.modelName = name;
    }
    return;
  }
  if (ws.models.empty()) context.Fail(node, msg::kNoModels);
  read.modelName = ws.models.begin()->first;
  read.model = ws.models.begin()->second;
}

// The workspace's entry for the model's dataset: the dataset it was estimated on while the
// workspace still holds it, else the dataset of that name (a model read back from a file); none
// when the dataset was cleared.
std::shared_ptr<Dataset>* DatasetEntry(Workspace& ws, const Model& model) {
  if (model.DatasetWasDeleted()) return nullptr;
  if (const auto held = model.GetDataset()) {
    for (auto& [name, dataset] : ws.datasets) {
      if (dataset == held) return &dataset;
    }
  }
  const auto it = ws.datasets.find(model.DatasetName());
  return it == ws.datasets.end() ? nullptr : &it->second;
}

// Adds or replaces the action's series in the model's dataset (copied first when something else
// shares it, so that values stay values).
void AddVariables(ExecContext& context, const PostEstimationStatement& node, Model& model,
                  std::vector<std::pair<std::string, Eigen::VectorXd>>& variables) {
  if (variables.empty()) return;
  Workspace& ws = context.workspace();
  std::shared_ptr<Dataset>* entry = DatasetEntry(ws, model);
  if (!entry) context.InternalError("post_estimation 1");
  if (!entry) return;
  if (entry->use_count() > 1) *entry = std::make_shared<Dataset>(**entry);
  std::string datasetName;
  for (const auto& [name, held] : ws.datasets) {
    if (&held == entry) datasetName = name;
  }
  model.SetDataset(*entry, datasetName);
  std::string replaced;
  for (auto& [name, values] : variables) {
    Dataset& d = **entry;
    if (d.VariableExists(name)) {
      if (d.IsStringVariable(name)) d.DisassociateStringVar(name);
      d.ReplaceVariable(name, values);
      replaced += (replaced.empty() ? "" : ", ") + name;
    } else {
      d.AddVariable(name, values);
    }
  }
  if (!replaced.empty()) {
    context.Warn(node, "Variables of dataset \"" + datasetName + "\" replaced: " + replaced + ".");
  }
}

void CheckFigureRoom(ExecContext& context, const PostEstimationStatement& node) {
  const Session& session = context.session();
  if (static_cast<int>(session.figures.Count()) >= session.maxFigures) {
    context.Fail(node, "Too many figure windows are open. Either close some figures or increase the maximum "
                       "number of figures Tavix displays by using the function \"maxfigures\".");
  }
}

// Names a figure an action made, keeps it among the session's figures and shows it.
void ShowFigure(ExecContext& context, const PostEstimationStatement& node, const std::shared_ptr<Figure>& figure) {
  CheckFigureRoom(context, node);
  Session& session = context.session();
  figure->title = session.figures.NextTitle();
  session.figures.Store(figure);
  if (session.postToFrontEnd) {
    FrontEndRequest request;
    request.kind = FrontEndRequest::Kind::ShowFigure;
    request.figure = figure;
    context.RequestFrontEnd(node, request);
  }
}

void RunAction(ExecContext& context, const PostEstimationStatement& node, ReadOptions& read) {
  const std::string& k = node.keyword;
  if (!read.model->ProvidesAction(k)) context.Fail(node, Filled(MissingActionMessage(k), {read.modelName}));
  read.action.names = node.names;
  ActionResult result;
  std::string status;
  {
    std::shared_ptr<Dataset>* entry = DatasetEntry(context.workspace(), *read.model);
    const ActionContext action{context.dispatcher(), &context.session().interruptRequested, read.modelName,
                               entry ? *entry : nullptr};
    status = read.model->RunAction(k, read.action, action, result);
  }
  if (result.interrupted) {
    context.dispatcher().HideProgressBar();
    context.CheckInterrupt();
    throw TavixInterrupted{};
  }
  if (status != "OK") context.Fail(node, status);
  AddVariables(context, node, *read.model, result.variables);
  if (result.figure) ShowFigure(context, node, result.figure);
}

void RunPlotdraws(ExecContext& context, const PostEstimationStatement& node, const ReadOptions& read) {
  context.RefuseFigureInParallelCall(node);
  const Model& model = *read.model;
  // Without elements named, every parameter is plotted.
  const std::vector<std::string> elements = node.names.empty() ? model.Labels() : node.names;
  std::vector<std::vector<Eigen::VectorXd>> draws;
  for (const std::string& label : elements) {
    const auto& labels = model.Labels();
    const auto it = std::find(labels.begin(), labels.end(), label);
    if (it == labels.end()) context.Fail(node, Filled(msg::kPlotdrawsNoElement, {read.modelName, label}));
    const auto column = it - labels.begin();
    std::vector<Eigen::VectorXd> chains;
    for (const Eigen::MatrixXd& chain : model.Draws()) {
      chains.push_back(chain.col(column));
      if (chains.back().array().isNaN().any()) context.Fail(node, Filled(msg::kPlotdrawsMissingValues, {label}));
    }
    draws.push_back(std::move(chains));
  }
  CheckFigureRoom(context, node);
  auto figure = std::make_shared<Figure>(DrawsFigure("", elements, draws));
  ShowFigure(context, node, figure);
  std::string listed;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    listed += (i == 0 ? "" : i + 1 == elements.size() ? " and " : ", ") + elements[i];
  }
  context.dispatcher().Print("Draws of " + listed + " of model \"" + read.modelName + "\" in \"" + figure->title +
                             "\".\n");
}

void RunTest(ExecContext& context, const PostEstimationStatement& node, const ReadOptions& read) {
  std::vector<Eigen::VectorXi> outcomes;
  context.drawScope = read.model.get();
  struct Reset {
    ExecContext& c;
    ~Reset() { c.drawScope = nullptr; }
  } reset{context};
  for (const LogicalExpressionPtr& condition : node.conditions) outcomes.push_back(condition->Evaluate(context));
  const Eigen::Index cases = outcomes.front().size();
  for (const Eigen::VectorXi& o : outcomes) {
    if (o.size() != cases) context.Fail(node, msg::kTestCases);
  }
  auto row = [](const std::string& condition, long total, long successes) {
    std::string text = condition;
    if (text.size() < 40) text += std::string(40 - text.size(), ' ');
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "\t%12ld\t%12ld\t%12.4f\n", total, successes,
                  total > 0 ? static_cast<double>(successes) / static_cast<double>(total) : NAN);
    return text + buffer;
  };
  std::string text;
  Eigen::VectorXi all = Eigen::VectorXi::Ones(cases);
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    const LogicalExpression& c = *node.conditions[i];
    text += row(context.stream().Text(c.first, c.last), static_cast<long>(cases), outcomes[i].sum());
    all = all.cwiseMin(outcomes[i]);
  }
  text += row("Overall", static_cast<long>(cases), all.sum());
  const EventDispatcher& out = context.dispatcher();
  out.Print("\nTESTING PARAMETER RESTRICTIONS: model \"" + read.modelName + "\"\n\n", true);
  out.Print("Condition                               \t       Cases\t   Successes\t Probability\n", true);
  out.Print(text);
}

void RunPmp(ExecContext& context, const PostEstimationStatement& node, const ReadOptions& read) {
  Workspace& ws = context.workspace();
  const auto count = static_cast<Eigen::Index>(node.names.size());
  std::vector<std::string> methods = {"  Lewis & Raftery"};
  if (read.chib) methods.push_back("  Chib & Jeliazkov");
  Eigen::MatrixXd logML(count, static_cast<Eigen::Index>(methods.size()));
  for (Eigen::Index i = 0; i < count; ++i) {
    const std::string& name = node.names[static_cast<std::size_t>(i)];
    const int code = ws.ID_code(name);
    if (code < 0) context.Fail(node, Filled(msg::kPmpUndefined, {name}));
    if (code != kind::MODEL) context.Fail(node, Filled(msg::kNotAModel, {name}));
    const Model& model = *ws.models.at(name);
    logML(i, 0) = model.ScalarResult("logML");
    if (read.chib) logML(i, 1) = model.ScalarResult("logML_CJ");
    if (!logML.row(i).allFinite()) context.Fail(node, Filled(msg::kPmpNoLogML, {name}));
  }
  Eigen::VectorXd priors = Eigen::VectorXd::Constant(count, 1.0 / static_cast<double>(count));
  if (read.priorsGiven) {
    if (read.priors.size() != count) context.Fail(node, msg::kPmpPriorsSize);
    priors = Eigen::Map<const Eigen::VectorXd>(read.priors.data(), count);
    if (!priors.allFinite() || (priors.array() <= 0.0).any() || std::fabs(priors.sum() - 1.0) > 1e-8) {
      context.Fail(node, msg::kPmpPriorsValues);
    }
  }
  CompareModels(node.names, methods, logML, priors).Print(context.dispatcher());
}

}  // namespace

TavixValue DrawLabelExpression::Evaluate(ExecContext& context) const {
  if (context.drawScope) {
    // As in constraints, a name without a prefix stands for the one label that ends in it.
    std::string resolved = label;
    const std::vector<std::string>& labels = context.drawScope->Labels();
    if (fallback && std::find(labels.begin(), labels.end(), label) == labels.end()) {
      std::vector<std::string> matches;
      for (const std::string& l : labels) {
        const std::size_t dollar = l.find('$');
        if (dollar != std::string::npos && l.substr(dollar + 1) == label) matches.push_back(l);
      }
      if (matches.size() > 1) {
        context.Fail(*this, "The use of \"" + label + "\" in the conditions is ambiguous. Use \"$\" to "
                            "distinguish among the multiple instances of \"" + label + "\" in the model.");
      }
      if (matches.size() == 1) resolved = matches.front();
    }
    Eigen::VectorXd draws = context.drawScope->ParameterDraws(resolved);
    if (draws.size() > 0) return TavixValue::FromMatrix(std::make_shared<Eigen::MatrixXd>(std::move(draws)));
  }
  if (!fallback) {
    context.Fail(*this, "The model being tested has no parameter \"" + label + "\".");
  }
  return fallback->Evaluate(context);
}

void PostEstimationStatement::Execute(ExecContext& context) const {
  ReadOptions read;
  for (const PostOptionNode& option : options) ReadOption(context, *this, option, read);
  const std::string& k = keyword;
  if (k == "forecast" && read.action.horizon > 0 && read.action.WGiven &&
      read.action.horizon != read.action.W.rows()) {
    context.Fail(*this, Filled(msg::kForecastInconsistent,
                               {std::to_string(read.action.horizon), std::to_string(read.action.W.rows())}));
  }
  if (k == "predict" && !read.action.pointGiven) read.action.point = ActionOptions::Point::PerObservation;
  if (k == "pmp") {
    RunPmp(context, *this, read);
    return;
  }
  ResolveModel(context, *this, read);
  if (k == "diagnostics") {
    if (!read.model->PrintDiagnostics(context.dispatcher())) {
      context.Fail(*this, Filled(msg::kDiagnosticsFailed, {read.modelName}));
    }
    return;
  }
  if (k == "plotdraws") {
    RunPlotdraws(context, *this, read);
    return;
  }
  if (k == "test") {
    RunTest(context, *this, read);
    return;
  }
  RunAction(context, *this, read);
}
