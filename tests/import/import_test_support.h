// Helpers of the import tests: the value of an entry's key, and the shared
// corpus of real files (TARN_CORPUS_DIR in the environment, else the folder
// beside the project), which stays out of the repository.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tarn/platform/value.h"

namespace tarn::testing {

// The entry's value under `key`, or nil.
inline const plist::Value& Key(const plist::Value& entry, const char* key) {
  static const plist::Value nil;
  const plist::Value* found = entry.find(key);
  return found ? *found : nil;
}

inline std::filesystem::path CorpusDir() {
  if (const char* dir = std::getenv("TARN_CORPUS_DIR")) return dir;
  return TARN_CORPUS_DIR;
}

// The regular files of a folder, sorted; none when it is missing.
inline std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const auto& item : std::filesystem::directory_iterator(folder, error)) {
    if (item.is_regular_file()) files.push_back(item.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

inline std::string FileText(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace tarn::testing
