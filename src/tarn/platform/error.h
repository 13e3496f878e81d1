// The one exception type of the library's file and parsing layer: a file that
// cannot be read or written. Model code never throws for bad data.
#pragma once

#include <stdexcept>
#include <string>

namespace tarn {

class FileError : public std::runtime_error {
 public:
  // The message names the file and the reason: "<path>: <reason>".
  FileError(const std::string& path, const std::string& reason)
      : std::runtime_error(path + ": " + reason), path_(path), reason_(reason) {}
  const std::string& path() const { return path_; }
  const std::string& reason() const { return reason_; }

 private:
  std::string path_;
  std::string reason_;
};

}  // namespace tarn
