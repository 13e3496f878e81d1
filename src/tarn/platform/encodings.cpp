#include "tarn/platform/encodings.h"

#include <langinfo.h>
#include <locale.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

namespace tarn {
namespace {

struct EncodingInfo {
  StringEncoding encoding;
  uint32_t windowsCodePage;  // 0: no code page names it
  const char* icuName;
  const char* name;
};

constexpr StringEncoding cf(uint32_t cfEncoding) {
  return kCFStringEncodingBit | cfEncoding;
}

// The platform's own numbers first, then the wider family. The code pages are
// those of the platform's code-page table; a code page listed twice (950:
// Big 5 and Windows Traditional Chinese) takes the first row.
constexpr EncodingInfo kEncodings[] = {
    {kASCIIStringEncoding, 20127, "US-ASCII", "Western (ASCII)"},
    {kJapaneseEUCStringEncoding, 51932, "EUC-JP", "Japanese (EUC)"},
    {kUTF8StringEncoding, 65001, "UTF-8", "Unicode (UTF-8)"},
    {kISOLatin1StringEncoding, 28591, "ISO-8859-1", "Western (ISO Latin 1)"},
    {kShiftJISStringEncoding, 932, "Shift_JIS", "Japanese (Shift JIS)"},
    {kISOLatin2StringEncoding, 28592, "ISO-8859-2", "Central European (ISO Latin 2)"},
    {kUnicodeStringEncoding, 0, "UTF-16", "Unicode (UTF-16)"},
    {kWindowsCP1251StringEncoding, 1251, "windows-1251", "Cyrillic (Windows)"},
    {kWindowsCP1252StringEncoding, 1252, "windows-1252", "Western (Windows Latin 1)"},
    {kWindowsCP1253StringEncoding, 1253, "windows-1253", "Greek (Windows)"},
    {kWindowsCP1254StringEncoding, 1254, "windows-1254", "Turkish (Windows Latin 5)"},
    {kWindowsCP1250StringEncoding, 1250, "windows-1250", "Central European (Windows Latin 2)"},
    {kISO2022JPStringEncoding, 50220, "ISO-2022-JP", "Japanese (ISO 2022-JP)"},
    {kMacOSRomanStringEncoding, 10000, "macintosh", "Western (Mac OS Roman)"},
    {kUTF16BigEndianStringEncoding, 1201, "UTF-16BE", "Unicode (UTF-16BE)"},
    {kUTF16LittleEndianStringEncoding, 1200, "UTF-16LE", "Unicode (UTF-16LE)"},
    {kUTF32StringEncoding, 0, "UTF-32", "Unicode (UTF-32)"},
    {kUTF32BigEndianStringEncoding, 12001, "UTF-32BE", "Unicode (UTF-32BE)"},
    {kUTF32LittleEndianStringEncoding, 12000, "UTF-32LE", "Unicode (UTF-32LE)"},
    // ISO 8859 family.
    {cf(0x0203), 28593, "ISO-8859-3", "Western (ISO Latin 3)"},
    {cf(0x0204), 28594, "ISO-8859-4", "Central European (ISO Latin 4)"},
    {cf(0x0205), 28595, "ISO-8859-5", "Cyrillic (ISO 8859-5)"},
    {cf(0x0206), 28596, "ISO-8859-6", "Arabic (ISO 8859-6)"},
    {cf(0x0207), 28597, "ISO-8859-7", "Greek (ISO 8859-7)"},
    {cf(0x0208), 28598, "ISO-8859-8", "Hebrew (ISO 8859-8)"},
    {cf(0x0209), 28599, "ISO-8859-9", "Turkish (ISO Latin 5)"},
    {cf(0x020A), 0, "ISO-8859-10", "Nordic (ISO Latin 6)"},
    {cf(0x020B), 0, "ISO-8859-11", "Thai (ISO 8859-11)"},
    {cf(0x020D), 28603, "ISO-8859-13", "Baltic (ISO Latin 7)"},
    {cf(0x020E), 0, "ISO-8859-14", "Celtic (ISO Latin 8)"},
    {cf(0x020F), 28605, "ISO-8859-15", "Western (ISO Latin 9)"},
    // Windows code pages.
    {cf(0x0505), 1255, "windows-1255", "Hebrew (Windows)"},
    {cf(0x0506), 1256, "windows-1256", "Arabic (Windows)"},
    {cf(0x0507), 1257, "windows-1257", "Baltic (Windows)"},
    {cf(0x0508), 1258, "windows-1258", "Vietnamese (Windows)"},
    {cf(0x041D), 874, "windows-874", "Thai (Windows, DOS)"},
    {cf(0x0421), 936, "windows-936", "Simplified Chinese (Windows, DOS)"},
    {cf(0x0422), 949, "windows-949", "Korean (Windows, DOS)"},
    {cf(0x0423), 950, "windows-950", "Traditional Chinese (Windows, DOS)"},
    // DOS code pages.
    {cf(0x0400), 437, "ibm-437", "Latin-US (DOS)"},
    {cf(0x0405), 737, "ibm-737", "Greek (DOS)"},
    {cf(0x0406), 775, "ibm-775", "Baltic (DOS)"},
    {cf(0x0410), 850, "ibm-850", "Western (DOS Latin 1)"},
    {cf(0x0412), 852, "ibm-852", "Central European (DOS Latin 2)"},
    {cf(0x0413), 855, "ibm-855", "Cyrillic (DOS)"},
    {cf(0x0414), 857, "ibm-857", "Turkish (DOS)"},
    {cf(0x0415), 860, "ibm-860", "Portuguese (DOS)"},
    {cf(0x0416), 861, "ibm-861", "Icelandic (DOS)"},
    {cf(0x0417), 862, "ibm-862", "Hebrew (DOS)"},
    {cf(0x0418), 863, "ibm-863", "Canadian French (DOS)"},
    {cf(0x0419), 864, "ibm-864", "Arabic (DOS)"},
    {cf(0x041A), 865, "ibm-865", "Nordic (DOS)"},
    {cf(0x041B), 866, "ibm-866", "Russian (DOS)"},
    {cf(0x041C), 869, "ibm-869", "Greek (DOS Greek 2)"},
    // Other families.
    {cf(0x0A02), 20866, "KOI8-R", "Cyrillic (KOI8-R)"},
    {cf(0x0A08), 21866, "KOI8-U", "Ukrainian (KOI8-U)"},
    {cf(0x0A03), 0, "Big5", "Traditional Chinese (Big 5)"},
    {cf(0x0A06), 0, "Big5-HKSCS", "Traditional Chinese (Big 5 HKSCS)"},
    {cf(0x0930), 0, "EUC-CN", "Simplified Chinese (EUC)"},
    {cf(0x0940), 51949, "EUC-KR", "Korean (EUC)"},
    {cf(0x0632), 54936, "GB18030", "Simplified Chinese (GB 18030)"},
    {cf(0x0007), 10007, "x-mac-cyrillic", "Cyrillic (Mac OS)"},
    {cf(0x0006), 10006, "x-mac-greek", "Greek (Mac OS)"},
    {cf(0x001D), 10029, "x-mac-centraleurroman", "Central European (Mac OS)"},
    {cf(0x0023), 10081, "x-mac-turkish", "Turkish (Mac OS)"},
};

const EncodingInfo* findEncoding(StringEncoding encoding) {
  for (const EncodingInfo& info : kEncodings) {
    if (info.encoding == encoding) return &info;
  }
  return nullptr;
}

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

Converter openConverter(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(name, &status), ucnv_close);
  if (U_FAILURE(status)) converter.reset();
  return converter;
}

bool isValidUtf8(std::string_view text) {
  return InvalidUtf8Offset(text) == std::string_view::npos;
}

std::optional<std::u16string> utf8ToUtf16(std::string_view text) {
  std::u16string units(text.size(), u'\0');
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8(units.data(), static_cast<int32_t>(units.size()), &length, text.data(),
                static_cast<int32_t>(text.size()), &status);
  if (U_FAILURE(status)) return std::nullopt;
  units.resize(static_cast<size_t>(length));
  return units;
}

std::optional<std::string> utf16ToUtf8(std::u16string_view units) {
  std::string text(units.size() * 3, '\0');
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8(text.data(), static_cast<int32_t>(text.size()), &length, units.data(),
              static_cast<int32_t>(units.size()), &status);
  if (U_FAILURE(status)) return std::nullopt;
  text.resize(static_cast<size_t>(length));
  return text;
}

std::string_view withoutUtf8ByteOrderMark(std::string_view bytes) {
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
  return bytes;
}

std::optional<std::string> encodeWithConverter(const char* icuName, std::u16string_view units,
                                               std::string prefix = {}) {
  Converter converter = openConverter(icuName);
  if (!converter) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
  std::string bytes(units.size() * 4 + 16, '\0');
  status = U_ZERO_ERROR;
  int32_t length =
      ucnv_fromUChars(converter.get(), bytes.data(), static_cast<int32_t>(bytes.size()),
                      units.data(), static_cast<int32_t>(units.size()), &status);
  if (status == U_BUFFER_OVERFLOW_ERROR) {
    bytes.assign(static_cast<size_t>(length), '\0');
    status = U_ZERO_ERROR;
    length = ucnv_fromUChars(converter.get(), bytes.data(), length, units.data(),
                             static_cast<int32_t>(units.size()), &status);
  }
  if (U_FAILURE(status)) return std::nullopt;
  bytes.resize(static_cast<size_t>(length));
  return prefix + bytes;
}

const char* canonicalConverterName(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  const char* canonical = ucnv_getAlias(name, 0, &status);
  return U_SUCCESS(status) ? canonical : nullptr;
}

StringEncoding encodingOfEnvironmentLocale() {
  // The user's locale from the environment, whatever the host did with
  // setlocale; the process's own locale when the environment names none.
  const char* codeset = nullptr;
  locale_t environment = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(nullptr));
  if (environment) codeset = nl_langinfo_l(CODESET, environment);
  if (!codeset || !*codeset) codeset = nl_langinfo(CODESET);
  std::optional<StringEncoding> encoding;
  if (codeset) encoding = EncodingForCharsetName(codeset);
  if (environment) freelocale(environment);
  if (!encoding || *encoding == kASCIIStringEncoding) return kWindowsCP1252StringEncoding;
  return *encoding;
}

}  // namespace

