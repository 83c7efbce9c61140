// Kind codes of workspace values, shared by look-ups, values and containers.
#pragma once

namespace kind {
constexpr int MATRIX = 1;
constexpr int DATASET = 2;
constexpr int MODEL = 3;
constexpr int STRUCTURE = 4;
constexpr int STRING = 5;
constexpr int UNKNOWN = -1;
}  // namespace kind

// The plural word that ends messages about a kind: "matrices.", "datasets.", "models.",
// "structures.", "strings.".
inline const char* KindWord(int code) {
  switch (code) {
    case kind::MATRIX: return "matrices.";
    case kind::DATASET: return "datasets.";
    case kind::MODEL: return "models.";
    case kind::STRUCTURE: return "structures.";
    case kind::STRING: return "strings.";
    default: return "unknown values.";
  }
}
