// Reading a file for import without being told its format: detection by
// content, the encoding reported, the OFX readings tried in turn, and the
// reasons a file is refused.

#include "tarn/import/import_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "import/import_test_support.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/error.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

const std::string kData = TARN_TEST_DATA_DIR;

TEST(ImportFormatDetection, TellsFormatsApartByContent) {
  const auto format = [](std::string_view bytes) { return DetectImportFormat(bytes).format; };
  EXPECT_EQ(format("\r\n  !Type:Bank\r\nD1/2/03\r\nT-4.50\r\n^\r\n"), ImportFormat::QIF);
  EXPECT_EQ(format("!account\nNChecking\n^\n"), ImportFormat::QIF);
  // Bare records without a header, as some programs write them.
  EXPECT_EQ(format("D1/2/03\nT-4.50\nPShop, Inc\n^\nD1/3/03\nT5\n^\n"), ImportFormat::QIF);
  EXPECT_EQ(format("OFXHEADER:100\nDATA:OFXSGML\n\n<OFX><BANKMSGSRSV1>"), ImportFormat::OFX);
  EXPECT_EQ(format("<?xml version=\"1.0\"?>\n<?OFX OFXHEADER=\"200\"?>\n<OFX>"), ImportFormat::OFX);
  // UTF-16 with a byte-order mark.
  std::string utf16 = "\xFF\xFE";
  for (char c : std::string("OFXHEADER:100\n<OFX>")) utf16 += std::string{c, '\0'};
  EXPECT_EQ(format(utf16), ImportFormat::OFX);
  // A CSV whose fields hold the words QIF and OFX look for is still text.
  const auto csv = DetectImportFormat("Date,Description,Amount\n01/15/05,\"<OFX> shop\",-3.50\n");
  EXPECT_EQ(csv.format, ImportFormat::Text);
  const auto comma = DetectImportFormat("Date,Description,Amount\n01/15/05,Coffee,-3.50\n");
  EXPECT_EQ(comma.format, ImportFormat::Text);
  EXPECT_FALSE(comma.tabSeparated);
  const auto tabs =
      DetectImportFormat("Date\tDescription\tAmount\n01/15/05\tCoffee, large\t-3.50\n");
  EXPECT_EQ(tabs.format, ImportFormat::Text);
  EXPECT_TRUE(tabs.tabSeparated);
  EXPECT_EQ(format(std::string("\x00\x01\x02\x03\xff\xfe data", 11)), ImportFormat::Unknown);
  EXPECT_EQ(format("Dear bank\nplease send me my statement\n"), ImportFormat::Unknown);
  EXPECT_EQ(format(""), ImportFormat::Unknown);
}

// Every real file of the shared corpus is told apart by its content alone.
TEST(ImportFormatDetection, RecognisesEveryCorpusFile) {
  namespace fs = std::filesystem;
  const fs::path corpus = testing::CorpusDir();
  if (!fs::is_directory(corpus)) GTEST_SKIP() << "no corpus folder " << corpus.string();
  const std::pair<const char*, ImportFormat> folders[] = {
      {"ofx", ImportFormat::OFX}, {"qif", ImportFormat::QIF}, {"csv", ImportFormat::Text}};
  std::size_t files = 0;
  for (const auto& [folder, format] : folders) {
    if (!fs::is_directory(corpus / folder)) continue;
    for (const auto& file : fs::directory_iterator(corpus / folder)) {
      EXPECT_EQ(DetectImportFormat(testing::FileText(file.path())).format, format)
          << file.path().string();
      ++files;
    }
  }
  EXPECT_GT(files, 0u);
}

TEST(ImportDateFormatList, IndexesRoundTripAndFallBackToTheDefault) {
  for (std::size_t i = 0; i < ImportDateFormats().size(); ++i) {
    const std::string& format = ImportDateFormats()[i];
    EXPECT_NE(format.find('/'), std::string::npos) << format;
    EXPECT_EQ(ImportDateFormatIndex(format), static_cast<std::int32_t>(i));
    EXPECT_EQ(ImportDateFormatAt(static_cast<std::int32_t>(i)), format);
  }
  EXPECT_EQ(ImportDateFormatAt(-1), "%m/%d/%y");
  EXPECT_EQ(ImportDateFormatAt(1000), "%m/%d/%y");
  EXPECT_FALSE(ImportDateFormatIndex("%d.%m.%Y"));
}

class ReadImportedFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    CalendarDate::overrideNow(CalendarDate(2026, 11, 24));
    previousSink_ = SetLogSink([](std::string_view) {});
  }
  void TearDown() override {
    SetLogSink(previousSink_);
    CalendarDate::overrideNow(std::nullopt);
  }
  std::function<void(std::string_view)> previousSink_;
};

TEST_F(ReadImportedFileTest, ReportsTheEncodingUsedForEachFormat) {
  // A stored UTF-8 encoding that the Latin-1 bytes do not fit: the reading
  // falls back, and says which encoding it used.
  ImportFileOptions options;
  options.qif.encoding = static_cast<std::int32_t>(kUTF8StringEncoding);
  const ImportedFile qif = ReadImportedFile(kData + "/import/latin1_crlf_payee.qif", options);
  EXPECT_EQ(qif.format, ImportFormat::QIF);
  EXPECT_EQ(qif.encoding, NameOfStringEncoding(kWindowsCP1252StringEncoding));
  ASSERT_EQ(qif.entries.size(), 1u);
  EXPECT_EQ(qif.entries[0].find("toFrom")->stringValue(), "Caf\xC3\xA9 M\xC3\xBCller");

  const ImportedFile latin1 = ReadImportedFile(kData + "/ofx/charset_none_latin1.ofx", {});
  EXPECT_EQ(latin1.encoding, NameOfStringEncoding(kISOLatin1StringEncoding));
  const ImportedFile utf16 = ReadImportedFile(kData + "/ofx/utf16_unicode_header.ofx", {});
  EXPECT_EQ(utf16.format, ImportFormat::OFX);
  EXPECT_EQ(utf16.encoding, NameOfStringEncoding(kUnicodeStringEncoding));
}

