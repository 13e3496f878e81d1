// Property-list files: reading with format detection, and atomic writing
// (temporary file beside the target, synced, then renamed over it).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <random>
#include <string>

#include "tarn/platform/plist_file.h"

namespace tarn::plist {
namespace {

std::string systemReason(const std::string& what, int error) {
  return what + ": " + std::strerror(error);
}

// Closes a descriptor on every path out of a scope.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  int get() const { return fd_; }
  // Closes now and reports the result (a failed close can mean lost data).
  int close() {
    const int result = ::close(fd_);
    fd_ = -1;
    return result;
  }

 private:
  int fd_;
};

std::string readWholeFile(const std::string& path) {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) throw FileError(path, systemReason("cannot open", errno));
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) throw FileError(path, systemReason("cannot stat", errno));
  if (S_ISDIR(status.st_mode)) throw FileError(path, "is a directory");
  std::string bytes;
  bytes.resize(status.st_size > 0 ? static_cast<std::size_t>(status.st_size) : 4096);
  std::size_t used = 0;
  for (;;) {
    if (used == bytes.size()) bytes.resize(bytes.size() * 2);
    const ssize_t count = ::read(file.get(), bytes.data() + used, bytes.size() - used);
    if (count < 0) {
      if (errno == EINTR) continue;
      throw FileError(path, systemReason("cannot read", errno));
    }
    if (count == 0) break;
    used += static_cast<std::size_t>(count);
  }
  bytes.resize(used);
  return bytes;
}

bool isXmlStart(std::string_view bytes) {
  // Byte-order marks: UTF-8, UTF-16 either way, UTF-32 either way.
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF")
    bytes.remove_prefix(3);
  else if (bytes.size() >= 2 && ((bytes[0] == '\xFE' && bytes[1] == '\xFF') ||
                                 (bytes[0] == '\xFF' && bytes[1] == '\xFE'))) {
    return true;
  } else if (bytes.size() >= 2 && (bytes[0] == '\0' || bytes[1] == '\0')) {
    return true;  // UTF-16 or UTF-32 without a mark; pugixml sorts it out
  }
  std::size_t i = 0;
  while (i < bytes.size() &&
         (bytes[i] == ' ' || bytes[i] == '\t' || bytes[i] == '\n' || bytes[i] == '\r')) {
    ++i;
  }
  return i < bytes.size() && bytes[i] == '<';
}

void checkFormat(std::string_view bytes, const std::string& name) {
  if (bytes.empty()) throw FileError(name, "empty file");
  if (!LooksBinary(bytes) && !isXmlStart(bytes)) {
    throw FileError(name, "not a property list (neither \"bplist\" nor XML)");
  }
}

// A name for the temporary file that no other writer picks: the target's
// name, the process id, a counter and a random number.
std::string temporaryPath(const std::string& path) {
  static std::atomic<unsigned> counter{0};
  thread_local std::mt19937_64 random{std::random_device{}()};
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
  return directory + "." + base + ".tmp-" + std::to_string(::getpid()) + "-" +
         std::to_string(counter++) + "-" + std::to_string(random() % 1000000007);
}

// Returns 0, or the errno of the write that failed.
int writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

void syncDirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string directory =
      slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
  FileDescriptor fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // Best effort: the rename has happened; a directory that cannot be synced
  // (some file systems refuse) does not undo it.
  if (fd.get() >= 0) ::fsync(fd.get());
}

void writeAtomically(const std::string& path, std::string_view bytes) {
  std::string temporary;
  int fd = -1;
  for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
    temporary = temporaryPath(path);
    fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && errno != EEXIST) {
      throw FileError(path, systemReason("cannot create a temporary file beside it", errno));
    }
  }
  if (fd < 0) throw FileError(path, "cannot find a free temporary file name beside it");
  FileDescriptor file(fd);
  try {
    // Keep the permissions of the file being replaced.
    struct stat status {};
    // Keeping them is a courtesy: a file we may not chmod is still written.
    if (::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        ::fchmod(file.get(), status.st_mode & 07777) != 0) {
      errno = 0;
    }
    if (const int error = writeAll(file.get(), bytes); error != 0) {
      throw FileError(path, systemReason("cannot write", error));
    }
    if (::fsync(file.get()) != 0) throw FileError(path, systemReason("cannot sync", errno));
    if (file.close() != 0) throw FileError(path, systemReason("cannot close", errno));
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
      throw FileError(path, systemReason("cannot replace", errno));
    }
  } catch (...) {
    ::unlink(temporary.c_str());
    throw;
  }
  syncDirectoryOf(path);
}

}  // namespace

Value Parse(std::string_view bytes, const std::string& name) {
  checkFormat(bytes, name);
  return LooksBinary(bytes) ? ParseBinary(bytes, name) : ParseXml(bytes, name);
}

Value ReadFile(const std::string& path) {
  std::string bytes = readWholeFile(path);
  checkFormat(bytes, path);
  if (LooksBinary(bytes)) return ParseBinary(bytes, path);
  return ParseXmlInPlace(bytes, path);
}

void WriteFile(const std::string& path, const Value& value, Format format) {
  std::string bytes;
  try {
    bytes = format == Format::Xml ? ToXml(value) : ToBinary(value);
  } catch (const FileError& error) {
    throw FileError(path, error.reason());
  }
  writeAtomically(path, bytes);
}

void WriteBytesAtomically(const std::string& path, std::string_view bytes) {
  writeAtomically(path, bytes);
}

}  // namespace tarn::plist
