#include "tarn/platform/localized.h"

#include <libintl.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>

namespace tarn {
namespace {

constexpr const char* kDomain = "tarn";

std::once_flag& bindingOnce() {
  static std::once_flag once;
  return once;
}

void bindDefaultDirectory() {
  if (const char* directory = std::getenv("TARN_LOCALEDIR")) {
    std::error_code error;
    if (std::filesystem::is_directory(directory, error)) bindtextdomain(kDomain, directory);
  }
  // Translations come back as UTF-8 whatever the locale's codeset.
  bind_textdomain_codeset(kDomain, "UTF-8");
}

}  // namespace

std::string Localized(std::string_view key) {
  if (key.empty()) return {};
  std::call_once(bindingOnce(), bindDefaultDirectory);
  const std::string keyText(key);
  return dgettext(kDomain, keyText.c_str());
}

void SetLocalizationDirectory(const std::string& directory) {
  std::call_once(bindingOnce(), bindDefaultDirectory);
  bindtextdomain(kDomain, directory.c_str());
}

}  // namespace tarn
