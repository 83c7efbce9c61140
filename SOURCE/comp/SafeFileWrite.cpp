// SafeFileWrite: mkstemp beside the target, a buffered stream over the descriptor, fsync, rename.
#include "SafeFileWrite.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <streambuf>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// As many links in a row as the system itself follows before it gives up.
constexpr int kMaxLinksFollowed = 40;

// An output buffer over a file descriptor that remembers whether any write failed.
class DescriptorBuffer : public std::streambuf {
public:
  explicit DescriptorBuffer(int fd) : m_fd(fd), m_buffer(1 << 16) { setp(m_buffer.data(), m_buffer.data() + m_buffer.size()); }
  bool Failed() const { return m_failed; }
  int Error() const { return m_error; }

protected:
  int_type overflow(int_type c) override {
    if (!Flush()) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }
  int sync() override { return Flush() ? 0 : -1; }

private:
  bool Flush() {
    if (m_failed) return false;
    const char* p = pbase();
    while (p < pptr()) {
      const ssize_t n = ::write(m_fd, p, static_cast<std::size_t>(pptr() - p));
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) {
        m_failed = true;
        m_error = n < 0 ? errno : ENOSPC;
        return false;
      }
      p += n;
    }
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    return true;
  }

  int m_fd;
  std::vector<char> m_buffer;
  bool m_failed = false;
  int m_error = 0;
};

// The temporary file until it is renamed: closed and removed when anything fails, an exception
// of the writer included.
class TemporaryFile {
public:
  TemporaryFile(int fd, std::string path) : m_fd(fd), m_path(std::move(path)) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (m_fd >= 0) ::close(m_fd);
    if (!m_path.empty()) ::unlink(m_path.c_str());
  }
  int Descriptor() const { return m_fd; }
  const std::string& Path() const { return m_path; }
  // Closes the descriptor; false (errno set) when the system reports a failure.
  bool Close() {
    const int fd = m_fd;
    m_fd = -1;
    return ::close(fd) == 0;
  }
  // The file now has its final name: nothing to remove any more.
  void Keep() { m_path.clear(); }

private:
  int m_fd;
  std::string m_path;
};

std::string SystemError(const std::string& what, int error) { return what + " (" + std::strerror(error) + ")"; }

// The file a path names once every symbolic link on its last component is followed (a link may
// name a file that does not exist yet); "" with `problem` set when the links go round in a loop
// or cannot be read.
fs::path FollowLinks(const std::string& target, std::string& problem) {
  fs::path path(target);
  for (int hops = 0;; ++hops) {
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(path, error))) return path;
    if (hops == kMaxLinksFollowed) {
      problem = "the link \"" + target + "\" cannot be followed (too many levels of links)";
      return {};
    }
    const fs::path next = fs::read_symlink(path, error);
    if (error) {
      problem = SystemError("the link \"" + target + "\" cannot be followed", error.value());
      return {};
    }
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
}

}  // namespace

std::string SafeFileWrite(const std::string& target, const std::function<bool(std::ostream&)>& write) {
  if (target.empty()) return "no file name was given";
  std::string problem;
  const fs::path path = FollowLinks(target, problem);
  if (!problem.empty()) return problem;
  if (path.filename().empty() || path.filename() == "." || path.filename() == "..") {
    return "\"" + target + "\" is not a regular file";
  }
  struct stat old {};
  const bool exists = ::stat(path.c_str(), &old) == 0;
  if (exists && !S_ISREG(old.st_mode)) return "\"" + target + "\" is not a regular file";

  fs::path directory = path.parent_path();
  if (directory.empty()) directory = ".";
  const std::string name = (directory / ("." + path.filename().string() + ".XXXXXX")).string();
  std::vector<char> pattern(name.begin(), name.end());
  pattern.push_back('\0');
  const int fd = ::mkstemp(pattern.data());
  if (fd < 0) return SystemError("a temporary file cannot be created beside it", errno);
  TemporaryFile temporary(fd, pattern.data());

  // The new file keeps the old one's permissions and, where the system allows it (only the
  // superuser may give a file away), its owner; a new file gets the usual permissions.
  if (exists) {
    [[maybe_unused]] const int owned = ::fchown(fd, old.st_uid, old.st_gid);
    ::fchmod(fd, old.st_mode & 07777);
  } else {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
  }

  DescriptorBuffer buffer(fd);
  std::ostream out(&buffer);
  const bool written = write(out);
  out.flush();
  if (buffer.Failed()) return SystemError("writing it failed", buffer.Error());
  if (!written || !out) return "writing it failed";
  if (::fsync(fd) != 0) return SystemError("it cannot be flushed to disk", errno);
  if (!temporary.Close()) return SystemError("it cannot be closed", errno);
  if (::rename(temporary.Path().c_str(), path.c_str()) != 0) {
    return SystemError("it cannot replace the old file", errno);
  }
  temporary.Keep();
  // The rename itself reaches the disk with the directory.
  const int dirFd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY);
  if (dirFd >= 0) {
    ::fsync(dirFd);
    ::close(dirFd);
  }
  return "";
}
