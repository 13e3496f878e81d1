#include "tarn/import/text_import.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "import/import_test_support.h"

namespace tarn {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;

using testing::Key;

Array Read(const std::string& text, std::vector<std::int32_t> layout,
           TARNTextImport importer = TARNTextImport()) {
  importer.SetDataLayout(std::move(layout));
  importer.SetDataString(text);
  return importer.Entries();
}

TEST(TextImport, CommaSeparatedLinesWithALayout) {
  Array entries = Read("01/15/05,Coffee,-3.50", {kColumnDate, kColumnDescription, kColumnAmount});
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0], Value(Dictionary{{"amount", -3.5},
                                         {"date", 20050115},
                                         {"description", std::string("Coffee")},
                                         {"isDeposit", false}}));

  // A heading after two empty lines is the first row; quoted commas stay in a field.
  TARNTextImport skip;
  skip.SetSkipFirstRow(true);
  entries = Read("\n\r\nDate,Description,Amount\n01/15/05,\"Coffee, large\",\"1,234.50\"\n",
                 {kColumnDate, kColumnDescription, kColumnAmount}, skip);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(Key(entries[0], "description").stringValue(), "Coffee, large");
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), 1234.5);
  // The final line feed, which the normalisation leaves, ends the line: no
  // stray line feed in the last field.
  EXPECT_EQ(Read("x,Tea\n", {99, kColumnDescription})[0].find("description")->stringValue(), "Tea");

  // Short lines fill what they have; extra fields and unknown codes are ignored.
  entries = Read("01/15/05\n01/16/05,Tea,2,extra", {kColumnDate, kColumnDescription, 7, 55});
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_TRUE(Key(entries[0], "description").isNil());
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), 0.0);
  EXPECT_EQ(Key(entries[1], "description").stringValue(), "Tea");
  EXPECT_EQ(Key(entries[1], "amount").doubleValue(), 0.0);  // the "2" column has code 7
}

TEST(TextImport, DebitAndDepositColumns) {
  const std::vector<std::int32_t> layout{kColumnDebit, kColumnDeposit};
  Array entries = Read("12.00,\n12.00,0.00\n,7\n-3,-4\n,\n", layout);
  ASSERT_EQ(entries.size(), 5u);
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), -12.0);
  EXPECT_FALSE(Key(entries[0], "isDeposit").boolValue());
  EXPECT_TRUE(Key(entries[0], "positiveAmount").isNil());     // an empty field gives no key
  EXPECT_EQ(Key(entries[1], "amount").doubleValue(), -12.0);  // a zero deposit gives way
  EXPECT_EQ(Key(entries[1], "positiveAmount").doubleValue(), 0.0);
  EXPECT_EQ(Key(entries[2], "amount").doubleValue(), 7.0);
  EXPECT_EQ(Key(entries[3], "negativeAmount").doubleValue(), -3.0);  // signs are the column's
  EXPECT_EQ(Key(entries[3], "positiveAmount").doubleValue(), 4.0);
  EXPECT_EQ(Key(entries[3], "amount").doubleValue(), 4.0);
  EXPECT_EQ(Key(entries[4], "amount").doubleValue(), 0.0);
  // An amount column wins over both; the later of two columns of one role wins.
  entries = Read("5,1,2,9", {kColumnAmount, kColumnDebit, kColumnDeposit, kColumnAmount});
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), 9.0);
  TARNTextImport noZeroDeposits;
  noZeroDeposits.SetImportZeroAmountsAsDeposits(false);
  EXPECT_FALSE(Key(Read("0.00", {kColumnAmount}, noZeroDeposits)[0], "isDeposit").boolValue());
  EXPECT_TRUE(Key(Read("0.00", {kColumnAmount})[0], "isDeposit").boolValue());
}

