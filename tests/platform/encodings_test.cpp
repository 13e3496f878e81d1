#include "tarn/platform/encodings.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <set>
#include <string>

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

TEST(Encodings, EightBitEncodingsReadTheirOwnBytes) {
  EXPECT_EQ(DecodeToUtf8("Caf\xE9", kISOLatin1StringEncoding), "Café");
  EXPECT_EQ(EncodeFromUtf8("Café", kISOLatin1StringEncoding), "Caf\xE9");
  EXPECT_EQ(DecodeToUtf8("Caf\x8E", kMacOSRomanStringEncoding), "Café");
  EXPECT_EQ(EncodeFromUtf8("Café", kMacOSRomanStringEncoding), "Caf\x8E");
  EXPECT_EQ(DecodeToUtf8("\x80 5", kWindowsCP1252StringEncoding), "€ 5");
  EXPECT_EQ(EncodeFromUtf8("€ 5", kWindowsCP1252StringEncoding), "\x80 5");
  // In ISO Latin 1, 0x80 is a control character, not the euro sign.
  EXPECT_EQ(DecodeToUtf8("\x80", kISOLatin1StringEncoding), "\xC2\x80");
  EXPECT_EQ(DecodeToUtf8("\xC1\xE8", kWindowsCP1251StringEncoding), "Би");
  EXPECT_EQ(DecodeToUtf8("\xB9", kWindowsCP1250StringEncoding), "ą");
  EXPECT_EQ(DecodeToUtf8("\xE9", kWindowsCP1253StringEncoding), "ι");
}

TEST(Encodings, UnicodeEncodingsAndByteOrderMarks) {
  const std::string bigEndian("\xFE\xFF\x00\x43\x00\xE9", 6);
  const std::string littleEndian("\xFF\xFE\x43\x00\xE9\x00", 6);
  EXPECT_EQ(DecodeToUtf8(bigEndian, kUnicodeStringEncoding), "Cé");
  EXPECT_EQ(DecodeToUtf8(littleEndian, kUnicodeStringEncoding), "Cé");
  EXPECT_EQ(EncodeFromUtf8("Cé", kUnicodeStringEncoding), littleEndian);
  EXPECT_EQ(EncodeFromUtf8("Cé", kUTF16BigEndianStringEncoding),
            std::string("\x00\x43\x00\xE9", 4));
  EXPECT_EQ(DecodeToUtf8(std::string("\x43\x00", 2), kUTF16LittleEndianStringEncoding), "C");
  EXPECT_EQ(DecodeToUtf8(std::string("\x00\x00\x00\x43", 4), kUTF32BigEndianStringEncoding), "C");
  const std::optional<std::string> utf32 = EncodeFromUtf8("😀", kUTF32StringEncoding);
  EXPECT_EQ(utf32, std::string("\xFF\xFE\x00\x00\x00\xF6\x01\x00", 8));
  EXPECT_EQ(DecodeToUtf8(*utf32, kUTF32StringEncoding), "😀");
  EXPECT_EQ(DecodeToUtf8("\xEF\xBB\xBFName", kUTF8StringEncoding), "Name");
  EXPECT_EQ(DecodeToUtf8("\xE2\x82\xAC", kUTF8StringEncoding), "€");
}

TEST(Encodings, InvalidOrUnmappableTextGivesNothing) {
  EXPECT_FALSE(DecodeToUtf8("Caf\xE9", kUTF8StringEncoding));
  EXPECT_FALSE(DecodeToUtf8("\xC0\xAF", kUTF8StringEncoding));      // overlong
  EXPECT_FALSE(DecodeToUtf8("\xED\xA0\x80", kUTF8StringEncoding));  // surrogate
  EXPECT_FALSE(DecodeToUtf8("caf\xE9", kASCIIStringEncoding));
  EXPECT_FALSE(
      DecodeToUtf8(std::string("\xFF\xFE\x00\xD8", 4), kUnicodeStringEncoding));  // lone surrogate
  EXPECT_FALSE(DecodeToUtf8("\x43\x00\xE9", kUTF16LittleEndianStringEncoding));   // odd length
  EXPECT_FALSE(EncodeFromUtf8("€", kISOLatin1StringEncoding));
  EXPECT_FALSE(EncodeFromUtf8("Café", kASCIIStringEncoding));
  EXPECT_FALSE(EncodeFromUtf8("Привет", kWindowsCP1252StringEncoding));
  EXPECT_FALSE(EncodeFromUtf8("Caf\xC3", kWindowsCP1252StringEncoding));  // not UTF-8
  EXPECT_FALSE(EncodeFromUtf8("Caf\xC3", kUTF8StringEncoding));
  EXPECT_EQ(EncodeFromUtf8("Привет", kWindowsCP1251StringEncoding), "\xCF\xF0\xE8\xE2\xE5\xF2");
  EXPECT_EQ(DecodeToUtf8("", kWindowsCP1252StringEncoding), "");
}

TEST(Encodings, WindowsCodePagesAndCharsetNames) {
  EXPECT_EQ(EncodingForWindowsCodePage(1252), kWindowsCP1252StringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(1251), kWindowsCP1251StringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(1250), kWindowsCP1250StringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(1253), kWindowsCP1253StringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(1254), kWindowsCP1254StringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(1257), 0x80000507u);
  EXPECT_EQ(EncodingForWindowsCodePage(437), 0x80000400u);
  EXPECT_EQ(EncodingForWindowsCodePage(65001), kUTF8StringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(28591), kISOLatin1StringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(10000), kMacOSRomanStringEncoding);
  EXPECT_EQ(EncodingForWindowsCodePage(932), kShiftJISStringEncoding);
  EXPECT_FALSE(EncodingForWindowsCodePage(0));
  EXPECT_FALSE(EncodingForWindowsCodePage(4242));
  EXPECT_EQ(DecodeToUtf8("\xE0", *EncodingForWindowsCodePage(1257)), "ą");

  EXPECT_EQ(EncodingForCharsetName("UTF-8"), kUTF8StringEncoding);
  EXPECT_EQ(EncodingForCharsetName("utf8"), kUTF8StringEncoding);
  EXPECT_EQ(EncodingForCharsetName("latin1"), kISOLatin1StringEncoding);
  EXPECT_EQ(EncodingForCharsetName("ANSI_X3.4-1968"), kASCIIStringEncoding);
  EXPECT_EQ(EncodingForCharsetName("CP1251"), kWindowsCP1251StringEncoding);
  EXPECT_EQ(EncodingForCharsetName("ISO-8859-15"), 0x8000020Fu);
  EXPECT_FALSE(EncodingForCharsetName("no-such-charset"));
}

TEST(Encodings, DefaultEncodingComesFromTheLocale) {
  // The tests run under LC_ALL=C.UTF-8.
  EXPECT_EQ(DefaultCStringEncoding(), kUTF8StringEncoding);
}

}  // namespace
}  // namespace tarn
