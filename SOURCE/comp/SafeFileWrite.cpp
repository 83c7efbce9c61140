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

// An output buffer over a file descriptor that remembers whether any write failed.
class DescriptorBuffer : public std::streambuf {
public:
  explicit DescriptorBuffer(int fd) : m_fd(fd), m_buffer(1 << 16) { setp(m_buffer.data(), m_buffer.data() + m_buffer.size()); }
  bool Failed() const { return m_failed; }

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
    const char* p = pbase();
    while (p < pptr()) {
      const ssize_t n = ::write(m_fd, p, static_cast<std::size_t>(pptr() - p));
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) {
        m_failed = true;
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
};

}  // namespace

std::string SafeFileWrite(const std::string& target, const std::function<bool(std::ostream&)>& write) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path path(target);
  // Through symbolic links to the file they name (which may not exist yet).
  if (fs::is_symlink(fs::symlink_status(path, error))) {
    path = fs::weakly_canonical(path, error);
    if (error) return "the link \"" + target + "\" cannot be followed";
  }
  const fs::file_status status = fs::status(path, error);
  const bool exists = fs::exists(status);
  if (exists && !fs::is_regular_file(status)) return "\"" + target + "\" is not a regular file";

  fs::path directory = path.parent_path();
  if (directory.empty()) directory = ".";
  std::string name = (directory / ("." + path.filename().string() + ".XXXXXX")).string();
  std::vector<char> pattern(name.begin(), name.end());
  pattern.push_back('\0');
  const int fd = ::mkstemp(pattern.data());
  if (fd < 0) return std::string("a temporary file cannot be created beside it (") + std::strerror(errno) + ")";
  const std::string temporary(pattern.data());
  auto fail = [&](const std::string& why) {
    ::close(fd);
    ::unlink(temporary.c_str());
    return why;
  };
  // The new file gets the old one's permissions, or the usual ones for a new file.
  struct stat old {};
  mode_t mode = 0666;
  if (exists && ::stat(path.c_str(), &old) == 0) {
    mode = old.st_mode & 07777;
  } else {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode &= ~mask;
  }
  ::fchmod(fd, mode);

  DescriptorBuffer buffer(fd);
  std::ostream out(&buffer);
  const bool written = write(out);
  out.flush();
  if (!written) return fail("writing it failed");
  if (!out || buffer.Failed()) return fail(std::string("writing it failed (") + std::strerror(errno) + ")");
  if (::fsync(fd) != 0) return fail(std::string("it cannot be flushed to disk (") + std::strerror(errno) + ")");
  if (::close(fd) != 0) {
    ::unlink(temporary.c_str());
    return std::string("it cannot be closed (") + std::strerror(errno) + ")";
  }
  if (::rename(temporary.c_str(), path.c_str()) != 0) {
    const std::string why = std::strerror(errno);
    ::unlink(temporary.c_str());
    return "it cannot replace the old file (" + why + ")";
  }
  return "";
}