std::size_t InvalidUtf8Offset(std::string_view text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const auto length = static_cast<int64_t>(text.size());
  for (int64_t i = 0; i < length;) {
    // Eight ASCII bytes at a time: most text is ASCII.
    if (i + 8 <= length) {
      uint64_t word;
      std::memcpy(&word, bytes + i, 8);
      if ((word & 0x8080808080808080ull) == 0) {
        i += 8;
        continue;
      }
    }
    if (bytes[i] < 0x80) {
      ++i;
      continue;
    }
    const int64_t start = i;
    UChar32 c;
    U8_NEXT(bytes, i, length, c);
    if (c < 0) return static_cast<std::size_t>(start);
  }
  return std::string_view::npos;
}

std::optional<std::string> IcuConverterNameForEncoding(StringEncoding encoding) {
  const EncodingInfo* info = findEncoding(encoding);
  if (!info) return std::nullopt;
  return std::string(info->icuName);
}

std::string NameOfStringEncoding(StringEncoding encoding) {
  const EncodingInfo* info = findEncoding(encoding);
  return info ? std::string(info->name) : std::string();
}

std::vector<StringEncoding> AvailableStringEncodings() {
  std::vector<StringEncoding> encodings;
  encodings.reserve(std::size(kEncodings));
  for (const EncodingInfo& info : kEncodings) encodings.push_back(info.encoding);
  return encodings;
}