TEST(TextImport, FlagsNumbersAndTabs) {
  const std::vector<std::int32_t> layout{kColumnCleared, kColumnTaxDeductible, kColumnNumber};
  const Array entries = Read("X,yes,101\nyes,X,check\n2,1,99999999999\n0,2,\nno,no,-5\n", layout);
  ASSERT_EQ(entries.size(), 5u);
  const bool cleared[] = {true, true, true, false, false};
  const bool taxed[] = {true, true, true, false, false};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(Key(entries[i], "cleared").boolValue(), cleared[i]) << i;
    EXPECT_EQ(Key(entries[i], "taxDeductible").isNil(), !taxed[i]) << i;
  }
  EXPECT_EQ(Key(entries[0], "number").intValue(), 101);
  EXPECT_EQ(Key(entries[1], "number"), Value(0));
  EXPECT_TRUE(Key(entries[2], "number").isNil());
  EXPECT_EQ(Key(entries[4], "number").intValue(), -5);

  // Tab-separated data honours no quotes.
  TARNTextImport tabs;
  tabs.SetDataFormat(kTextImportTabSeparated);
  const Array tabbed =
      Read("\"a,b\"\tShop\tFood\t1.5\t",
           {kColumnDescription, kColumnToFrom, kColumnCategory, kColumnAmount, kColumnType}, tabs);
  ASSERT_EQ(tabbed.size(), 1u);
  EXPECT_EQ(Key(tabbed[0], "description").stringValue(), "\"a,b\"");
  EXPECT_EQ(Key(tabbed[0], "toFrom").stringValue(), "Shop");
  EXPECT_EQ(Key(tabbed[0], "category").stringValue(), "Food");
  EXPECT_EQ(Key(tabbed[0], "type").stringValue(), "");
}

TEST(TextImport, TypesParseAndTypeLookups) {
  TARNTextImport importer;
  importer.SetDataLayout(std::vector<std::int32_t>{kColumnType, kColumnAmount});
  importer.SetDataString("ATM,-5\nATM,-6\nATM,7\natm,-1\nPay,3\n,2");
  const Dictionary parsed = importer.parse();
  EXPECT_EQ(parsed.at("entries").arrayValue().size(), 6u);
  auto type = [](const char* name, bool deposit) {
    return Value(Dictionary{{"isDeposit", deposit}, {"name", std::string(name)}});
  };
  EXPECT_EQ(parsed.at("types"),
            Value(Array{type("ATM", false), type("ATM", true), type("atm", false),
                        type("Pay", true), type("", true)}));
  EXPECT_EQ(importer.EntryTypes(), parsed.at("types").arrayValue());

  EXPECT_EQ(importer.DepositTypeWithName("ATM"), nullptr);  // nothing fills the list
  auto make = [](const char* name, bool deposit) {
    auto made = std::make_shared<TARNAccountEntryType>();
    made->SetName(std::string(name));
    made->SetIsDeposit(deposit);
    return made;
  };
  importer.types() = {make("ATM", false), make("ATM", true), make("Pay", true)};
  EXPECT_EQ(importer.DepositTypeWithName("ATM"), importer.types()[1]);
  EXPECT_EQ(importer.DebitTypeWithName("ATM"), importer.types()[0]);
  EXPECT_EQ(importer.DebitTypeWithName("Pay"), nullptr);
  EXPECT_EQ(importer.DepositTypeWithName("atm"), nullptr);  // names match exactly
}

