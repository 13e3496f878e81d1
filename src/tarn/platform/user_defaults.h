// The user's preferences that the model reads: "NSDecimalSeparator",
// "NSThousandsSeparator" and "NSShortDateFormatString". Initial values come
// from the C locale's numeric settings ("." and "," when it has none) and
// "%m/%d/%y"; hosts and tests change them with SetUserDefault.
#pragma once

#include <string>
#include <string_view>

namespace tarn {

// The value of a key; the empty string for a key that was never set.
std::string UserDefault(std::string_view key);
void SetUserDefault(std::string key, std::string value);
// Forgets every change and returns to the initial values (for tests and for
// hosts that reload the user's preferences).
void ResetUserDefaults();

}  // namespace tarn
