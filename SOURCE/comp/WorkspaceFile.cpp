// WorkspaceFile: the workspace as text, one record per value: written by save, read and checked
// by load.
#include "WorkspaceFile.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <istream>
#include <memory>
#include <ostream>
#include <set>
#include <string_view>
#include <vector>

#include "Dataset.h"
#include "Model.h"
#include "NumberText.h"
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

// The file being read, line by line, with the number of bytes left in it: no record may claim
// more elements, texts or lines than could still follow.
class Reader {
public:
  explicit Reader(std::istream& in) : m_in(in) {
    const std::streampos here = in.tellg();
    in.seekg(0, std::ios::end);
    const std::streampos end = in.tellg();
    in.seekg(here);
    if (here < 0 || end < here) throw Malformed{};
    m_size = end - here;
    m_left = m_size;
  }

  bool AtEnd() const { return m_left <= 0; }
  std::streamoff Left() const { return m_left; }
  std::streamoff Size() const { return m_size; }

  // The next line, without its end.
  std::string Line() {
    std::string line;
    if (!std::getline(m_in, line)) throw Malformed{};
    m_left -= static_cast<std::streamoff>(line.size()) + 1;
    return line;
  }

  // The next line, which must hold exactly `count` fields separated by blanks.
  std::vector<std::string> Fields(std::size_t count) {
    const std::string line = Line();
    std::vector<std::string> fields;
    std::size_t at = 0;
    while (fields.size() <= count) {
      at = line.find_first_not_of(' ', at);
      if (at == std::string::npos) break;
      const std::size_t stop = std::min(line.find(' ', at), line.size());
      fields.push_back(line.substr(at, stop - at));
      at = stop;
    }
    if (fields.size() != count) throw Malformed{};
    return fields;
  }

  // A whole number written by the writer: digits only, no sign.
  static long long WholeNumber(const std::string& text) {
    long long n = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), n);
    if (error != std::errc() || stop != text.data() + text.size() || n < 0) throw Malformed{};
    return n;
  }

  // A line holding a count of things to follow, each taking at least one byte of the file.
  long long Count() {
    const long long n = WholeNumber(Fields(1)[0]);
    if (n > m_left) throw Malformed{};
    return n;
  }

  // A text: its length in bytes on a line, the bytes, then the end marker on its own line.
  std::string Text() {
    const long long length = WholeNumber(Fields(1)[0]);
    if (length > m_left) throw Malformed{};
    std::string text(static_cast<std::size_t>(length), '\0');
    if (!m_in.read(text.data(), length)) throw Malformed{};
    m_left -= length;
    if (Line() != "" || Line() != kEndOfString) throw Malformed{};
    return text;
  }

  std::vector<std::string> Texts() {
    const long long count = Count();
    std::vector<std::string> texts;
    for (long long k = 0; k < count; ++k) texts.push_back(Text());
    return texts;
  }

  // A matrix: "rows cols" on a line, then each row on a line of its own.
  Eigen::MatrixXd Matrix() {
    const std::vector<std::string> size = Fields(2);
    const long long rows = WholeNumber(size[0]);
    const long long cols = WholeNumber(size[1]);
    // Each row takes a line, and each element at least a digit and a separator.
    if (rows > m_left || (cols > 0 && rows > m_left / 2 / cols)) throw Malformed{};
    if (rows == 0 && cols > kMaxEmptyExtent) throw Malformed{};
    Eigen::MatrixXd m(static_cast<Eigen::Index>(rows), static_cast<Eigen::Index>(cols));
    for (Eigen::Index i = 0; i < m.rows(); ++i) {
      // Exactly one number per column, read in place.
      const std::string line = Line();
      const std::string_view text(line);
      std::size_t at = 0;
      for (Eigen::Index j = 0; j < m.cols(); ++j) {
        at = text.find_first_not_of(' ', at);
        if (at == std::string_view::npos) throw Malformed{};
        const std::size_t stop = std::min(text.find(' ', at), text.size());
        if (!TextToDouble(text.substr(at, stop - at), m(i, j))) throw Malformed{};
        at = stop;
      }
      if (text.find_first_not_of(' ', at) != std::string_view::npos) throw Malformed{};
    }
    if (!MatrixProblem(m).empty()) throw Malformed{};
    return m;
  }

private:
  std::istream& m_in;
  std::streamoff m_size = 0;
  std::streamoff m_left = 0;
};

// What one load sees besides the file: the reserved words, and the models read so far, linked to
// their datasets by name once every record is read.
struct PendingModel {
  std::shared_ptr<Model> model;
  std::string datasetName;
  bool datasetDeleted = false;
};
struct LoadState {
  Reader& reader;
  const ReservedWords& reserved;
  std::vector<PendingModel> models;
};

