// TavixSettings: reading and writing the settings file.
#include "TavixSettings.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <algorithm>
#include <fstream>

#include "SystemGlobals.h"

namespace {

constexpr int kDirectoryEntries = 10;

std::string ForwardSlashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

}  // namespace

const std::array<const char*, 19> TavixSettings::kCommentLines = {
    "# Installation directory",
    "# System directory",
    "# Last working directory",
    "# JAGS directory",
    "# BUGS directory",
    "# Stan directory",
    "# R directory",
    "# GNU Octave directory",
    "# MATLAB directory",
    "# STATA directory",
    "# Prompt to save workspace on exit",
    "# Prompt to save scripts on exit",
    "# Change working dir on importing data",
    "# Change working dir on exporting",
    "# Change working dir on loading workspace",
    "# Change working dir on saving workspace",
    "# Change working dir on loading script",
    "# Change working dir on saving script",
    "# Show help on startup",
};

TavixSettings::TavixSettings()
    : directoryJAGS(Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING),
      directoryBUGS(Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING),
      directorySTAN(Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING),
      directoryR(Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING),
      directoryOCTAVE(Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING),
      directoryMATLAB(Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING),
      directorySTATA(Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING) {
  flags[PromptSaveWorkspace] = true;
  flags[PromptSaveScripts] = true;
}

bool TavixSettings::Read(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::array<std::string*, kDirectoryEntries> directories = {
      &installationDirectory, &systemDirectory, &lastWorkingDirectory, &directoryJAGS,
      &directoryBUGS,         &directorySTAN,   &directoryR,           &directoryOCTAVE,
      &directoryMATLAB,       &directorySTATA};
  std::string comment;
  std::string value;
  for (std::size_t entry = 0; entry < kCommentLines.size(); ++entry) {
    if (!std::getline(in, comment) || !std::getline(in, value)) break;
    if (!value.empty() && value.back() == '\r') value.pop_back();  // files edited on Windows
    if (entry < kDirectoryEntries) {
      *directories[entry] = value;
    } else {
      flags[entry - kDirectoryEntries] = (value == "1");
    }
  }
  return true;
}

bool TavixSettings::Write(const std::string& path) const {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) return false;
  const std::array<const std::string*, kDirectoryEntries> directories = {
      &installationDirectory, &systemDirectory, &lastWorkingDirectory, &directoryJAGS,
      &directoryBUGS,         &directorySTAN,   &directoryR,           &directoryOCTAVE,
      &directoryMATLAB,       &directorySTATA};
  for (std::size_t entry = 0; entry < kCommentLines.size(); ++entry) {
    out << kCommentLines[entry] << '\n';
    if (entry < kDirectoryEntries) {
      out << ForwardSlashes(*directories[entry]) << '\n';
    } else {
      out << (flags[entry - kDirectoryEntries] ? "1" : "0") << '\n';
    }
  }
  return static_cast<bool>(out.flush());
}

void TavixSettings::ApplyToGlobals() const {
  namespace sys = Tavix_SYSTEM_NAMESPACE;
  sys::TAVIX_HOME = installationDirectory;
  sys::TAVIX_SYSTEM = systemDirectory;
  sys::GLOBAL::DirectoryJAGS = directoryJAGS;
  sys::GLOBAL::DirectoryBUGS = directoryBUGS;
  sys::GLOBAL::DirectorySTAN = directorySTAN;
  sys::GLOBAL::DirectoryR = directoryR;
  sys::GLOBAL::DirectoryOCTAVE = directoryOCTAVE;
  sys::GLOBAL::DirectoryMATLAB = directoryMATLAB;
  sys::GLOBAL::DirectorySTATA = directorySTATA;
}

std::string TavixSettings::Folder(const std::string& programDirectory) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path program(programDirectory);
  const fs::path probe = program / ".tavix_write_test";
  if (std::FILE* f = std::fopen(probe.string().c_str(), "w")) {
    std::fclose(f);
    fs::remove(probe, error);
    return program.string();
  }
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  const fs::path folder = (xdg && *xdg) ? fs::path(xdg) / "tavix"
                          : home        ? fs::path(home) / ".config" / "tavix"
                                        : program;
  fs::create_directories(folder, error);
  if (!fs::exists(folder / "Tavix.init") && fs::exists(program / "Tavix.init")) {
    fs::copy_file(program / "Tavix.init", folder / "Tavix.init", error);
  }
  return folder.string();
}
