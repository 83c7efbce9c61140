// The batch front end: unreadable scripts, exit statuses, settings and the launching directory.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>
#include <fstream>

#include "BatchRunner.h"
#include "RecordingSink.h"
#include "SystemGlobals.h"
#include "TavixSettings.h"

namespace fs = std::filesystem;

namespace {

struct BatchFixture : testing::Test {
  std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
  Session session;
  fs::path dir;
  fs::path startDir = fs::current_path();

  void SetUp() override {
    session.dispatcher = EventDispatcher(sink);
    dir = fs::temp_directory_path() /
          ("tavix_batch_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(dir);
    fs::create_directories(dir);
  }
  void TearDown() override {
    fs::current_path(startDir);
    fs::remove_all(dir);
  }
  void Write(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
};

}  // namespace

TEST_F(BatchFixture, ScriptsThatCannotBeOpenedOrReadExitWithStatusTwo) {
  const std::string missing = (dir / "missing.tvx").string();
  EXPECT_EQ(RunBatchScript(session, missing), kBatchUnreadableScript);
  EXPECT_EQ(sink->Transcript(), "Unable to open file " + missing + ".\n");
  sink->Clear();
  // A directory opens but cannot be read.
  EXPECT_EQ(RunBatchScript(session, dir.string()), kBatchUnreadableScript);
  EXPECT_EQ(sink->Transcript(), "Unable to read from file '" + dir.string() + "'.\n");
}

TEST_F(BatchFixture, ExitStatusSaysWhetherTheScriptRanToTheEnd) {
  Write(dir / "good.tvx", "// nothing to do\n");
  Write(dir / "bad.tvx", "\nx = nope;\n");
  EXPECT_EQ(RunBatchScript(session, (dir / "good.tvx").string()), kBatchSuccess);
  EXPECT_EQ(RunBatchScript(session, (dir / "bad.tvx").string()), kBatchScriptFailed);
  // The input name is the path in double quotes.
  EXPECT_NE(sink->Errors().find("In input \"" + (dir / "bad.tvx").string() + "\", line 2"),
            std::string::npos);
}

TEST_F(BatchFixture, SettingsFileIsReadFromTheProgramDirectory) {
  InitializeBatch(session, dir.string());
  EXPECT_EQ(sink->Transcript(),
            "\n\nWARNING: The initialization file could not be found.\n"
            "         Some aspects of the program may not function properly.\n\n");
  // With no installation directory in it, the program's own directory is home.
  EXPECT_EQ(Tavix_SYSTEM_NAMESPACE::TAVIX_HOME, dir.string());
  sink->Clear();

  TavixSettings settings;
  settings.installationDirectory = "/opt/tavix";
  settings.lastWorkingDirectory = "/";  // ignored by a batch run
  ASSERT_TRUE(settings.Write((dir / "Tavix.init").string()));
  InitializeBatch(session, dir.string());
  EXPECT_EQ(sink->Transcript(), "");
  EXPECT_EQ(session.installDir, "/opt/tavix");
  EXPECT_EQ(fs::current_path(), startDir);
}

TEST_F(BatchFixture, LaunchDirectoryFileIsHonouredWhenItNamesADirectory) {
  TavixSettings().Write((dir / "Tavix.init").string());
  const fs::path target = dir / "work";
  fs::create_directories(target);
  fs::current_path(dir);

  Write(dir / "launchDir.txt", (dir / "absent").string() + "\n");
  InitializeBatch(session, dir.string());
  EXPECT_EQ(fs::current_path(), dir);  // a directory that does not exist changes nothing
  EXPECT_EQ(sink->Transcript(), "");   // and the current directory is usable: no warning

  std::string windowsStyle = target.string();
  std::replace(windowsStyle.begin(), windowsStyle.end(), '/', '\\');
  Write(dir / "launchDir.txt", windowsStyle + "\r\n");
  InitializeBatch(session, dir.string());
  EXPECT_EQ(fs::current_path(), target);
}

TEST_F(BatchFixture, CtrlCStopsTheScriptWithAMessageAndKeepsItsOutput) {
  Write(dir / "endless.tvx", "print(\"started\\n\");\nn = 0;\nwhile (n >= 0)\n  n = n + 1;\nend\n");
  InstallInterruptHandler(session);
  std::thread user([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::raise(SIGINT);
  });
  const int status = RunBatchScript(session, (dir / "endless.tvx").string());
  user.join();
  std::signal(SIGINT, SIG_DFL);
  EXPECT_EQ(status, kBatchInterrupted);
  EXPECT_EQ(sink->Transcript(), "started\nOperation interrupted.\n\n\nTavix is exiting...\n");
}

TEST_F(BatchFixture, CtrlCEndsAShellCommandThatWouldRunForLong) {
  Write(dir / "waits.tvx", "system(\"echo started; sleep 1000\");\nprint(\"not reached\");\n");
  InstallInterruptHandler(session);
  std::thread user([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    std::raise(SIGINT);
  });
  const int status = RunBatchScript(session, (dir / "waits.tvx").string());
  user.join();
  std::signal(SIGINT, SIG_DFL);
  EXPECT_EQ(status, kBatchInterrupted);
  EXPECT_EQ(sink->Transcript(),
            "Output from system console:\n\nstarted\nOperation interrupted.\n\n\nTavix is exiting...\n");
}