void CheckName(const LoadState& state, const std::string& name) {
  if (!NameFitsFile(name, state.reserved)) throw Malformed{};
}

std::shared_ptr<Dataset> ReadDataset(LoadState& state) {
  Reader& r = state.reader;
  const std::vector<std::string> codes = r.Fields(2);
  const long long kindCode = Reader::WholeNumber(codes[0]);
  const long long formatCode = Reader::WholeNumber(codes[1]);
  if (kindCode > static_cast<int>(DatasetKind::Panel) || formatCode > static_cast<int>(TimeFormat::Daily)) {
    throw Malformed{};
  }
  DatasetStructure structure;
  structure.kind = static_cast<DatasetKind>(kindCode);
  structure.format = static_cast<TimeFormat>(formatCode);
  structure.timeVariable = r.Text();
  structure.groupVariable = r.Text();
  const long long count = r.Count();
  std::vector<std::string> names;
  std::vector<std::vector<std::string>> labels;
  for (long long j = 0; j < count; ++j) {
    const std::vector<std::string> variable = r.Fields(2);
    CheckName(state, variable[0]);
    names.push_back(variable[0]);
    const long long n = Reader::WholeNumber(variable[1]);
    if (n > r.Left()) throw Malformed{};
    labels.emplace_back();
    for (long long k = 0; k < n; ++k) labels.back().push_back(r.Text());
  }
  const Eigen::MatrixXd data = r.Matrix();
  if (data.cols() != static_cast<Eigen::Index>(count)) throw Malformed{};
  std::set<std::string> distinct(names.begin(), names.end());
  if (distinct.size() != names.size()) throw Malformed{};
  auto dataset = std::make_shared<Dataset>(names, data);
  for (std::size_t j = 0; j < names.size(); ++j) dataset->RestoreLabels(names[j], std::move(labels[j]));
  dataset->RestoreStructure(structure);
  if (!DatasetProblem(*dataset, state.reserved).empty()) throw Malformed{};
  return dataset;
}

// A model as WriteModel wrote it, checked as save checks models.
PendingModel ReadModel(LoadState& state) {
  Reader& r = state.reader;
  auto model = std::make_shared<Model>();
  ModelDescription& d = model->Description();
  PendingModel pending;
  for (std::string* text : {&d.typeName, &d.keyword, &d.title, &d.dependent, &d.estimationTime,
                            &pending.datasetName}) {
    *text = r.Text();
  }
  d.regressors = r.Texts();
  d.secondList = r.Texts();
  d.constraints = r.Texts();
  const std::vector<std::string> counts = r.Fields(3);
  const long long observations = Reader::WholeNumber(counts[0]);
  const long long dropped = Reader::WholeNumber(counts[1]);
  const long long deleted = Reader::WholeNumber(counts[2]);
  if (observations > kMaxCount || dropped > kMaxCount || deleted > 1) throw Malformed{};
  d.observations = static_cast<long>(observations);
  d.observationsDropped = static_cast<long>(dropped);
  pending.datasetDeleted = deleted == 1;
  const Eigen::MatrixXd gibbs = r.Matrix();
  if (gibbs.cols() != 1) throw Malformed{};
  d.gibbs = gibbs.col(0);
  std::vector<std::string> labels = r.Texts();
  const long long chains = r.Count();
  std::vector<Eigen::MatrixXd> draws;
  for (long long c = 0; c < chains; ++c) {
    draws.push_back(r.Matrix());
    // Checked chain by chain, so that a damaged file claims no memory beyond its own size.
    if (draws.back().cols() != static_cast<Eigen::Index>(labels.size()) || draws.back().rows() != draws.front().rows()) {
      throw Malformed{};
    }
  }
  if (draws.empty() || draws.front().size() == 0) throw Malformed{};
  model->SetDraws(std::move(draws), std::move(labels));
  // What the draws define (their summary, their pooled matrix) was computed again from them; the
  // file's copies are read past.
  const std::vector<std::string> computed = model->MemberNames();
  const long long results = r.Count();
  std::set<std::string> seen;
  for (long long k = 0; k < results; ++k) {
    const std::string name = r.Text();
    Eigen::MatrixXd value = r.Matrix();
    if (!seen.insert(name).second) throw Malformed{};
    if (std::find(computed.begin(), computed.end(), name) != computed.end()) continue;
    model->AddResult(name, std::move(value));
  }
  // The model of its estimator's class, so that it acts after loading as it did when saved.
  pending.model = Model::Create(d.typeName);
  pending.model->CopyContentsFrom(*model);
  if (!ModelProblem(*pending.model).empty()) throw Malformed{};
  return pending;
}

// One record: its kind word and name, then the value; false for a skipped record. A structure
// read here nests `level` deep.
bool ReadValue(LoadState& state, std::string& name, TavixValue& value, int level);

