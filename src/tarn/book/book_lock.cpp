// Advisory locking of a book through a lock file beside it.

#include "tarn/book/book_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tarn/platform/error.h"

namespace tarn {

BookLock::BookLock(const std::string& bookPath) {
  const std::string path = LockPath(bookPath);
  fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd_ < 0)
    throw FileError(path, std::string("cannot make the lock file: ") + std::strerror(errno));
  while (::flock(fd_, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    const int error = errno;
    ::close(fd_);
    fd_ = -1;
    throw FileError(path, std::string("cannot lock: ") + std::strerror(error));
  }
}

BookLock::~BookLock() {
  // Closing the descriptor releases the lock. The file stays: removing it
  // would let a waiting command lock a file that a third no longer sees.
  if (fd_ >= 0) ::close(fd_);
}

}  // namespace tarn
