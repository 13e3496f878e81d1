// The string encodings of the account file: the platform's encoding numbers
// (4 UTF-8, 5 ISO Latin 1, 10 UTF-16, 12 Windows 1252, 30 Mac Roman, ...)
// mapped to ICU converters. The table is static; nothing here owns state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

using StringEncoding = std::uint32_t;

inline constexpr StringEncoding kASCIIStringEncoding = 1;
inline constexpr StringEncoding kNEXTSTEPStringEncoding = 2;
inline constexpr StringEncoding kJapaneseEUCStringEncoding = 3;
inline constexpr StringEncoding kUTF8StringEncoding = 4;
inline constexpr StringEncoding kISOLatin1StringEncoding = 5;
inline constexpr StringEncoding kSymbolStringEncoding = 6;
inline constexpr StringEncoding kNonLossyASCIIStringEncoding = 7;
inline constexpr StringEncoding kShiftJISStringEncoding = 8;
inline constexpr StringEncoding kISOLatin2StringEncoding = 9;
inline constexpr StringEncoding kUnicodeStringEncoding = 10;  // UTF-16 with a byte-order mark
inline constexpr StringEncoding kWindowsCP1251StringEncoding = 11;
inline constexpr StringEncoding kWindowsCP1252StringEncoding = 12;
inline constexpr StringEncoding kWindowsCP1253StringEncoding = 13;
inline constexpr StringEncoding kWindowsCP1254StringEncoding = 14;
inline constexpr StringEncoding kWindowsCP1250StringEncoding = 15;
inline constexpr StringEncoding kISO2022JPStringEncoding = 21;
inline constexpr StringEncoding kMacOSRomanStringEncoding = 30;
inline constexpr StringEncoding kUTF16BigEndianStringEncoding = 0x90000100;
inline constexpr StringEncoding kUTF16LittleEndianStringEncoding = 0x94000100;
inline constexpr StringEncoding kUTF32StringEncoding = 0x8c000100;
inline constexpr StringEncoding kUTF32BigEndianStringEncoding = 0x98000100;
inline constexpr StringEncoding kUTF32LittleEndianStringEncoding = 0x9c000100;

// Encodings of the platform's wider (CoreFoundation) family are stored as
// this bit or'ed with their CF number: Windows Baltic (CF 0x0507) is 0x80000507.
inline constexpr StringEncoding kCFStringEncodingBit = 0x80000000;

// The ICU converter name of an encoding number; nullopt when unknown.
std::optional<std::string> IcuConverterNameForEncoding(StringEncoding encoding);
// A readable name ("Western (Windows Latin 1)"); empty when unknown.
std::string NameOfStringEncoding(StringEncoding encoding);
// Every encoding that DecodeToUtf8 and EncodeFromUtf8 handle, in table order.
std::vector<StringEncoding> AvailableStringEncodings();

// The encoding of a Windows code page number (an OFX header's CHARSET, such
// as 1252), as the platform's code-page table gives it: 1252 is 12, 1250 is 15,
// 1257 is 0x80000507. nullopt for a code page the table does not know.
std::optional<StringEncoding> EncodingForWindowsCodePage(std::uint32_t codePage);
// The encoding of a character-set name ("UTF-8", "ISO-8859-15", "CP1251"),
// matched through ICU's aliases; nullopt when unknown.
std::optional<StringEncoding> EncodingForCharsetName(std::string_view name);

// The system's default 8-bit encoding, taken from the locale's codeset. A
// locale with a plain ASCII codeset (C, POSIX) gives Windows 1252.
StringEncoding DefaultCStringEncoding();

// The offset of the first byte that does not belong to a valid UTF-8
// sequence; npos when the whole text is valid UTF-8.
std::size_t InvalidUtf8Offset(std::string_view text);

// Converts bytes in an encoding to UTF-8; nullopt when the encoding is
// unknown or the bytes are not valid in it. A leading byte-order mark is dropped.
std::optional<std::string> DecodeToUtf8(std::string_view bytes, StringEncoding encoding);
// Converts UTF-8 text to an encoding; nullopt when the text is not valid UTF-8
// or a character cannot be written in it. Unicode (10) and UTF-32 are written
// little-endian behind a byte-order mark.
std::optional<std::string> EncodeFromUtf8(std::string_view text, StringEncoding encoding);

}  // namespace tarn