TEST_F(ReadImportedFileTest, TriesTheTolerantOFXReadingOnlyAfterTheFaithfulOneRefuses) {
  const std::string good = kData + "/import/review/march_statement.ofx";
  const ImportedFile faithful = ReadImportedFile(good, {});
  EXPECT_FALSE(faithful.tolerant);
  ASSERT_EQ(faithful.statements.size(), 1u);
  EXPECT_EQ(faithful.statements[0].name, "5550001");
  EXPECT_EQ(faithful.statements[0].currency, "USD");
  EXPECT_EQ(faithful.entries.size(), 4u);

  const std::string escaped = kData + "/import/review/march_overlap_escaped_ampersand.ofx";
  const ImportedFile tolerant = ReadImportedFile(escaped, {});
  EXPECT_TRUE(tolerant.tolerant);
  EXPECT_NE(tolerant.faithfulFailure.find("XML"), std::string::npos) << tolerant.faithfulFailure;
  EXPECT_EQ(tolerant.entries.size(), 4u);

  ImportFileOptions strict;
  strict.tolerantOFX = false;
  EXPECT_THROW(ReadImportedFile(escaped, strict), FileError);
  try {
    ReadImportedFile(kData + "/import/review/truncated_before_ofx_end.ofx", {});
    FAIL() << "a file without </OFX> loaded";
  } catch (const FileError& error) {
    // Both readings' reasons, and the file named.
    EXPECT_NE(error.reason().find("tolerant reading"), std::string::npos) << error.what();
    EXPECT_NE(std::string(error.what()).find("truncated_before_ofx_end.ofx"), std::string::npos);
  }
}

TEST_F(ReadImportedFileTest, TextNeedsALayoutAndShowsItsFirstLine) {
  const std::string csv = kData + "/import/review/heading_quoted_comma_debit_credit.csv";
  const ImportedFile undescribed = ReadImportedFile(csv, {});
  EXPECT_EQ(undescribed.format, ImportFormat::Text);
  EXPECT_TRUE(undescribed.entries.empty());
  EXPECT_EQ(undescribed.firstLineFields,
            (std::vector<std::string>{"Date", "Description", "Debit", "Credit", "Category"}));

  ImportFileOptions options;
  options.text.dataLayout = std::vector<std::int32_t>{20, 30, 80, 90, 100};
  options.text.skipFirstRow = true;
  options.text.dateFormat = *ImportDateFormatIndex("%m/%d/%Y");
  const ImportedFile described = ReadImportedFile(csv, options);
  ASSERT_EQ(described.entries.size(), 3u);
  EXPECT_EQ(described.entries[0].find("description")->stringValue(), "Corner Grocer, Main St");
  EXPECT_EQ(described.entries[0].find("date")->intValue(), 20260302);
  EXPECT_DOUBLE_EQ(described.entries[1].find("amount")->doubleValue(), 2150.0);

  // The format forced by the caller wins over the content.
  options.format = ImportFormat::QIF;
  EXPECT_EQ(ReadImportedFile(csv, options).format, ImportFormat::QIF);
}

TEST_F(ReadImportedFileTest, RefusesMissingEmptyAndUnknownFilesNamingThem) {
  const auto reason = [](const std::string& path) {
    try {
      ReadImportedFile(path, {});
    } catch (const FileError& error) {
      EXPECT_EQ(error.path(), path);
      return error.reason();
    }
    return std::string("loaded");
  };
  EXPECT_EQ(reason(kData + "/import/review/no_such_file.qif"), "the file cannot be read");
  EXPECT_EQ(reason(kData + "/import/review/binary_not_an_import.bin"),
            "not a QIF, OFX or comma- or tab-separated text file");
}

}  // namespace
}  // namespace tarn

TEST(LeadingTextLines, SplitsTheFirstLinesAsTheImporterReadsThem) {
  // Quoted commas and doubled quotes, every line end, empty lines skipped.
  const std::string text =
      "Date,\"Payee, Inc\",Amount\r\n\r\n1/2/2026,\"Say \"\"hi\"\"\",-3.50\r4/5/2026,,7\n";
  const auto lines = tarn::LeadingTextLineFields(text, false, 10);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], (std::vector<std::string>{"Date", "Payee, Inc", "Amount"}));
  EXPECT_EQ(lines[1], (std::vector<std::string>{"1/2/2026", "Say \"hi\"", "-3.50"}));
  EXPECT_EQ(lines[2], (std::vector<std::string>{"4/5/2026", "", "7"}));
  // At most the lines asked for; tabs keep commas inside a field.
  const auto tabs = tarn::LeadingTextLineFields("a,b\tc\t\nd\te\n", true, 1);
  ASSERT_EQ(tabs.size(), 1u);
  EXPECT_EQ(tabs[0], (std::vector<std::string>{"a,b", "c", ""}));
  EXPECT_TRUE(tarn::LeadingTextLineFields("\n\r\n", false, 5).empty());

  // Every role has one code and one name; skip comes last.
  const auto& roles = tarn::TextColumnRoles();
  std::set<std::int32_t> codes;
  std::set<std::string_view> names;
  for (const auto& role : roles) {
    codes.insert(role.code);
    names.insert(role.name);
  }
  EXPECT_EQ(codes.size(), roles.size());
  EXPECT_EQ(names.size(), roles.size());
  EXPECT_EQ(roles.back().code, -1);
}
