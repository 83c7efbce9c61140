// Files written through a temporary file: links written through, other targets refused, nothing
// left behind, nothing half-written.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "SafeFileWrite.h"

namespace fs = std::filesystem;

namespace {

std::string Contents(const fs::path& file) {
  std::ifstream in(file);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

std::size_t FilesIn(const fs::path& directory) {
  std::size_t n = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(directory)) ++n;
  return n;
}

}  // namespace

TEST(SafeFileWrite, ReplacesRegularFilesAndWritesThroughLinks) {
  const fs::path dir = fs::temp_directory_path() / "tavix_safe_write_test";
  fs::remove_all(dir);
  fs::create_directories(dir);
  const auto text = [](const std::string& s) { return [s](std::ostream& out) { return static_cast<bool>(out << s); }; };

  EXPECT_EQ(SafeFileWrite((dir / "a.txt").string(), text("first")), "");
  EXPECT_EQ(SafeFileWrite((dir / "a.txt").string(), text("second")), "");
  EXPECT_EQ(Contents(dir / "a.txt"), "second");
  // A user's file named like a temporary file of another program is left alone.
  std::ofstream(dir / "a.txt.partial") << "mine";
  fs::create_symlink(dir / "a.txt", dir / "link.txt");
  EXPECT_EQ(SafeFileWrite((dir / "link.txt").string(), text("through the link")), "");
  EXPECT_TRUE(fs::is_symlink(dir / "link.txt"));
  EXPECT_EQ(Contents(dir / "a.txt"), "through the link");
  EXPECT_EQ(Contents(dir / "a.txt.partial"), "mine");
  EXPECT_EQ(FilesIn(dir), 3u);

  // Not regular files: refused, and left as they were.
  fs::create_directories(dir / "sub");
  EXPECT_EQ(SafeFileWrite((dir / "sub").string(), text("x")), "\"" + (dir / "sub").string() + "\" is not a regular file");
  EXPECT_TRUE(fs::is_directory(dir / "sub"));
  EXPECT_NE(SafeFileWrite("/dev/null", text("x")), "");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));

  // A writer that fails leaves the old file whole and no temporary file behind.
  EXPECT_EQ(SafeFileWrite((dir / "a.txt").string(), [](std::ostream& out) {
              out << "partial";
              return false;
            }),
            "writing it failed");
  EXPECT_EQ(Contents(dir / "a.txt"), "through the link");
  EXPECT_EQ(FilesIn(dir), 4u);  // a.txt, a.txt.partial, link.txt, sub
  EXPECT_NE(SafeFileWrite((dir / "missing" / "b.txt").string(), text("x")), "");
  fs::remove_all(dir);
}
