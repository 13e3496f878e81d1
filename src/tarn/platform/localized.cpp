#include "tarn/platform/localized.h"

#include <libintl.h>

namespace tarn {

std::string Localized(std::string_view key) {
  if (key.empty()) return {};
  const std::string keyText(key);
  return dgettext("tarn", keyText.c_str());
}

}  // namespace tarn
