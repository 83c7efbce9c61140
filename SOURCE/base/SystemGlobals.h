// Program-wide settings that every part of the program reads: mode, home and engine directories.
#pragma once

#include <string>

namespace Tavix_SYSTEM_NAMESPACE {

// True when the program runs with its window, false for a batch run of one script.
extern bool RUN_GUI;
// The installation directory ("$TavixHOME" in scripts) and the system directory.
extern std::string TAVIX_HOME;
extern std::string TAVIX_SYSTEM;

namespace GLOBAL {
// Directories of the external programs; the sentinel DEFAULT_STRING means "not set yet".
extern std::string DirectoryJAGS;
extern std::string DirectoryBUGS;
extern std::string DirectorySTAN;
extern std::string DirectoryR;
extern std::string DirectoryOCTAVE;
extern std::string DirectoryMATLAB;
extern std::string DirectorySTATA;
}  // namespace GLOBAL

// The value of a directory setting that has not been set.
inline const std::string DEFAULT_STRING = "__Tavix_SYSTEM_DEFAULT_STRING___";

}  // namespace Tavix_SYSTEM_NAMESPACE
