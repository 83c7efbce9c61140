// Writing a workspace to a file and reading it back: matrices, strings, datasets (with their
// string variables and structure), models (with their draws, results and the name of their
// dataset) and structures, nested to any depth.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

class Workspace;

// The marker line that ends every string value in the file.
inline constexpr const char* kEndOfString = "_#_end_of_string_#_";

// Structures nest at most this deep in a workspace file, for save and load alike.
inline constexpr int kMaxStructureDepth = 1000;

// Whether SaveWorkspace can write everything so that LoadWorkspace reads it back; false with the
// message when a structure nests deeper than kMaxStructureDepth.
bool WorkspaceFitsFile(const Workspace& workspace, std::string& message);

// Writes every matrix, string, dataset, model and structure of the workspace. Returns the number
// of values that could not be written (none of the kinds above).
int SaveWorkspace(const Workspace& workspace, std::ostream& out);

// Reads a file written by SaveWorkspace (the stream must be seekable: record sizes are checked
// against what is left of it) into `workspace`; false with `error` set when the file is not such
// a file (the workspace is then left unchanged). Every record is checked against the rest before
// anything enters the workspace: names (identifiers, none `reserved`, none twice), matrix sizes
// against the file's length, string codes against their labels, a dataset's structure against its
// variables, a model's settings, labels, draws and results against each other.
bool LoadWorkspace(std::istream& in, Workspace& workspace, std::string& error,
                   const std::function<bool(const std::string&)>& reserved = {});