std::optional<StringEncoding> EncodingForWindowsCodePage(std::uint32_t codePage) {
  if (codePage == 0) return std::nullopt;
  for (const EncodingInfo& info : kEncodings) {
    if (info.windowsCodePage == codePage) return info.encoding;
  }
  return std::nullopt;
}

std::optional<StringEncoding> EncodingForCharsetName(std::string_view name) {
  const std::string text(name);
  const char* wanted = canonicalConverterName(text.c_str());
  if (!wanted) return std::nullopt;
  for (const EncodingInfo& info : kEncodings) {
    const char* candidate = canonicalConverterName(info.icuName);
    if (candidate && std::strcmp(candidate, wanted) == 0) return info.encoding;
  }
  return std::nullopt;
}

StringEncoding DefaultCStringEncoding() {
  static const StringEncoding encoding = encodingOfEnvironmentLocale();
  return encoding;
}

namespace {

// Single-byte encodings map every byte on its own, whatever stands around
// it: the converter's reading of each of the 256 bytes, as UTF-8, decodes a
// whole file in one pass, without the round trip through UTF-16 and its
// doubled memory. Answers false for other converters (the caller converts
// as usual); otherwise sets `text` (nullopt when a byte has no character).
bool decodeSingleBytes(UConverter* converter, std::string_view bytes,
                       std::optional<std::string>& text) {
  const UConverterType type = ucnv_getType(converter);
  if (type != UCNV_SBCS && type != UCNV_LATIN_1 && type != UCNV_US_ASCII) return false;
  struct Mapping {
    char utf8[8];
    std::uint8_t length;
    bool valid;
  };
  std::array<Mapping, 256> table{};
  bool asciiStaysAscii = true;
  for (int value = 0; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    UChar units[4];
    UErrorCode status = U_ZERO_ERROR;
    // ucnv_toUChars starts from a reset converter.
    const int32_t count = ucnv_toUChars(converter, units, 4, &byte, 1, &status);
    Mapping& mapping = table[static_cast<std::size_t>(value)];
    if (U_FAILURE(status)) continue;
    if (count > 2) return false;
    int32_t offset = 0, written = 0;
    UBool error = false;
    while (offset < count) {
      UChar32 c;
      U16_NEXT(units, offset, count, c);
      U8_APPEND(reinterpret_cast<std::uint8_t*>(mapping.utf8), written, 8, c, error);
      if (error) return false;
    }
    mapping.length = static_cast<std::uint8_t>(written);
    mapping.valid = true;
    if (value < 0x80 && !(written == 1 && mapping.utf8[0] == byte)) asciiStaysAscii = false;
  }

  std::string result;
  result.reserve(bytes.size() + bytes.size() / 4);
  std::size_t i = 0;
  // A byte-order mark read as a character is dropped, as the converters do.
  if (!bytes.empty()) {
    const Mapping& first = table[static_cast<unsigned char>(bytes[0])];
    if (first.valid && std::string_view(first.utf8, first.length) == "\xEF\xBB\xBF") i = 1;
  }
  while (i < bytes.size()) {
    if (asciiStaysAscii) {
      // Eight bytes at a time while none has its high bit set.
      std::size_t end = i;
      for (std::uint64_t word; end + 8 <= bytes.size(); end += 8) {
        std::memcpy(&word, bytes.data() + end, 8);
        if (word & 0x8080808080808080u) break;
      }
      while (end < bytes.size() && static_cast<unsigned char>(bytes[end]) < 0x80) ++end;
      result.append(bytes.substr(i, end - i));
      i = end;
      if (i == bytes.size()) break;
    }
    const Mapping& mapping = table[static_cast<unsigned char>(bytes[i++])];
    if (!mapping.valid) {
      text.reset();
      return true;
    }
    result.append(mapping.utf8, mapping.length);
  }
  text = std::move(result);
  return true;
}

}  // namespace

