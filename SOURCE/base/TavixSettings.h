// TavixSettings: the settings file "Tavix.init", read and written by every front end.
#pragma once

#include <array>
#include <string>

// The 19 settings of the file, in file order. The file holds each as two lines, a comment line
// naming it and the value; readers rely only on position.
struct TavixSettings {
  enum Flag {
    PromptSaveWorkspace,
    PromptSaveScripts,
    ChangeDirOnImport,
    ChangeDirOnExport,
    ChangeDirOnLoadWorkspace,
    ChangeDirOnSaveWorkspace,
    ChangeDirOnLoadScript,
    ChangeDirOnSaveScript,
    ShowHelpOnStartup,
    FlagCount
  };

  std::string installationDirectory;
  std::string systemDirectory;
  std::string lastWorkingDirectory;
  std::string directoryJAGS;
  std::string directoryBUGS;
  std::string directorySTAN;
  std::string directoryR;
  std::string directoryOCTAVE;
  std::string directoryMATLAB;
  std::string directorySTATA;
  std::array<bool, FlagCount> flags{};

  // Settings as a fresh installation has them: directories empty, engines not set, flags off
  // except the prompts to save on exit.
  TavixSettings();

  // Reads the file; false when it cannot be opened (the settings are then unchanged). A value
  // line that is missing keeps its current value; a flag is true only when its line is "1".
  bool Read(const std::string& path);
  // Writes the file afresh; false when it cannot be written. Backslashes in directories are
  // written as forward slashes.
  bool Write(const std::string& path) const;

  // The folder of the settings file and the histories: the executable's folder when it is
  // writable (a build or a private copy), else the user's configuration folder, which starts
  // from the executable's settings file when it has none.
  static std::string Folder(const std::string& programDirectory);

  // Copies the directories into the program-wide globals.
  void ApplyToGlobals() const;

  // The comment line of each entry, as the file has it.
  static const std::array<const char*, 19> kCommentLines;

  bool operator==(const TavixSettings&) const = default;
};
