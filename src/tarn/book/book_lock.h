// The lock a command holds on a book while it reads, changes and writes it,
// so that two changes made at once to one book both land (the second waits
// for the first and then reads what the first wrote). It is an advisory
// lock (flock) on a small file beside the book, never on the book itself,
// which the atomic save replaces under its name.
#pragma once

#include <string>

namespace tarn {

class BookLock {
 public:
  // Takes the lock on `bookPath`, waiting for another holder to let go.
  // Throws FileError naming the lock file when it cannot be made.
  explicit BookLock(const std::string& bookPath);
  ~BookLock();
  BookLock(const BookLock&) = delete;
  BookLock& operator=(const BookLock&) = delete;

  static std::string LockPath(const std::string& bookPath) { return bookPath + ".lock"; }

 private:
  int fd_ = -1;
};

}  // namespace tarn
