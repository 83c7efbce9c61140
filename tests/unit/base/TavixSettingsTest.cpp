// The settings file: round trip, flag reading, short files, and the default file that ships.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "SystemGlobals.h"
#include "TavixSettings.h"

namespace {

std::string TempFile(const std::string& name) {
  return (std::filesystem::temp_directory_path() / ("tavix_settings_" + name)).string();
}

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

TEST(TavixSettings, WriteThenReadGivesTheSameSettings) {
  TavixSettings written;
  written.installationDirectory = "/opt/tavix";
  written.systemDirectory = "/opt/tavix/System Files";
  written.lastWorkingDirectory = "/home/user/work";
  written.directoryJAGS = "/usr/bin";
  written.directorySTAN = "/opt/cmdstan";
  written.flags[TavixSettings::PromptSaveWorkspace] = false;
  written.flags[TavixSettings::ChangeDirOnExport] = true;
  written.flags[TavixSettings::ShowHelpOnStartup] = true;
  const std::string path = TempFile("roundtrip");
  ASSERT_TRUE(written.Write(path));

  TavixSettings read;
  ASSERT_TRUE(read.Read(path));
  EXPECT_EQ(read, written);
  // 19 entries of two lines each, comment lines exactly as named.
  const std::string text = ReadAll(path);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 38);
  EXPECT_EQ(text.rfind("# Installation directory\n/opt/tavix\n# System directory\n", 0), 0u);
  EXPECT_NE(text.find("# Show help on startup\n1\n"), std::string::npos);
  std::filesystem::remove(path);
}

TEST(TavixSettings, DirectoriesAreWrittenWithForwardSlashesAndFlagsReadOnlyFromOne) {
  TavixSettings written;
  written.directoryR = "C:\\Program Files\\R";
  const std::string path = TempFile("slashes");
  ASSERT_TRUE(written.Write(path));
  std::string text = ReadAll(path);
  EXPECT_NE(text.find("# R directory\nC:/Program Files/R\n"), std::string::npos);

  // "true" is not "1": only the exact text 1 reads as true; a CR line end is tolerated.
  const auto at = text.find("# Show help on startup\n");
  text.replace(at, std::string::npos, "# Show help on startup\ntrue\n");
  const auto prompt = text.find("# Prompt to save scripts on exit\n");
  text.replace(prompt, std::string("# Prompt to save scripts on exit\n1\n").size(),
               "# Prompt to save scripts on exit\n1\r\n");
  std::ofstream(path, std::ios::binary) << text;
  TavixSettings read;
  read.flags[TavixSettings::ShowHelpOnStartup] = true;
  ASSERT_TRUE(read.Read(path));
  EXPECT_FALSE(read.flags[TavixSettings::ShowHelpOnStartup]);
  EXPECT_TRUE(read.flags[TavixSettings::PromptSaveScripts]);
  EXPECT_EQ(read.directoryR, "C:/Program Files/R");
  std::filesystem::remove(path);
}

TEST(TavixSettings, MissingOrShortFilesKeepWhatIsNotThere) {
  TavixSettings settings;
  settings.directoryJAGS = "/kept";
  EXPECT_FALSE(settings.Read(TempFile("does_not_exist")));
  EXPECT_EQ(settings.directoryJAGS, "/kept");

  const std::string path = TempFile("short");
  std::ofstream(path) << "# Installation directory\n/here\n# System directory\n";
  ASSERT_TRUE(settings.Read(path));
  EXPECT_EQ(settings.installationDirectory, "/here");
  EXPECT_EQ(settings.systemDirectory, "");  // a comment line without its value is ignored
  EXPECT_EQ(settings.directoryJAGS, "/kept");
  std::filesystem::remove(path);
}

TEST(TavixSettings, TheShippedFileIsWhatAFreshInstallationWrites) {
  const std::string path = TempFile("fresh");
  ASSERT_TRUE(TavixSettings().Write(path));
  EXPECT_EQ(ReadAll(path), ReadAll(TAVIX_SOURCE_DIR "/SOURCE/app/Tavix.init"));
  std::filesystem::remove(path);
}

TEST(TavixSettings, ApplyToGlobalsSetsHomeAndEngineDirectories) {
  TavixSettings settings;
  settings.installationDirectory = "/home/tavix";
  settings.directoryOCTAVE = "/usr/bin";
  settings.ApplyToGlobals();
  EXPECT_EQ(Tavix_SYSTEM_NAMESPACE::TAVIX_HOME, "/home/tavix");
  EXPECT_EQ(Tavix_SYSTEM_NAMESPACE::GLOBAL::DirectoryOCTAVE, "/usr/bin");
  EXPECT_EQ(Tavix_SYSTEM_NAMESPACE::GLOBAL::DirectorySTAN, Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING);
}
