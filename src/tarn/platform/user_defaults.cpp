#include "tarn/platform/user_defaults.h"

#include <clocale>
#include <map>
#include <mutex>

namespace tarn {
namespace {

// The C library's locale, as the host left it: localeconv() of the "C" locale
// has no thousands separator, so "," stands in.
std::map<std::string, std::string, std::less<>> initialDefaults() {
  std::string decimal = ".";
  std::string thousands = ",";
  if (const std::lconv* conventions = std::localeconv()) {
    if (conventions->decimal_point && *conventions->decimal_point) {
      decimal = conventions->decimal_point;
    }
    if (conventions->thousands_sep && *conventions->thousands_sep) {
      thousands = conventions->thousands_sep;
    }
  }
  return {{"NSDecimalSeparator", decimal},
          {"NSThousandsSeparator", thousands},
          {"NSShortDateFormatString", "%m/%d/%y"}};
}

struct Defaults {
  std::mutex mutex;
  std::map<std::string, std::string, std::less<>> values = initialDefaults();
};

Defaults& defaults() {
  static Defaults instance;
  return instance;
}

}  // namespace

std::string UserDefault(std::string_view key) {
  Defaults& store = defaults();
  std::lock_guard lock(store.mutex);
  auto found = store.values.find(key);
  return found == store.values.end() ? std::string() : found->second;
}

void SetUserDefault(std::string key, std::string value) {
  Defaults& store = defaults();
  std::lock_guard lock(store.mutex);
  store.values[std::move(key)] = std::move(value);
}

void ResetUserDefaults() {
  Defaults& store = defaults();
  std::lock_guard lock(store.mutex);
  store.values = initialDefaults();
}

}  // namespace tarn
