// Files written through a temporary file: links written through, other targets refused, nothing
// left behind, nothing half-written.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

#include "SafeFileWrite.h"

namespace fs = std::filesystem;

namespace {

std::string Contents(const fs::path& file) {
  std::ifstream in(file);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

std::set<std::string> FilesIn(const fs::path& directory) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.insert(entry.path().filename().string());
  return names;
}

std::function<bool(std::ostream&)> Text(const std::string& s) {
  return [s](std::ostream& out) { return static_cast<bool>(out << s); };
}

// A directory of its own for each test and process, removed at the end.
class SafeFileWrite_ : public ::testing::Test {
protected:
  void SetUp() override {
    dir = fs::temp_directory_path() /
          ("tavix_safe_write_" + std::to_string(::getpid()) + "_" +
           ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir);
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }
  fs::path dir;
};

}  // namespace

TEST_F(SafeFileWrite_, ReplacesRegularFilesAndLeavesOthersFilesAlone) {
  EXPECT_EQ(SafeFileWrite((dir / "a.txt").string(), Text("first")), "");
  EXPECT_EQ(SafeFileWrite((dir / "a.txt").string(), Text("second")), "");
  EXPECT_EQ(Contents(dir / "a.txt"), "second");
  // Files named as the temporary files are named are a user's own: never touched.
  std::ofstream(dir / ".a.txt.XXXXXX") << "mine";
  std::ofstream(dir / ".a.txt.tmp123") << "mine too";
  std::ofstream(dir / "a.txt.partial") << "and this";
  EXPECT_EQ(SafeFileWrite((dir / "a.txt").string(), Text("third")), "");
  EXPECT_EQ(Contents(dir / "a.txt"), "third");
  EXPECT_EQ(Contents(dir / ".a.txt.XXXXXX"), "mine");
  EXPECT_EQ(Contents(dir / ".a.txt.tmp123"), "mine too");
  EXPECT_EQ(Contents(dir / "a.txt.partial"), "and this");
  EXPECT_EQ(FilesIn(dir), (std::set<std::string>{"a.txt", ".a.txt.XXXXXX", ".a.txt.tmp123", "a.txt.partial"}));

  // The old file's permissions stay.
  ::chmod((dir / "a.txt").c_str(), 0640);
  EXPECT_EQ(SafeFileWrite((dir / "a.txt").string(), Text("fourth")), "");
  struct stat st {};
  ASSERT_EQ(::stat((dir / "a.txt").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
}

TEST_F(SafeFileWrite_, WritesThroughLinksToTheFileTheyName) {
  // A link to a file in another directory: the file there is replaced, the link stays.
  fs::create_directories(dir / "real");
  std::ofstream(dir / "real" / "a.txt") << "old";
  fs::create_symlink("real/a.txt", dir / "link.txt");
  EXPECT_EQ(SafeFileWrite((dir / "link.txt").string(), Text("through the link")), "");
  EXPECT_TRUE(fs::is_symlink(dir / "link.txt"));
  EXPECT_EQ(Contents(dir / "real" / "a.txt"), "through the link");
  EXPECT_EQ(FilesIn(dir), (std::set<std::string>{"real", "link.txt"}));
  EXPECT_EQ(FilesIn(dir / "real"), (std::set<std::string>{"a.txt"}));

  // A chain of links, and a link to a file that does not exist yet.
  fs::create_symlink("link.txt", dir / "chain.txt");
  EXPECT_EQ(SafeFileWrite((dir / "chain.txt").string(), Text("chained")), "");
  EXPECT_EQ(Contents(dir / "real" / "a.txt"), "chained");
  fs::create_symlink(dir / "real" / "new.txt", dir / "dangling.txt");
  EXPECT_EQ(SafeFileWrite((dir / "dangling.txt").string(), Text("created")), "");
  EXPECT_TRUE(fs::is_symlink(dir / "dangling.txt"));
  EXPECT_EQ(Contents(dir / "real" / "new.txt"), "created");

  // Links that go round in a loop are refused, and nothing is created.
  fs::create_symlink("loop2", dir / "loop1");
  fs::create_symlink("loop1", dir / "loop2");
  EXPECT_EQ(SafeFileWrite((dir / "loop1").string(), Text("x")),
            "the link \"" + (dir / "loop1").string() + "\" cannot be followed (too many levels of links)");
  EXPECT_TRUE(fs::is_symlink(dir / "loop1"));
  EXPECT_EQ(FilesIn(dir).size(), 6u);
}

TEST_F(SafeFileWrite_, RefusesWhatIsNotARegularFile) {
  fs::create_directories(dir / "sub");
  EXPECT_EQ(SafeFileWrite((dir / "sub").string(), Text("x")), "\"" + (dir / "sub").string() + "\" is not a regular file");
  EXPECT_TRUE(fs::is_directory(dir / "sub"));
  EXPECT_EQ(SafeFileWrite("/dev/null", Text("x")), "\"/dev/null\" is not a regular file");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  // A pipe is refused without waiting for a reader.
  ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(SafeFileWrite((dir / "pipe").string(), Text("x")), "\"" + (dir / "pipe").string() + "\" is not a regular file");
  EXPECT_TRUE(fs::is_fifo(dir / "pipe"));
  // A link to a device is followed, and what it names refused.
  fs::create_symlink("/dev/null", dir / "null");
  EXPECT_NE(SafeFileWrite((dir / "null").string(), Text("x")), "");
  EXPECT_TRUE(fs::is_symlink(dir / "null"));
  EXPECT_NE(SafeFileWrite("", Text("x")), "");
  EXPECT_NE(SafeFileWrite((dir / "missing" / "b.txt").string(), Text("x")), "");
  EXPECT_EQ(FilesIn(dir), (std::set<std::string>{"sub", "pipe", "null"}));
}

TEST_F(SafeFileWrite_, FailuresLeaveTheOldFileWholeAndNothingBehind) {
  const std::string file = (dir / "a.txt").string();
  ASSERT_EQ(SafeFileWrite(file, Text("whole")), "");
  EXPECT_EQ(SafeFileWrite(file, [](std::ostream& out) {
              out << "partial";
              return false;
            }),
            "writing it failed");
  EXPECT_EQ(Contents(file), "whole");
  EXPECT_EQ(FilesIn(dir), (std::set<std::string>{"a.txt"}));
  // A writer that throws: the exception goes on, the temporary file goes.
  EXPECT_THROW(SafeFileWrite(file,
                             [](std::ostream& out) -> bool {
                               out << std::string(1 << 17, 'x');  // past the first buffer
                               throw std::runtime_error("stop");
                             }),
               std::runtime_error);
  EXPECT_EQ(Contents(file), "whole");
  EXPECT_EQ(FilesIn(dir), (std::set<std::string>{"a.txt"}));
}
