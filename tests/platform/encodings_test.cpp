#include "tarn/platform/encodings.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>

namespace tarn {
namespace {

TEST(Encodings, EveryTableEntryOpensAnIcuConverterAndRoundTrips) {
  std::set<StringEncoding> seen;
  for (StringEncoding encoding : AvailableStringEncodings()) {
    EXPECT_TRUE(seen.insert(encoding).second) << "listed twice: " << encoding;
    const std::optional<std::string> name = IcuConverterNameForEncoding(encoding);
    ASSERT_TRUE(name) << encoding;
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name->c_str(), &status);
    EXPECT_TRUE(U_SUCCESS(status)) << *name;
    ucnv_close(converter);
    EXPECT_FALSE(NameOfStringEncoding(encoding).empty());
    // Plain ASCII letters are written and read back unchanged by every one.
    const std::optional<std::string> bytes = EncodeFromUtf8("Rent 42", encoding);
    ASSERT_TRUE(bytes) << *name;
    EXPECT_EQ(DecodeToUtf8(*bytes, encoding), "Rent 42") << *name;
  }
  EXPECT_FALSE(IcuConverterNameForEncoding(0));
  EXPECT_FALSE(IcuConverterNameForEncoding(kNEXTSTEPStringEncoding));
  EXPECT_FALSE(DecodeToUtf8("abc", 999));
  EXPECT_FALSE(EncodeFromUtf8("abc", 999));
  EXPECT_EQ(NameOfStringEncoding(999), "");
}

TEST(Encodings, DecodesAndEncodesTheirOwnBytes) {
  struct Case {
    std::string utf8, bytes;
    StringEncoding encoding;
  };
  using std::string_literals::operator""s;
  // clang-format off
  const Case both[] = {  // decoded and encoded both ways
      {"Café", "Caf\xE9", kISOLatin1StringEncoding}, {"Café", "Caf\x8E", kMacOSRomanStringEncoding},
      {"€ 5", "\x80 5", kWindowsCP1252StringEncoding}, {"", "", kWindowsCP1252StringEncoding},
      {"Привет", "\xCF\xF0\xE8\xE2\xE5\xF2", kWindowsCP1251StringEncoding},
      {"Cé", "\xFF\xFE\x43\x00\xE9\x00"s, kUnicodeStringEncoding},
      {"Cé", "\x00\x43\x00\xE9"s, kUTF16BigEndianStringEncoding},
      {"😀", "\xFF\xFE\x00\x00\x00\xF6\x01\x00"s, kUTF32StringEncoding}};
  // clang-format on
  for (const Case& c : both) {
    EXPECT_EQ(DecodeToUtf8(c.bytes, c.encoding), c.utf8) << c.utf8;
    EXPECT_EQ(EncodeFromUtf8(c.utf8, c.encoding), c.bytes) << c.utf8;
  }
  // clang-format off
  const Case decoded[] = {
      {"\xC2\x80", "\x80", kISOLatin1StringEncoding},  // a control character, not the euro
      {"Би", "\xC1\xE8", kWindowsCP1251StringEncoding}, {"ą", "\xB9", kWindowsCP1250StringEncoding},
      {"ι", "\xE9", kWindowsCP1253StringEncoding}, {"C", "\x43\x00"s, kUTF16LittleEndianStringEncoding},
      {"Cé", "\xFE\xFF\x00\x43\x00\xE9"s, kUnicodeStringEncoding},
      {"C", "\x00\x00\x00\x43"s, kUTF32BigEndianStringEncoding},
      {"Name", "\xEF\xBB\xBFName", kUTF8StringEncoding}};
  // clang-format on
  for (const Case& c : decoded) EXPECT_EQ(DecodeToUtf8(c.bytes, c.encoding), c.utf8) << c.utf8;
}

TEST(Encodings, InvalidOrUnmappableTextGivesNothing) {
  EXPECT_FALSE(DecodeToUtf8("Caf\xE9", kUTF8StringEncoding));
  EXPECT_FALSE(DecodeToUtf8("\xC0\xAF", kUTF8StringEncoding));      // overlong
  EXPECT_FALSE(DecodeToUtf8("\xED\xA0\x80", kUTF8StringEncoding));  // surrogate
  EXPECT_FALSE(DecodeToUtf8("caf\xE9", kASCIIStringEncoding));
  EXPECT_FALSE(DecodeToUtf8(std::string("\xFF\xFE\x00\xD8", 4), kUnicodeStringEncoding));
  EXPECT_FALSE(DecodeToUtf8("\x43\x00\xE9", kUTF16LittleEndianStringEncoding));  // odd length
  EXPECT_FALSE(EncodeFromUtf8("€", kISOLatin1StringEncoding));
  EXPECT_FALSE(EncodeFromUtf8("Café", kASCIIStringEncoding));
  EXPECT_FALSE(EncodeFromUtf8("Привет", kWindowsCP1252StringEncoding));
  EXPECT_FALSE(EncodeFromUtf8("Caf\xC3", kWindowsCP1252StringEncoding));  // not UTF-8
  EXPECT_FALSE(EncodeFromUtf8("Caf\xC3", kUTF8StringEncoding));
}

TEST(Encodings, WindowsCodePagesAndCharsetNames) {
  // clang-format off
  const std::pair<unsigned, StringEncoding> pages[] = {
      {1252, kWindowsCP1252StringEncoding}, {1251, kWindowsCP1251StringEncoding},
      {1250, kWindowsCP1250StringEncoding}, {1253, kWindowsCP1253StringEncoding},
      {1254, kWindowsCP1254StringEncoding}, {1257, 0x80000507u}, {437, 0x80000400u},
      {65001, kUTF8StringEncoding}, {28591, kISOLatin1StringEncoding},
      {10000, kMacOSRomanStringEncoding}, {932, kShiftJISStringEncoding}};
  // clang-format on
  for (const auto& [page, encoding] : pages) EXPECT_EQ(EncodingForWindowsCodePage(page), encoding);
  EXPECT_FALSE(EncodingForWindowsCodePage(0));
  EXPECT_FALSE(EncodingForWindowsCodePage(4242));
  EXPECT_EQ(DecodeToUtf8("\xE0", *EncodingForWindowsCodePage(1257)), "ą");
  // clang-format off
  const std::pair<const char*, StringEncoding> names[] = {
      {"UTF-8", kUTF8StringEncoding}, {"utf8", kUTF8StringEncoding},
      {"latin1", kISOLatin1StringEncoding}, {"ANSI_X3.4-1968", kASCIIStringEncoding},
      {"CP1251", kWindowsCP1251StringEncoding}, {"ISO-8859-15", 0x8000020Fu}};
  // clang-format on
  for (const auto& [name, encoding] : names) EXPECT_EQ(EncodingForCharsetName(name), encoding);
  EXPECT_FALSE(EncodingForCharsetName("no-such-charset"));
}

TEST(Encodings, DefaultEncodingComesFromTheLocale) {
  // The tests run under LC_ALL=C.UTF-8.
  EXPECT_EQ(DefaultCStringEncoding(), kUTF8StringEncoding);
}

// The plain reading: the converter turns the bytes into UTF-16, ICU turns
// that into UTF-8, and a leading byte-order mark is dropped.
std::optional<std::string> DecodeThroughUtf16(const std::string& bytes, const char* icuName) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(icuName, &status);
  ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  std::u16string units(bytes.size() * 2 + 16, u'\0');
  const int32_t length = ucnv_toUChars(converter, units.data(), static_cast<int32_t>(units.size()),
                                       bytes.data(), static_cast<int32_t>(bytes.size()), &status);
  ucnv_close(converter);
  if (U_FAILURE(status)) return std::nullopt;
  units.resize(static_cast<std::size_t>(length));
  if (!units.empty() && units.front() == u'\uFEFF') units.erase(0, 1);
  std::string text(units.size() * 3, '\0');
  int32_t written = 0;
  u_strToUTF8(text.data(), static_cast<int32_t>(text.size()), &written, units.data(),
              static_cast<int32_t>(units.size()), &status);
  if (U_FAILURE(status)) return std::nullopt;
  text.resize(static_cast<std::size_t>(written));
  return text;
}

