// Writing a workspace to a file and reading it back: matrices, strings, datasets (with their
// string variables and structure), models (with their draws, results and the name of their
// dataset) and structures, nested up to kMaxStructureDepth.
#pragma once

#include <iosfwd>
#include <string>

#include "WorkspaceFileChecks.h"

class Workspace;

// The marker line that ends every string value in the file.
inline constexpr const char* kEndOfString = "_#_end_of_string_#_";

// Whether SaveWorkspace can write everything so that LoadWorkspace reads it back: every name,
// matrix, dataset and model passes the checks load makes (WorkspaceFileChecks) and no structure
// nests deeper than kMaxStructureDepth. False with the message naming the first value that fails.
bool WorkspaceFitsFile(const Workspace& workspace, std::string& message, const ReservedWords& reserved = {});

// Writes every matrix, string, dataset, model and structure of the workspace. Returns the number
// of values that could not be written (none of the kinds above).
int SaveWorkspace(const Workspace& workspace, std::ostream& out);

// Reads a file written by SaveWorkspace into `workspace` (the stream must be seekable: record sizes
// are checked against its length). Every record is checked against the rest of the file before
// anything enters the workspace: each line holds exactly its fields, sizes and counts fit in what
// is left of the file, names are distinct identifiers (none `reserved`), and each value meets the
// rules save keeps. False with `error` set when the file is not such a file or is damaged; the
// workspace is then left unchanged.
bool LoadWorkspace(std::istream& in, Workspace& workspace, std::string& error, const ReservedWords& reserved = {});
