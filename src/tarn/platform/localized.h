// User-visible texts go through the "tarn" gettext domain; without a
// catalogue the key itself is the text.
#pragma once

#include <string>
#include <string_view>

namespace tarn {

std::string Localized(std::string_view key);

}  // namespace tarn