std::optional<std::string> DecodeToUtf8(std::string_view bytes, StringEncoding encoding) {
  const EncodingInfo* info = findEncoding(encoding);
  if (!info) return std::nullopt;
  if (encoding == kUTF8StringEncoding) {
    bytes = withoutUtf8ByteOrderMark(bytes);
    if (!isValidUtf8(bytes)) return std::nullopt;
    return std::string(bytes);
  }
  Converter converter = openConverter(info->icuName);
  if (!converter) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  if (std::optional<std::string> text; decodeSingleBytes(converter.get(), bytes, text)) return text;
  std::u16string units(bytes.size() + 16, u'\0');
  status = U_ZERO_ERROR;
  int32_t length = ucnv_toUChars(converter.get(), units.data(), static_cast<int32_t>(units.size()),
                                 bytes.data(), static_cast<int32_t>(bytes.size()), &status);
  if (status == U_BUFFER_OVERFLOW_ERROR) {
    units.assign(static_cast<size_t>(length), u'\0');
    status = U_ZERO_ERROR;
    length = ucnv_toUChars(converter.get(), units.data(), length, bytes.data(),
                           static_cast<int32_t>(bytes.size()), &status);
  }
  if (U_FAILURE(status)) return std::nullopt;
  std::u16string_view text(units.data(), static_cast<size_t>(length));
  // The Unicode converters drop their own byte-order marks; other encodings
  // can still carry one as a character.
  if (!text.empty() && text.front() == u'\uFEFF') text.remove_prefix(1);
  return utf16ToUtf8(text);
}

std::optional<std::string> EncodeFromUtf8(std::string_view text, StringEncoding encoding) {
  const EncodingInfo* info = findEncoding(encoding);
  if (!info) return std::nullopt;
  if (encoding == kUTF8StringEncoding) {
    if (!isValidUtf8(text)) return std::nullopt;
    return std::string(text);
  }
  const std::optional<std::u16string> units = utf8ToUtf16(text);
  if (!units) return std::nullopt;
  if (encoding == kUnicodeStringEncoding) {
    return encodeWithConverter("UTF-16LE", *units, std::string("\xFF\xFE", 2));
  }
  if (encoding == kUTF32StringEncoding) {
    return encodeWithConverter("UTF-32LE", *units, std::string("\xFF\xFE\0\0", 4));
  }
  return encodeWithConverter(info->icuName, *units);
}

}  // namespace tarn
