// A scratch directory for property-list files, removed with its contents.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>

namespace tarn::plist {

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tarn-plist-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  ~TemporaryDirectory() {
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add);
    std::filesystem::remove_all(path_);
  }
  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }
  std::size_t entryCount() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path_),
                                                  std::filesystem::directory_iterator()));
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tarn::plist
