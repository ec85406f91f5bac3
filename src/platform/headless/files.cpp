// The headless host's file primitives on POSIX: status, folder creation, whole-file I/O, module path.
#include "platform/files.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>

namespace platform {

FileKind fileKind(const std::string& path) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return FileKind::Missing;
  return S_ISDIR(st.st_mode) ? FileKind::Folder : FileKind::File;
}

bool makeFolder(const std::string& path) { return ::mkdir(path.c_str(), 0777) == 0 || errno == EEXIST; }

namespace {

// strerror_r comes in two forms: the GNU one returns the text, the POSIX one fills the buffer.
[[maybe_unused]] const char* errorTextOf(const char* text, const char*) { return text; }
[[maybe_unused]] const char* errorTextOf(int failed, const char* buffer) { return failed ? "unknown error" : buffer; }

void setError(std::string* error, const std::string& path, const char* what) {
  if (error) *error = path + ": " + what + ": " + systemErrorText(errno);
}

}  // namespace

std::string systemErrorText(int error) {
  char buffer[256] = {};
  return errorTextOf(::strerror_r(error, buffer, sizeof buffer), buffer);
}

bool readWholeFile(const std::string& path, std::string& contents, std::string* error) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    setError(error, path, "cannot open");
    return false;
  }
  contents.clear();
  struct stat st;
  if (::fstat(fd, &st) == 0 && st.st_size > 0) contents.reserve(static_cast<std::size_t>(st.st_size));
  char buf[1 << 16];
  for (;;) {
    const ssize_t n = ::read(fd, buf, sizeof buf);
    if (n < 0) {
      if (errno == EINTR) continue;
      setError(error, path, "cannot read");
      ::close(fd);
      return false;
    }
    if (n == 0) break;
    contents.append(buf, static_cast<std::size_t>(n));
  }
  ::close(fd);
  return true;
}

int openRegularFile(const std::string& path, long long& size, std::string* error) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  struct stat st;
  if (fd < 0 || ::fstat(fd, &st) != 0) {
    setError(error, path, "cannot open the file");
    if (fd >= 0) ::close(fd);
    return -1;
  }
  const char* kind = S_ISREG(st.st_mode)    ? nullptr
                     : S_ISDIR(st.st_mode)  ? "a folder"
                     : S_ISFIFO(st.st_mode) ? "a FIFO"
                     : S_ISCHR(st.st_mode)  ? "a character device"
                     : S_ISBLK(st.st_mode)  ? "a block device"
                                            : "a socket or other special file";
  if (kind) {
    if (error) *error = path + ": not a regular file (" + kind + ")";
    ::close(fd);
    return -1;
  }
  size = st.st_size;
  return fd;
}

bool readFileHead(const std::string& path, std::size_t count, std::string& bytes) {
  long long size = 0;
  const int fd = openRegularFile(path, size);
  if (fd < 0) return false;
  bytes.assign(count, '\0');
  std::size_t got = 0;
  while (got < count) {
    const ssize_t n = ::read(fd, bytes.data() + got, count - got);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    got += static_cast<std::size_t>(n);
  }
  bytes.resize(got);
  ::close(fd);
  return true;
}

bool writeWholeFile(const std::string& path, std::string_view contents, std::string* error) {
  struct stat st;
  mode_t mode = 0666;
  if (::stat(path.c_str(), &st) == 0) {
    // A read-only file is not replaced, whoever runs the program (root passes access checks).
    if ((st.st_mode & S_IWUSR) == 0) {
      errno = EACCES;
      setError(error, path, "file is read-only");
      return false;
    }
    mode = st.st_mode & 07777;
  }
  static std::atomic<unsigned> counter{0};
  const std::string tmp = path + ".tmp" + std::to_string(::getpid()) + "_" + std::to_string(counter++);
  const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (fd < 0) {
    setError(error, path, "cannot create a file beside it");
    return false;
  }
  const char* p = contents.data();
  std::size_t left = contents.size();
  bool ok = true;
  while (left > 0) {
    const ssize_t n = ::write(fd, p, left);
    if (n < 0) {
      if (errno == EINTR) continue;
      ok = false;
      break;
    }
    p += n;
    left -= static_cast<std::size_t>(n);
  }
  if (ok && ::fsync(fd) != 0) ok = false;
  if (ok) ::fchmod(fd, mode);
  if (::close(fd) != 0) ok = false;
  // The temporary file goes before the error text is built: building it may throw when memory runs out.
  if (!ok) {
    const int e = errno;
    ::unlink(tmp.c_str());
    errno = e;
    setError(error, path, "cannot write");
    return false;
  }
  if (::rename(tmp.c_str(), path.c_str()) != 0) {
    const int e = errno;
    ::unlink(tmp.c_str());
    errno = e;
    setError(error, path, "cannot replace");
    return false;
  }
  return true;
}

std::string moduleFilePath() {
  // The host is a library of its own: the module asking is the one its caller's code lies in.
  Dl_info info{};
  void* const caller = __builtin_extract_return_addr(__builtin_return_address(0));
  if (::dladdr(caller, &info) != 0 && info.dli_fname && info.dli_fname[0]) {
    char resolved[4096];
    if (::realpath(info.dli_fname, resolved)) return resolved;
    return info.dli_fname;
  }
  char exe[4096];
  const ssize_t n = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
  if (n > 0) return std::string(exe, static_cast<std::size_t>(n));
  return {};
}

}  // namespace platform
