// The string encodings of the account file: the platform's encoding numbers
// (4 UTF-8, 5 ISO Latin 1, 10 UTF-16, 12 Windows 1252, 30 Mac Roman, ...)
// mapped to ICU converters.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarn {

using StringEncoding = std::uint32_t;

inline constexpr StringEncoding kASCIIStringEncoding = 1;
inline constexpr StringEncoding kUTF8StringEncoding = 4;
inline constexpr StringEncoding kISOLatin1StringEncoding = 5;
inline constexpr StringEncoding kUnicodeStringEncoding = 10;
inline constexpr StringEncoding kWindowsCP1252StringEncoding = 12;
inline constexpr StringEncoding kMacOSRomanStringEncoding = 30;

// The ICU converter name of an encoding number; nullopt when unknown.
std::optional<std::string> IcuConverterNameForEncoding(StringEncoding encoding);
// The system's default 8-bit encoding, taken from the locale.
StringEncoding DefaultCStringEncoding();
// Converts bytes in an encoding to UTF-8; nullopt when the encoding is
// unknown or the bytes are not valid in it.
std::optional<std::string> DecodeToUtf8(std::string_view bytes, StringEncoding encoding);
// Converts UTF-8 text to an encoding; nullopt when a character cannot be written in it.
std::optional<std::string> EncodeFromUtf8(std::string_view text, StringEncoding encoding);

}  // namespace tarn
