// User-visible texts go through the "tarn" gettext domain; without a
// catalogue the key itself is the text. Catalogues are read as UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace tarn {

// The translation of a key in the user's language, or the key itself.
std::string Localized(std::string_view key);

// Reads the catalogues from `directory` (<directory>/<locale>/LC_MESSAGES/tarn.mo)
// from now on. Without a call, the directory named by the TARN_LOCALEDIR
// environment variable is used when it exists, else the system's.
void SetLocalizationDirectory(const std::string& directory);

}  // namespace tarn
