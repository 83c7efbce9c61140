#include "WorkspaceFile.h"


#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <set>
#include <cstdio>
#include <istream>
#include <limits>
#include <memory>
#include <ostream>
#include <sstream>

#include "CheckID.h"
#include "NumberText.h"
#include "Dataset.h"
#include "Model.h"
#include "TavixStructure.h"
#include "ValueKind.h"
#include "Workspace.h"

namespace {

constexpr const char* kHeader = "TavixWorkspace 3";
// Files of the previous version hold no models and read the same way.
constexpr const char* kPreviousHeader = "TavixWorkspace 2";

void WriteNumber(std::ostream& out, double x) {
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", x);
  out << text;
}

void WriteMatrix(std::ostream& out, const Eigen::MatrixXd& m) {
  out << m.rows() << ' ' << m.cols() << '\n';
  for (Eigen::Index i = 0; i < m.rows(); ++i) {
    for (Eigen::Index j = 0; j < m.cols(); ++j) {
      if (j) out << ' ';
      WriteNumber(out, m(i, j));
    }
    out << '\n';
  }
}

// A string: its length in bytes on a line, the bytes, then the end marker on its own line. The
// length makes any bytes safe, the marker included.
void WriteText(std::ostream& out, const std::string& text) {
  out << text.size() << '\n' << text << '\n' << kEndOfString << '\n';
}

void WriteDataset(std::ostream& out, const Dataset& d) {
  const DatasetStructure& s = d.Structure();
  out << static_cast<int>(s.kind) << ' ' << static_cast<int>(s.format) << '\n';
  WriteText(out, s.timeVariable);
  WriteText(out, s.groupVariable);
  out << d.VariableNames().size() << '\n';
  for (const auto& name : d.VariableNames()) {
    const auto& labels = d.Labels(name);
    out << name << ' ' << labels.size() << '\n';
    for (const auto& label : labels) WriteText(out, label);
  }
  WriteMatrix(out, d.Data());
}

void WriteTexts(std::ostream& out, const std::vector<std::string>& texts) {
  out << texts.size() << '\n';
  for (const auto& text : texts) WriteText(out, text);
}

// A model: what was estimated, its dataset's name, its draws per chain with their labels, and
// its named results.
void WriteModel(std::ostream& out, const Model& m) {
  const ModelDescription& d = m.Description();
  for (const std::string* text : {&d.typeName, &d.keyword, &d.title, &d.dependent, &d.estimationTime,
                                  &m.DatasetName()}) {
    WriteText(out, *text);
  }
  WriteTexts(out, d.regressors);
  WriteTexts(out, d.secondList);
  WriteTexts(out, d.constraints);
  out << d.observations << ' ' << d.observationsDropped << ' ' << (m.DatasetWasDeleted() ? 1 : 0) << '\n';
  WriteMatrix(out, d.gibbs);
  WriteTexts(out, m.Labels());
  out << m.Draws().size() << '\n';
  for (const auto& chain : m.Draws()) WriteMatrix(out, chain);
  const auto names = m.MemberNames();
  out << names.size() << '\n';
  for (const auto& name : names) {
    WriteText(out, name);
    WriteMatrix(out, *m.GetpMatrix(name));
  }
}

void WriteValue(std::ostream& out, const std::string& name, const TavixValue& value, int& models);

void WriteStructure(std::ostream& out, const TavixStructure& s, int& models) {
  std::vector<std::string> names;
  std::vector<std::pair<std::string, TavixValue>> members;
  for (auto getter : {&TavixStructure::GetMatrixNames, &TavixStructure::GetDatasetNames,
                      &TavixStructure::GetStructureNames, &TavixStructure::GetStringNames,
                      &TavixStructure::GetModelNames}) {
    (s.*getter)(names);
    for (const auto& member : names) members.emplace_back(member, s.GetValue(member));
  }
  out << members.size() << '\n';
  for (const auto& [member, value] : members) WriteValue(out, member, value, models);
}

void WriteValue(std::ostream& out, const std::string& name, const TavixValue& value, int& models) {
  switch (value.code) {
    case kind::MATRIX:
      out << "matrix " << name << '\n';
      WriteMatrix(out, *value.matrix);
      break;
    case kind::STRING:
      out << "string " << name << '\n';
      WriteText(out, *value.string);
      break;
    case kind::DATASET:
      out << "dataset " << name << '\n';
      WriteDataset(out, *value.dataset);
      break;
    case kind::STRUCTURE:
      out << "structure " << name << '\n';
      WriteStructure(out, *value.structure, models);
      break;
    case kind::MODEL:
      out << "model " << name << '\n';
      WriteModel(out, *value.model);
      break;
    default:
      out << "skipped " << name << '\n';
      ++models;
      break;
  }
}

// Reading: every failure throws, caught once at the top.
struct Malformed {};

std::string ReadLine(std::istream& in) {
  std::string line;
  if (!std::getline(in, line)) throw Malformed{};
  return line;
}

// The bytes left in the stream: no record may claim more than that.
std::streamoff Remaining(std::istream& in) {
  const std::streampos here = in.tellg();
  in.seekg(0, std::ios::end);
  const std::streampos end = in.tellg();
  in.seekg(here);
  if (here < 0 || end < here) throw Malformed{};
  return end - here;
}

std::string ReadText(std::istream& in) {
  const std::string lengthLine = ReadLine(in);
  long long length = 0;
  const auto [stop, error] =
      std::from_chars(lengthLine.data(), lengthLine.data() + lengthLine.size(), length);
  if (error != std::errc() || stop != lengthLine.data() + lengthLine.size() || length < 0 ||
      length > Remaining(in)) {
    throw Malformed{};
  }
  std::string text(static_cast<std::size_t>(length), '\0');
  if (!in.read(text.data(), length)) throw Malformed{};
  if (ReadLine(in) != "" || ReadLine(in) != kEndOfString) throw Malformed{};
  return text;
}

long long ReadInteger(std::istream& in) {
  long long n = 0;
  if (!(in >> n) || n < 0) throw Malformed{};
  return n;
}

double ParseNumber(const std::string& word) {
  double x = 0.0;
  if (!TextToDouble(word, x)) throw Malformed{};
  return x;
}

Eigen::MatrixXd ReadMatrix(std::istream& in) {
  const auto rows = static_cast<Eigen::Index>(ReadInteger(in));
  const auto cols = static_cast<Eigen::Index>(ReadInteger(in));
  // Every element takes at least two bytes (a digit and a separator), and every row a line, so
  // neither dimension can exceed what is left of the file, even for an empty matrix.
  const std::streamoff left = Remaining(in);
  if (rows > left || cols > left || (rows > 0 && cols > 0 && cols > left / 2 / rows)) throw Malformed{};
  Eigen::MatrixXd m(rows, cols);
  std::string word;
  for (Eigen::Index i = 0; i < rows; ++i) {
    for (Eigen::Index j = 0; j < cols; ++j) {
      if (!(in >> word)) throw Malformed{};
      m(i, j) = ParseNumber(word);
    }
  }
  in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  return m;
}

// The words a name may not be (set for the length of one load).
thread_local const std::function<bool(const std::string&)>* t_reserved = nullptr;

// A name the workspace can hold: an identifier that is not a word of the language.
void CheckName(const std::string& name) {
  if (!CheckID(name) || (t_reserved && *t_reserved && (*t_reserved)(name))) throw Malformed{};
}

std::shared_ptr<Dataset> ReadDataset(std::istream& in) {
  DatasetStructure structure;
  const long long kindCode = ReadInteger(in);
  const long long formatCode = ReadInteger(in);
  if (kindCode > 2 || formatCode > 3) throw Malformed{};
  structure.kind = static_cast<DatasetKind>(kindCode);
  structure.format = static_cast<TimeFormat>(formatCode);
  in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  structure.timeVariable = ReadText(in);
  structure.groupVariable = ReadText(in);
  const auto count = static_cast<std::size_t>(ReadInteger(in));
  if (static_cast<std::streamoff>(count) > Remaining(in)) throw Malformed{};
  std::vector<std::string> names(count);
  std::vector<std::vector<std::string>> labels(count);
  for (std::size_t j = 0; j < count; ++j) {
    if (!(in >> names[j])) throw Malformed{};
    const auto n = static_cast<std::size_t>(ReadInteger(in));
    if (static_cast<std::streamoff>(n) > Remaining(in)) throw Malformed{};
    in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    for (std::size_t k = 0; k < n; ++k) labels[j].push_back(ReadText(in));
  }
  const Eigen::MatrixXd data = ReadMatrix(in);
  if (data.cols() != static_cast<Eigen::Index>(count)) throw Malformed{};
  // Names distinct identifiers; the codes of a string variable whole numbers among its labels.
  std::set<std::string> distinct;
  for (std::size_t j = 0; j < count; ++j) {
    if (!CheckID(names[j])) throw Malformed{};
    if (!distinct.insert(names[j]).second) throw Malformed{};
    if (labels[j].empty()) continue;
    const auto codes = data.col(static_cast<Eigen::Index>(j));
    for (Eigen::Index i = 0; i < codes.size(); ++i) {
      const double code = codes(i);
      if (std::isnan(code)) continue;
      if (!(code >= 1.0 && code <= static_cast<double>(labels[j].size())) || code != std::floor(code)) {
        throw Malformed{};
      }
    }
  }
  // The structure's variables exist (and are not string variables).
  auto declared = [&](const std::string& variable) {
    const auto it = std::find(names.begin(), names.end(), variable);
    if (it == names.end() || !labels[static_cast<std::size_t>(it - names.begin())].empty()) throw Malformed{};
  };
  if (structure.kind != DatasetKind::CrossSection) declared(structure.timeVariable);
  if (structure.kind == DatasetKind::Panel) declared(structure.groupVariable);
  auto dataset = std::make_shared<Dataset>(names, data);
  for (std::size_t j = 0; j < count; ++j) dataset->RestoreLabels(names[j], std::move(labels[j]));
  dataset->RestoreStructure(structure);
  return dataset;
}

std::vector<std::string> ReadTexts(std::istream& in) {
  const auto count = ReadInteger(in);
  if (count > Remaining(in)) throw Malformed{};
  in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  std::vector<std::string> texts;
  for (long long k = 0; k < count; ++k) texts.push_back(ReadText(in));
  return texts;
}

// A model as WriteModel wrote it; its dataset is linked by name once the whole file is read.
std::shared_ptr<Model> ReadModel(std::istream& in, std::string& datasetName, bool& datasetDeleted) {
  auto model = std::make_shared<Model>();
  ModelDescription& d = model->Description();
  for (std::string* text : {&d.typeName, &d.keyword, &d.title, &d.dependent, &d.estimationTime,
                            &datasetName}) {
    *text = ReadText(in);
  }
  d.regressors = ReadTexts(in);
  d.secondList = ReadTexts(in);
  d.constraints = ReadTexts(in);
  // Counts no larger than a double counts exactly.
  constexpr long long kLargestCount = 1LL << 53;
  const long long observations = ReadInteger(in);
  const long long dropped = ReadInteger(in);
  if (observations > kLargestCount || dropped > kLargestCount) throw Malformed{};
  d.observations = static_cast<long>(observations);
  d.observationsDropped = static_cast<long>(dropped);
  datasetDeleted = ReadInteger(in) != 0;
  const Eigen::MatrixXd gibbs = ReadMatrix(in);
  // Draws, burn-in, chains, thinning and seed: whole numbers, all positive but the burn-in.
  if (gibbs.size() != 5) throw Malformed{};
  d.gibbs = gibbs.reshaped();
  for (Eigen::Index i = 0; i < 5; ++i) {
    const double g = d.gibbs(i);
    if (!(g >= (i == 1 ? 0.0 : 1.0)) || g > static_cast<double>(kLargestCount) || g != std::floor(g)) throw Malformed{};
  }
  std::vector<std::string> labels = ReadTexts(in);
  // Each regressor's coefficient comes first among the labels, as dependent$regressor.
  if (labels.empty() || labels.size() < d.regressors.size()) throw Malformed{};
  for (std::size_t j = 0; j < d.regressors.size(); ++j) {
    if (labels[j] != d.dependent + "$" + d.regressors[j]) throw Malformed{};
  }
  for (const auto* list : {&d.regressors, &d.secondList}) {
    std::set<std::string> distinct;
    for (const std::string& r : *list) {
      if (!CheckID(r) || !distinct.insert(r).second) throw Malformed{};
    }
  }
  if (!d.dependent.empty() && !CheckID(d.dependent)) throw Malformed{};
  const auto chains = ReadInteger(in);
  if (chains < 1 || chains > Remaining(in)) throw Malformed{};
  std::vector<Eigen::MatrixXd> draws;
  for (long long c = 0; c < chains; ++c) {
    draws.push_back(ReadMatrix(in));
    if (draws.back().cols() != static_cast<Eigen::Index>(labels.size()) ||
        draws.back().rows() != draws.front().rows()) {
      throw Malformed{};
    }
  }
  if (draws.front().rows() < 1) throw Malformed{};
  model->SetDraws(std::move(draws), std::move(labels));
  // Results that the draws define are computed again from them, not taken from the file; the
  // others are scalars.
  const std::set<std::string> fromDraws = {"draws", "post_mean", "post_sd", "post_median", "lower", "upper",
                                           "ess", "mcse", "geweke", "rhat", "nchains", "ndraws"};
  const auto results = ReadInteger(in);
  if (results > Remaining(in)) throw Malformed{};
  in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  for (long long k = 0; k < results; ++k) {
    const std::string name = ReadText(in);
    Eigen::MatrixXd value = ReadMatrix(in);
    if (fromDraws.count(name)) continue;
    if (!CheckID(name) || value.size() != 1) throw Malformed{};
    model->AddResult(name, std::move(value));
  }
  if (model->ScalarResult("nobs") != static_cast<double>(d.observations) && !std::isnan(model->ScalarResult("nobs"))) {
    throw Malformed{};
  }
  // The model of its estimator's class, so that it acts after loading as it did when saved.
  std::shared_ptr<Model> typed = Model::Create(d.typeName);
  typed->CopyContentsFrom(*model);
  return typed;
}

// Models read from a file, with the names of their datasets, linked once every record is read.
struct PendingModel {
  std::shared_ptr<Model> model;
  std::string datasetName;
  bool datasetDeleted = false;
};
thread_local std::vector<PendingModel>* t_pendingModels = nullptr;

// One record: its kind word and name, then the value; false for a skipped record.
bool ReadValue(std::istream& in, std::string& name, TavixValue& value, int depth);

std::shared_ptr<TavixStructure> ReadStructure(std::istream& in, int depth) {
  if (depth > kMaxStructureDepth) throw Malformed{};
  const auto count = ReadInteger(in);
  if (count > Remaining(in)) throw Malformed{};
  in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  auto structure = std::make_shared<TavixStructure>();
  std::set<std::string> members;
  for (long long k = 0; k < count; ++k) {
    std::string member;
    TavixValue value;
    const bool read = ReadValue(in, member, value, depth + 1);
    if (!members.insert(member).second) throw Malformed{};
    if (read) structure->SetValue(member, value);
  }
  return structure;
}

bool ReadValue(std::istream& in, std::string& name, TavixValue& value, int depth) {
  std::istringstream record(ReadLine(in));
  std::string word;
  if (!(record >> word >> name)) throw Malformed{};
  CheckName(name);
  if (word == "matrix") value = TavixValue::FromMatrix(ReadMatrix(in));
  else if (word == "string") value = TavixValue::FromString(ReadText(in));
  else if (word == "dataset") value = TavixValue::FromDataset(ReadDataset(in));
  else if (word == "structure") value = TavixValue::FromStructure(ReadStructure(in, depth));
  else if (word == "model") {
    PendingModel pending;
    pending.model = ReadModel(in, pending.datasetName, pending.datasetDeleted);
    value = TavixValue::FromModel(pending.model);
    if (t_pendingModels) t_pendingModels->push_back(std::move(pending));
  }
  else if (word == "skipped") return false;
  else throw Malformed{};
  return true;
}

}  // namespace