TEST(TextImport, DataStringSettingsAndDefaults) {
  TARNTextImport importer;
  importer.SetDataString(std::nullopt);
  EXPECT_EQ(importer.error(), kTextImportNoData);
  EXPECT_TRUE(importer.Entries().empty());
  importer.SetDataString("a\nb\n");
  EXPECT_EQ(importer.dataString(), "\ra\rb\n");
  EXPECT_EQ(importer.error(), kTextImportNoError);
  EXPECT_TRUE(importer.EntryStringToEntry("").isNil());

  TextImportSettings settings;
  settings.dataLayout = std::vector<std::int32_t>{kColumnDate, kColumnAmount};
  settings.skipFirstRow = true;
  settings.decimalSeparator = ",";
  settings.thousandsSeparator = ".";
  settings.zeroAmountsAsDeposits = 0;
  importer.SetSettings(settings, "%d/%m/%Y");
  importer.SetDataString("Datum,Betrag\n15.01.2005,\"-1.234,50\"\n16.01.2005,0\n");
  const Array entries = importer.Entries();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(Key(entries[0], "date").intValue(), 20050115);
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), -1234.5);
  EXPECT_FALSE(Key(entries[1], "isDeposit").boolValue());
  importer.SetDataLayout(std::nullopt);
  EXPECT_TRUE(importer.GetDataLayout().empty());

  auto file = TARNTextImport::initWithContentsOfFile(
      TARN_TEST_DATA_DIR "/import/latin1_heading.csv", kISOLatin1StringEncoding);
  file->SetDataLayout(std::vector<std::int32_t>{kColumnDate, kColumnToFrom, kColumnAmount});
  file->SetSkipFirstRow(true);
  ASSERT_EQ(file->Entries().size(), 1u);
  EXPECT_EQ(Key(file->Entries()[0], "toFrom").stringValue(), "Caf\u00e9");
}

// Lines are split into views with one scratch buffer for quoted fields, and
// the types are gathered while the lines are read. Each line read on its own
// and the types taken from the finished entries are the reference; quoted
// types with doubled quotes live in the scratch buffer only while their line
// is read.
TEST(TextImport, ParseAgreesWithLinesReadOneByOne) {
  std::mt19937 random(17);
  const char* const types[] = {"ATM", "\"ATM\"", "\"say \"\"x\"\"\"", "\"a,b\"", "", "\"\"\"\""};
  const char* const amounts[] = {"-5", "7", "0", "\"(1,234.50)\"", "x"};
  for (const std::int32_t format : {kTextImportCommaSeparated, kTextImportTabSeparated}) {
    const char separator = format == kTextImportCommaSeparated ? ',' : '\t';
    std::string text;
    for (int line = 0; line < 400; ++line) {
      text += types[random() % std::size(types)];
      text += separator;
      text += amounts[random() % std::size(amounts)];
      text += separator;
      text += "Desc \"" + std::to_string(line) + "\"";
      text += random() % 7 ? "\n" : "\r\n\n";
    }
    TARNTextImport importer;
    importer.SetDataFormat(format);
    importer.SetDataLayout(
        std::vector<std::int32_t>{kColumnType, kColumnAmount, kColumnDescription});
    importer.SetDataString(text);
    const Dictionary parsed = importer.parse();

    Array expected;
    for (std::size_t start = 1; start < importer.dataString().size();) {
      std::size_t end = importer.dataString().find_first_of("\r\n", start);
      if (end == std::string::npos) end = importer.dataString().size();
      Value entry = importer.EntryStringToEntry(
          std::string_view(importer.dataString()).substr(start, end - start));
      if (!entry.isNil()) expected.push_back(std::move(entry));
      start = end + 1;
    }
    EXPECT_EQ(parsed.at("entries").arrayValue(), expected);

    Array expectedTypes;
    for (const Value& entry : expected) {
      const Value* type = entry.find("type");
      if (!type) continue;
      Value pair(Dictionary{{"isDeposit", Key(entry, "isDeposit").boolValue()},
                            {"name", type->stringValue()}});
      if (std::find(expectedTypes.begin(), expectedTypes.end(), pair) == expectedTypes.end()) {
        expectedTypes.push_back(pair);
      }
    }
    EXPECT_EQ(parsed.at("types").arrayValue(), expectedTypes);
    EXPECT_GT(expectedTypes.size(), 6u);
  }
  // A text handed in as it stands: line feeds end lines as carriage returns do.
  TARNTextImport importer;
  importer.SetDataLayout(std::vector<std::int32_t>{kColumnDescription, kColumnAmount});
  const Array entries = importer.EntryListStringToEntries("a,1\nb,2\r\r\nc,3\n");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(Key(entries[1], "description"), Value("b"));
  EXPECT_EQ(Key(entries[2], "amount"), Value(3.0));
}

}  // namespace
}  // namespace tarn
