#include "tarn/account/account_resources.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <vector>

#include "tarn/platform/log.h"

namespace tarn {

namespace {

struct ResourceCache {
  std::mutex mutex;
  std::optional<std::string> directory;
  std::map<std::string, std::optional<plist::Data>, std::less<>> images;
};

ResourceCache& Cache() {
  static ResourceCache cache;
  return cache;
}

std::vector<std::string> SearchDirectories(const std::optional<std::string>& chosen) {
  if (chosen) return {*chosen};
  std::vector<std::string> directories;
  if (const char* fromEnvironment = std::getenv("TARN_RESOURCE_DIR")) {
    directories.emplace_back(fromEnvironment);
  }
#ifdef TARN_RESOURCE_DIR
  directories.emplace_back(TARN_RESOURCE_DIR);
#endif
#ifdef TARN_INSTALLED_RESOURCE_DIR
  directories.emplace_back(TARN_INSTALLED_RESOURCE_DIR);
#endif
  return directories;
}

std::optional<plist::Data> ReadWholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  plist::Data bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad() || bytes.empty()) return std::nullopt;
  return bytes;
}

}  // namespace

std::optional<plist::Data> ImageResource(std::string_view name) {
  ResourceCache& cache = Cache();
  std::lock_guard lock(cache.mutex);
  if (auto known = cache.images.find(name); known != cache.images.end()) return known->second;
  std::optional<plist::Data> image;
  std::string places;
  for (const std::string& directory : SearchDirectories(cache.directory)) {
    image = ReadWholeFile(directory + "/" + std::string(name) + ".tiff");
    if (image) break;
    places += places.empty() ? directory : ", " + directory;
  }
  if (!image) {
    Log("Image resource " + std::string(name) + ".tiff not found in " +
        (places.empty() ? std::string("any resource folder") : places) +
        "; the account keeps no icon.");
  }
  cache.images.emplace(std::string(name), image);
  return image;
}

void SetResourceDirectory(std::optional<std::string> directory) {
  ResourceCache& cache = Cache();
  std::lock_guard lock(cache.mutex);
  cache.directory = std::move(directory);
  cache.images.clear();
}

}  // namespace tarn