namespace {

// How deep a structure nests (1 for one without structures inside), counted without recursion.
int StructureDepth(const TavixStructure& top) {
  int deepest = 0;
  std::vector<std::pair<const TavixStructure*, int>> pending = {{&top, 1}};
  std::vector<std::string> names;
  while (!pending.empty()) {
    const auto [s, depth] = pending.back();
    pending.pop_back();
    deepest = std::max(deepest, depth);
    if (deepest > kMaxStructureDepth) break;
    s->GetStructureNames(names);
    for (const std::string& name : names) {
      if (const auto inner = s->GetpStructure(name)) pending.emplace_back(inner.get(), depth + 1);
    }
  }
  return deepest;
}

}  // namespace

bool WorkspaceFitsFile(const Workspace& ws, std::string& message) {
  for (const auto& [name, s] : ws.structures) {
    if (s && StructureDepth(*s) > kMaxStructureDepth) {
      message = "Structure \"" + name + "\" nests more than " + std::to_string(kMaxStructureDepth) +
                " levels deep, more than a workspace file holds.";
      return false;
    }
  }
  return true;
}

int SaveWorkspace(const Workspace& ws, std::ostream& out) {
  int models = 0;
  out << kHeader << '\n';
  for (const auto& [name, m] : ws.matrices) WriteValue(out, name, TavixValue::FromMatrix(m), models);
  for (const auto& [name, s] : ws.strings) WriteValue(out, name, TavixValue::FromString(s), models);
  for (const auto& [name, d] : ws.datasets) WriteValue(out, name, TavixValue::FromDataset(d), models);
  for (const auto& [name, s] : ws.structures) {
    WriteValue(out, name, TavixValue::FromStructure(s), models);
  }
  for (const auto& [name, m] : ws.models) WriteValue(out, name, TavixValue::FromModel(m), models);
  return models;
}

