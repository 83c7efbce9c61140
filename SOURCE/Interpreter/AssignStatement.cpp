// Running assignments: names, index ranges, dataset variables and structure members.
#include <cmath>

#include "AstStatements.h"
#include "Dataset.h"
#include "ExecContext.h"
#include "Messages.h"
#include "TavixStructure.h"
#include "ValueKind.h"

namespace {

std::string JoinPath(const std::vector<std::string>& path, std::size_t count) {
  std::string joined = path[0];
  for (std::size_t i = 1; i < count; ++i) joined += "." + path[i];
  return joined;
}

// A range or dataset message; inside a multiple assignment it names the target, as in
// "Index out of bounds in range assignment of "a".".
std::string TargetMessage(const AssignStatement& statement, const char* text, const char* where,
                          const std::string& name) {
  if (!statement.namesTarget) return text;
  std::string message(text);
  message.pop_back();  // the final "."
  return message + where + "\"" + name + "\".";
}

std::string RangeMessage(const AssignStatement& statement, const char* text) {
  return TargetMessage(statement, text, " in range assignment of ",
                       JoinPath(statement.path, statement.path.size()));
}

// One cell a range assignment writes: its position in column order and its new value.
struct CellWrite {
  Eigen::Index position;
  double value;
};

// The cells that `target(indices) = rhs` writes, after every check: the indices, the number of
// elements and the dimensions. A 1 by 1 right side fills the whole selection.
std::vector<CellWrite> SelectedCells(ExecContext& context, const AssignStatement& statement,
                                     Eigen::Index rows, Eigen::Index cols,
                                     const Eigen::MatrixXd& rhs) {
  std::vector<CellWrite> cells;
  const auto& args = statement.indices;
  const std::string outOfBounds = RangeMessage(statement, msg::kIndexOutOfBounds);
  if (args.size() == 1) {
    const IndexList list = EvaluateIndex(context, *args[0], rows * cols, outOfBounds);
    const Eigen::Index n = list.Count(rows * cols);
    if (rhs.size() != 1 && rhs.size() != n) context.Fail(statement, msg::kInconsistentElements);
    cells.reserve(static_cast<std::size_t>(n));
    for (Eigen::Index k = 0; k < n; ++k) {
      cells.push_back({list.At(k), rhs.size() == 1 ? rhs(0, 0) : rhs(k)});
    }
    return cells;
  }
  const IndexList rowList = EvaluateIndex(context, *args[0], rows, outOfBounds);
  const IndexList colList = EvaluateIndex(context, *args[1], cols, outOfBounds);
  const Eigen::Index nr = rowList.Count(rows);
  const Eigen::Index nc = colList.Count(cols);
  if (rhs.size() != 1) {
    if (rhs.size() != nr * nc) context.Fail(statement, msg::kInconsistentElements);
    if (rhs.rows() != nr || rhs.cols() != nc) {
      context.Fail(statement, RangeMessage(statement, msg::kInconsistentDimensions));
    }
  }
  cells.reserve(static_cast<std::size_t>(nr * nc));
  for (Eigen::Index c = 0; c < nc; ++c) {
    for (Eigen::Index r = 0; r < nr; ++r) {
      cells.push_back({colList.At(c) * rows + rowList.At(r), rhs.size() == 1 ? rhs(0, 0) : rhs(r, c)});
    }
  }
  return cells;
}

void WriteRange(ExecContext& context, const AssignStatement& statement, Eigen::MatrixXd& target,
                const Eigen::MatrixXd& rhs) {
  const auto cells = SelectedCells(context, statement, target.rows(), target.cols(), rhs);
  double* data = target.data();
  for (const CellWrite& cell : cells) data[cell.position] = cell.value;
}

// `d(rows, cols) = rhs`: writes through the dataset's variables; string variables may only be
// overwritten whole, and become numeric.
void WriteDatasetRange(ExecContext& context, const AssignStatement& statement,
                       const std::string& name, Dataset& dataset, const Eigen::MatrixXd& rhs) {
  const Eigen::Index rows = dataset.NumberOfObservations();
  const auto& names = dataset.VariableNames();
  const auto cols = static_cast<Eigen::Index>(names.size());
  const auto cells = SelectedCells(context, statement, rows, cols, rhs);
  Eigen::MatrixXd data = dataset.GetData();
  Eigen::Array<bool, Eigen::Dynamic, Eigen::Dynamic> written =
      Eigen::Array<bool, Eigen::Dynamic, Eigen::Dynamic>::Constant(rows, cols, false);
  for (const CellWrite& cell : cells) {
    data.data()[cell.position] = cell.value;
    written.data()[cell.position] = true;
  }
  int partialStrings = 0;
  bool wholeStrings = false;
  for (Eigen::Index j = 0; j < cols; ++j) {
    if (!dataset.IsStringVariable(names[static_cast<std::size_t>(j)]) || !written.col(j).any()) continue;
    if (written.col(j).all()) {
      wholeStrings = true;
    } else {
      ++partialStrings;
    }
  }
  if (partialStrings == 1) {
    context.Fail(statement, "The range requested from dataset \"" + name +
                                "\" contains only part of a string variable. A variable must "
                                "contain either all string or all numeric values.");
  }
  if (partialStrings > 1) {
    context.Fail(statement, "The range requested from dataset \"" + name +
                                "\" contains only parts of string variables. A variable must "
                                "contain either all string or all numeric values.");
  }
  for (Eigen::Index j = 0; j < cols; ++j) {
    if (written.col(j).any()) dataset.ReplaceVariable(names[static_cast<std::size_t>(j)], data.col(j));
  }
  if (wholeStrings) {
    context.Warn(statement, "Dataset \"" + name +
                                "\" contained one or more string variables in the requested "
                                "range, which have been overwritten and are now numeric.");
  }
}

// `d.v = rhs`: replaces or adds a numeric variable.
void AssignDatasetVariable(ExecContext& context, const AssignStatement& statement,
                           const std::string& variable, Dataset& dataset, const TavixValue& value) {
  if (value.code != kind::MATRIX) context.Fail(statement, msg::kDatasetVariableNotMatrix);
  const Eigen::MatrixXd& column = *value.matrix;
  if (column.cols() != 1) context.Fail(statement, msg::kDatasetVariableOneColumn);
  if (column.rows() != dataset.NumberOfObservations()) {
    context.Fail(statement, TargetMessage(statement, msg::kDimensionMismatch,
                                          " in assignment to dataset ", statement.path[0]));
  }
  if (!dataset.VariableExists(variable)) {
    dataset.AddVariable(variable, column.col(0));
    return;
  }
  const bool wasString = dataset.IsStringVariable(variable);
  dataset.ReplaceVariable(variable, column.col(0));
  if (wasString) {
    context.Warn(statement, "Variable \"" + variable +
                                "\" was a string variable, which has been overwritten and is now "
                                "numeric.");
  }
}

// A structure that only this workspace entry holds, copied first when anything else shares it.
std::shared_ptr<TavixStructure> Unshared(std::shared_ptr<TavixStructure>& held) {
  if (held.use_count() > 1) held = held->Copy();
  return held;
}

// `s.a.b = value`: creates the structures on the way as needed.
void AssignStructureMember(ExecContext& context, const AssignStatement& statement,
                           const TavixValue& value) {
  const auto& path = statement.path;
  Workspace& ws = context.workspace();
  auto found = ws.structures.find(path[0]);
  std::shared_ptr<TavixStructure> current;
  if (found == ws.structures.end() || ws.ID_code(path[0]) != kind::STRUCTURE) {
    current = std::make_shared<TavixStructure>();
    ws.Store(path[0], TavixValue::FromStructure(current));
  } else {
    current = Unshared(found->second);
  }
  for (std::size_t i = 1; i + 1 < path.size(); ++i) {
    int code = kind::UNKNOWN;
    if (!current->HasMember(path[i], code)) {
      auto created = std::make_shared<TavixStructure>();
      current->AddStructure(path[i], created);
      current = created;
      continue;
    }
    if (code != kind::STRUCTURE) {
      context.Fail(statement, "\"" + JoinPath(path, i + 1) +
                                  "\" is not a structure and cannot hold elements.");
    }
    std::shared_ptr<TavixStructure> member = current->GetpStructure(path[i]);
    if (member.use_count() > 2) {  // held by `current` and by this local copy
      member = member->Copy();
      current->AddStructure(path[i], member);
    }
    current = member;
  }
  current->SetValue(path.back(), value);
}

// A dataset that only this workspace entry holds.
Dataset& UnsharedDataset(std::shared_ptr<Dataset>& held) {
  if (held.use_count() > 1) held = std::make_shared<Dataset>(*held);
  return *held;
}

// Assigns a whole value to the path: a name, a dataset variable or a structure member.
void AssignWhole(ExecContext& context, const AssignStatement& statement, const TavixValue& value) {
  const auto& path = statement.path;
  Workspace& ws = context.workspace();
  if (path.size() == 1) {
    ws.Store(path[0], value);
    return;
  }
  const int code = ws.ID_code(path[0]);
  if (code == kind::DATASET && path.size() == 2) {
    AssignDatasetVariable(context, statement, path[1], UnsharedDataset(ws.datasets[path[0]]), value);
    return;
  }
  if (code == kind::UNKNOWN || code == kind::STRUCTURE) {
    AssignStructureMember(context, statement, value);
    return;
  }
  context.Fail(statement, "\"" + path[0] + "\" is not a structure and cannot hold elements.");
}

// `name(range) = value` on a workspace name: writes in place when nothing else shares the value.
void AssignRangeOfName(ExecContext& context, const AssignStatement& statement,
                       const TavixValue& value) {
  const std::string& name = statement.path[0];
  Workspace& ws = context.workspace();
  const int code = ws.ID_code(name);
  if (code == kind::UNKNOWN) context.Fail(statement, "Symbol \"" + name + "\" is not defined.");
  if (code == kind::MODEL) {
    context.Fail(statement, "\"" + name + "\" is a model and its elements cannot be altered.");
  }
  if (code != kind::MATRIX && code != kind::DATASET) {
    context.Fail(statement, std::string("Range operations are not defined for ") + KindWord(code));
  }
  if (value.code != kind::MATRIX) context.Fail(statement, msg::kRangeRightNotMatrix);
  if (code == kind::DATASET) {
    auto& held = ws.datasets[name];
    // Work on a copy so that a refused assignment leaves the dataset as it was.
    auto copy = std::make_shared<Dataset>(*held);
    WriteDatasetRange(context, statement, name, *copy, *value.matrix);
    held = copy;
    return;
  }
  auto& held = ws.matrices[name];
  if (held.use_count() > 1) {
    auto copy = std::make_shared<Eigen::MatrixXd>(*held);
    WriteRange(context, statement, *copy, *value.matrix);
    held = copy;
  } else {
    // Checks come before any write inside WriteRange, so a failure changes nothing.
    Eigen::MatrixXd& target = *held;
    WriteRange(context, statement, target, *value.matrix);
  }
}

}  // namespace