std::shared_ptr<TavixStructure> ReadStructure(LoadState& state, int level) {
  if (level > kMaxStructureDepth) throw Malformed{};
  const long long count = state.reader.Count();
  auto structure = std::make_shared<TavixStructure>();
  std::set<std::string> members;
  for (long long k = 0; k < count; ++k) {
    std::string member;
    TavixValue value;
    const bool read = ReadValue(state, member, value, level + 1);
    if (!members.insert(member).second) throw Malformed{};
    if (read) structure->SetValue(member, value);
  }
  return structure;
}

bool ReadValue(LoadState& state, std::string& name, TavixValue& value, int level) {
  const std::vector<std::string> record = state.reader.Fields(2);
  const std::string& word = record[0];
  name = record[1];
  CheckName(state, name);
  if (word == "matrix") {
    value = TavixValue::FromMatrix(state.reader.Matrix());
  } else if (word == "string") {
    value = TavixValue::FromString(state.reader.Text());
  } else if (word == "dataset") {
    value = TavixValue::FromDataset(ReadDataset(state));
  } else if (word == "structure") {
    value = TavixValue::FromStructure(ReadStructure(state, level));
  } else if (word == "model") {
    PendingModel pending = ReadModel(state);
    value = TavixValue::FromModel(pending.model);
    state.models.push_back(std::move(pending));
  } else if (word == "skipped") {
    return false;
  } else {
    throw Malformed{};
  }
  return true;
}

// A value on the way through WorkspaceFitsFile: its name as a user writes it ("s.inner.m") and
// how deep it sits.
struct Visit {
  std::string path;
  TavixValue value;
  int level;
};

// The kind word of a value in messages.
std::string KindName(int code) {
  switch (code) {
    case kind::MATRIX: return "Matrix";
    case kind::DATASET: return "Dataset";
    case kind::MODEL: return "Model";
    case kind::STRUCTURE: return "Structure";
    default: return "Value";
  }
}

}  // namespace

bool WorkspaceFitsFile(const Workspace& ws, std::string& message, const ReservedWords& reserved) {
  // Without recursion: a structure may nest far deeper in memory than a file holds.
  std::vector<Visit> pending;
  for (const std::string& name : ws.Names()) pending.push_back({name, ws.Get(name), 1});
  std::reverse(pending.begin(), pending.end());
  std::vector<std::string> names;
  while (!pending.empty()) {
    const Visit visit = std::move(pending.back());
    pending.pop_back();
    const std::string leaf = visit.path.substr(visit.path.rfind('.') + 1);
    std::string problem;
    if (!NameFitsFile(leaf, reserved)) problem = "\"" + leaf + "\" is not a valid name";
    else if (visit.value.code == kind::MATRIX) problem = MatrixProblem(*visit.value.matrix);
    else if (visit.value.code == kind::DATASET) problem = DatasetProblem(*visit.value.dataset, reserved);
    else if (visit.value.code == kind::MODEL) problem = ModelProblem(*visit.value.model);
    if (!problem.empty()) {
      message = KindName(visit.value.code) + " \"" + visit.path + "\" cannot be saved: " + problem + ".";
      return false;
    }
    if (visit.value.code != kind::STRUCTURE) continue;
    if (visit.level > kMaxStructureDepth) {
      const std::string top = visit.path.substr(0, visit.path.find('.'));
      message = "Structure \"" + top + "\" nests more than " + std::to_string(kMaxStructureDepth) +
                " levels deep, more than a workspace file holds.";
      return false;
    }
    const TavixStructure& s = *visit.value.structure;
    for (auto getter : {&TavixStructure::GetStringNames, &TavixStructure::GetStructureNames,
                        &TavixStructure::GetModelNames, &TavixStructure::GetDatasetNames,
                        &TavixStructure::GetMatrixNames}) {
      (s.*getter)(names);
      for (auto it = names.rbegin(); it != names.rend(); ++it) {
        pending.push_back({visit.path + "." + *it, s.GetValue(*it), visit.level + 1});
      }
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

bool LoadWorkspace(std::istream& in, Workspace& workspace, std::string& error, const ReservedWords& reserved) {
  Workspace loaded;
  std::vector<PendingModel> models;
  try {
    Reader reader(in);
    LoadState state{reader, reserved, {}};
    const std::string header = reader.Line();
    if (header != kHeader && header != kPreviousHeader) throw Malformed{};
    // One value per name across the five collections.
    std::set<std::string> names;
    while (!reader.AtEnd()) {
      std::string name;
      TavixValue value;
      const bool read = ReadValue(state, name, value, 1);
      if (!names.insert(name).second) throw Malformed{};
      if (read) loaded.Store(name, value);
    }
    models = std::move(state.models);
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
  for (const PendingModel& p : models) {
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