bool LoadWorkspace(std::istream& in, Workspace& workspace, std::string& error,
                   const std::function<bool(const std::string&)>& reserved) {
  Workspace loaded;
  std::vector<PendingModel> pending;
  t_pendingModels = &pending;
  t_reserved = &reserved;
  struct Reset {
    ~Reset() {
      t_pendingModels = nullptr;
      t_reserved = nullptr;
    }
  } reset;
  std::set<std::string> names;
  try {
    const std::string header = ReadLine(in);
    if (header != kHeader && header != kPreviousHeader) throw Malformed{};
    while (in.peek() != std::char_traits<char>::eof()) {
      std::string name;
      TavixValue value;
      const bool read = ReadValue(in, name, value, 0);
      // One value per name across the five collections.
      if (!names.insert(name).second) throw Malformed{};
      if (read) loaded.Store(name, value);
    }
  } catch (const Malformed&) {
    error = "the file is not a Tavix workspace or it is damaged.";
    return false;
  } catch (const std::exception&) {
    error = "the file is not a Tavix workspace or it is damaged.";
    return false;
  }
  for (const auto& [name, m] : loaded.matrices) workspace.Store(name, TavixValue::FromMatrix(m));
  for (const auto& [name, s] : loaded.strings) workspace.Store(name, TavixValue::FromString(s));
  for (const auto& [name, d] : loaded.datasets) workspace.Store(name, TavixValue::FromDataset(d));
  for (const auto& [name, s] : loaded.structures) workspace.Store(name, TavixValue::FromStructure(s));
  for (const auto& [name, m] : loaded.models) workspace.Store(name, TavixValue::FromModel(m));
  // Each model finds its dataset again by name; a dataset that is gone leaves the model without data.
  for (const PendingModel& p : pending) {
    const auto it = workspace.datasets.find(p.datasetName);
    if (it != workspace.datasets.end() && !p.datasetDeleted) {
      p.model->SetDataset(it->second, p.datasetName);
    } else {
      p.model->SetDataset({}, p.datasetName);
      p.model->SetDatasetWasDeleted();
    }
  }
  return true;
}