void AssignStatement::Execute(ExecContext& context) const {
  if (indices.empty() && path.size() == 1) {
    // `name = expression` over a matrix that nothing else shares: reuse its storage.
    std::shared_ptr<Eigen::MatrixXd>* held = m_target.Find(context.workspace(), path[0]);
    if (held && held->use_count() == 1) {
      Eigen::MatrixXd& target = **held;
      double scalar = 0.0;
      if (target.size() == 1 && value->EvaluateScalar(context, scalar)) {
        target(0, 0) = scalar;
        return;
      }
      if (value->EvaluateInto(context, target)) return;
    }
  }
  Store(context, value->Evaluate(context));
}

void AssignStatement::Store(ExecContext& context, const TavixValue& rhs) const {
  // A model statement that printed "UNKNOWN MODEL" yields nothing to store.
  if (rhs.code == kind::UNKNOWN) return;
  if (indices.empty()) {
    AssignWhole(context, *this, rhs);
    return;
  }
  if (path.size() == 1) {
    AssignRangeOfName(context, *this, rhs);
    return;
  }
  // A range of a member: change a copy of the member's matrix, then assign it back.
  NameExpression member;
  member.path = path;
  member.first = first;
  member.last = targetLast;
  const TavixValue current = member.Evaluate(context);
  if (current.code != kind::MATRIX) {
    context.Fail(*this, std::string("Range operations are not defined for ") + KindWord(current.code));
  }
  if (rhs.code != kind::MATRIX) context.Fail(*this, msg::kRangeRightNotMatrix);
  Eigen::MatrixXd changed = *current.matrix;
  WriteRange(context, *this, changed, *rhs.matrix);
  AssignWhole(context, *this, TavixValue::FromMatrix(std::move(changed)));
}
