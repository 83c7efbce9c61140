// WorkspaceFileChecks: what a value must satisfy to be kept in a workspace file; save refuses and
// load rejects by the same rules, so that every file save writes loads again.
#pragma once

#include <functional>
#include <string>

#include <Eigen/Dense>

class Dataset;
class Model;

// Structures nest at most this deep in a workspace file (a structure without structures inside
// is 1 deep). Reading recurses once per level, so the bound keeps a load well inside the stack of
// any thread, sanitizer builds included.
inline constexpr int kMaxStructureDepth = 200;

// A matrix without elements keeps its other extent (the columns of a 0 x n matrix, the rows of an
// n x 0 one) no larger than this, so that what works per row or column stays bounded.
inline constexpr Eigen::Index kMaxEmptyExtent = Eigen::Index{1} << 24;

// Counts a model keeps (observations, sampler settings) stay within the whole numbers a double
// holds exactly.
inline constexpr double kMaxCount = 9007199254740992.0;  // 2^53

// The words that may not name a value (the language's own), as the interpreter tells them; an
// empty function reserves nothing.
using ReservedWords = std::function<bool(const std::string&)>;

// Whether a text can name a value, a member or a dataset variable: an identifier, not reserved.
bool NameFitsFile(const std::string& name, const ReservedWords& reserved);

// "" when the value can be kept, or what stands in the way (a phrase: "its ...").
std::string MatrixProblem(const Eigen::MatrixXd& m);
// Variables with distinct names, string codes among their texts, the structure's variables present.
std::string DatasetProblem(const Dataset& d, const ReservedWords& reserved);
// Sampler settings whole and positive, one matrix of draws per chain, all of the kept length and
// one column per label, counts within kMaxCount, lists of distinct variables, results named as
// members are, and what the model's class needs of its description and labels.
std::string ModelProblem(const Model& m);