// Single-byte files are decoded through a table of the 256 bytes; the result
// must be the converter's own, unmappable bytes (0x81 in Windows 1252, any
// high byte in ASCII) included.
TEST(Encodings, SingleByteDecodingMatchesTheConverter) {
  const std::pair<StringEncoding, const char*> encodings[] = {
      {kWindowsCP1252StringEncoding, "windows-1252"}, {kISOLatin1StringEncoding, "ISO-8859-1"},
      {kMacOSRomanStringEncoding, "macintosh"},       {kASCIIStringEncoding, "US-ASCII"},
      {kWindowsCP1251StringEncoding, "windows-1251"}, {kISOLatin2StringEncoding, "ISO-8859-2"}};
  std::mt19937 random(3);
  for (const auto& [encoding, icuName] : encodings) {
    for (int round = 0; round < 400; ++round) {
      std::string bytes;
      const int length = static_cast<int>(random() % 40);
      for (int i = 0; i < length; ++i) {
        // Mostly ASCII, as real files are, with every byte now and then.
        const unsigned value = random() % 4 ? random() % 0x80 : random() % 0x100;
        bytes += static_cast<char>(value);
      }
      EXPECT_EQ(DecodeToUtf8(bytes, encoding), DecodeThroughUtf16(bytes, icuName))
          << icuName << " round " << round;
    }
    // A long file, across the ASCII runs.
    std::string bytes(100000, 'a');
    for (std::size_t i = 0; i < bytes.size(); i += 997) bytes[i] = static_cast<char>(0xE9);
    EXPECT_EQ(DecodeToUtf8(bytes, encoding), DecodeThroughUtf16(bytes, icuName)) << icuName;
  }
}

}  // namespace
}  // namespace tarn
