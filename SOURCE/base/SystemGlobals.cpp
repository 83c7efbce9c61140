// Program-wide settings, with their values before the settings file is read.
#include "SystemGlobals.h"

namespace Tavix_SYSTEM_NAMESPACE {

bool RUN_GUI = false;
std::string TAVIX_HOME;
std::string TAVIX_SYSTEM;

namespace GLOBAL {
std::string DirectoryJAGS = DEFAULT_STRING;
std::string DirectoryBUGS = DEFAULT_STRING;
std::string DirectorySTAN = DEFAULT_STRING;
std::string DirectoryR = DEFAULT_STRING;
std::string DirectoryOCTAVE = DEFAULT_STRING;
std::string DirectoryMATLAB = DEFAULT_STRING;
std::string DirectorySTATA = DEFAULT_STRING;
}  // namespace GLOBAL

}  // namespace Tavix_SYSTEM_NAMESPACE
