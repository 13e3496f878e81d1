#include "tarn/import/qif_import.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "import/import_test_support.h"
#include "tarn/platform/log.h"
#include "tarn/platform/text.h"

namespace tarn {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;

Array EntriesOf(const std::string& qif, TARNQIFImport* options = nullptr) {
  TARNQIFImport importer = options ? *options : TARNQIFImport();
  importer.SetDataString(qif);
  return importer.Entries();
}

using testing::Key;

TEST(QIFImport, NormalisationPutsACarriageReturnBeforeEveryLine) {
  TARNQIFImport importer;
  EXPECT_EQ(importer.error(), kQIFImportNoError);
  importer.SetDataString("a\nb\r\nc\n");
  // The final line feed is one past the replaced range and stays.
  EXPECT_EQ(importer.dataString(), "\ra\rb\r\rc\n");
  importer.SetDataString(std::nullopt);
  EXPECT_EQ(importer.dataString(), "");
  EXPECT_EQ(importer.error(), kQIFImportNoData);
  EXPECT_EQ(TARNQIFImport::initWithString(std::string())->dataString(), "\r");
}

TEST(QIFImport, RecordsNeedTheirCaretAndFieldsMayComeInAnyOrder) {
  const Array entries = EntriesOf("!Type:Bank\nT-5.00\nXunknown\nD1/2/07\nPShop\n^\nD1/3/07\nT7\n");
  ASSERT_EQ(entries.size(), 1u);  // the second record has no "^"
  EXPECT_EQ(entries[0], Value(Dictionary{{"amount", -5.0},
                                         {"cleared", false},
                                         {"date", 20070102},
                                         {"isDeposit", false},
                                         {"toFrom", std::string("Shop")}}));
  // CRLF files and blank pieces: empty lines are tolerated, "^^" is no record.
  EXPECT_EQ(EntriesOf("!Type:Bank\r\nD1/2/07\r\nT1\r\n^\r\n^\r\n").size(), 1u);
  // A file of bare records is a bank list; a file with only other sections is not.
  EXPECT_EQ(EntriesOf("D1/2/07\nT1\n^\nT2\n^\n").size(), 2u);
  EXPECT_EQ(EntriesOf("!Type:Invst\nD1/2/07\nT1\n^\n").size(), 0u);
}

TEST(QIFImport, AmountsDatesAndTheZeroAmountOption) {
  Array entries =
      EntriesOf("!Type:Bank\nD1/5'03\nT(1,234.50)\n^\nD12/31/99\nT0.00\n^\nPNo amount\n^\n");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), -1234.5);
  EXPECT_FALSE(Key(entries[0], "isDeposit").boolValue());
  EXPECT_EQ(Key(entries[0], "date").intValue(), 20030105);
  EXPECT_EQ(Key(entries[1], "date").intValue(), 19991231);
  EXPECT_TRUE(Key(entries[1], "isDeposit").boolValue());
  EXPECT_EQ(Key(entries[2], "amount").doubleValue(), 0.0);
  EXPECT_TRUE(Key(entries[2], "isDeposit").boolValue());
  EXPECT_TRUE(Key(entries[2], "date").isNil());

  TARNQIFImport options;
  options.SetImportZeroAmountsAsDeposits(false);
  options.SetDecimalSeparator(",");
  options.SetThousandsSeparator(".");
  options.SetDecimalSeparator(std::nullopt);  // nil keeps the separator
  options.SetDateFormat("%d/%m/%Y");
  entries = EntriesOf("!Type:Bank\nD15.01.2005\nT1.234,56\n^\nD31/02/2005\nT0,00\n^\n", &options);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(Key(entries[0], "amount").doubleValue(), 1234.56);
  EXPECT_EQ(Key(entries[0], "date").intValue(), 20050115);
  EXPECT_EQ(Key(entries[1], "date").intValue(), 0);  // no such day
  EXPECT_FALSE(Key(entries[1], "isDeposit").boolValue());
}

TEST(QIFImport, SwapOptionsClearedMarksAndNumbers) {
  const std::string record =
      "!Type:Bank\nPPayee\nMMemo\nLFood:Lunch\nC\nN1001\n^\n"
      "Cc\nNcheck\n^\nCX\nN99999999999\n^\n";
  Array entries = EntriesOf(record);
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(Key(entries[0], "toFrom").stringValue(), "Payee");
  EXPECT_EQ(Key(entries[0], "description").stringValue(), "Memo");
  EXPECT_EQ(Key(entries[0], "category").stringValue(), "Food:Lunch");
  EXPECT_FALSE(Key(entries[0], "cleared").boolValue());  // an empty C line
  EXPECT_EQ(Key(entries[0], "number").intValue(), 1001);
  EXPECT_TRUE(Key(entries[1], "cleared").boolValue());  // any mark at all
  EXPECT_EQ(Key(entries[1], "number"), Value(0));       // a word reads as 0
  EXPECT_TRUE(Key(entries[2], "number").isNil());       // overflow leaves it out

  TARNQIFImport swapped;
  swapped.SetSwapOptions_ToFrom(kImportFieldDescription);
  swapped.SetSwapOptions_Description(kImportFieldCategory);
  swapped.SetSwapOptions_Category(7);  // dropped
  entries = EntriesOf(record, &swapped);
  EXPECT_EQ(Key(entries[0], "description").stringValue(), "Payee");
  EXPECT_EQ(Key(entries[0], "category").stringValue(), "Memo");
  EXPECT_TRUE(Key(entries[0], "toFrom").isNil());

  // Two lines sent to one key: the later in the order P, M, L wins.
  TARNQIFImport collide;
  collide.SetSwapOptions_ToFrom(kImportFieldCategory);
  entries = EntriesOf(record, &collide);
  EXPECT_EQ(Key(entries[0], "category").stringValue(), "Food:Lunch");
  collide.SetSwapOptions_Category(kImportFieldDescription);
  entries = EntriesOf(record, &collide);
  EXPECT_EQ(Key(entries[0], "category").stringValue(), "Payee");
  EXPECT_EQ(Key(entries[0], "description").stringValue(), "Food:Lunch");
}

TEST(QIFImport, SplitsFlipTheirSignAndNeedMatchingLists) {
  auto splitsOf = [](const std::string& body, bool read = true) {
    TARNQIFImport importer;
    importer.SetImportSplitLineItems(read);
    importer.SetDataString("!Type:Bank\n" + body + "^\n");
    const Array entries = importer.Entries();
    EXPECT_EQ(entries.size(), 1u);
    return entries.empty() ? Value() : Key(entries[0], "splits");
  };
  auto split = [](double amount, const char* category, const char* description) {
    return Value(Dictionary{{"amount", amount},
                            {"category", std::string(category)},
                            {"description", std::string(description)}});
  };
  EXPECT_EQ(splitsOf("T-100\nSA\nEa\n$30\nSB\nEb\n$70\n"),
            Value(Array{split(-30, "A", "a"), split(-70, "B", "b")}));
  EXPECT_EQ(splitsOf("T-100\nSA\n$-30\nSB\n$-70\n"),
            Value(Array{split(-30, "A", ""), split(-70, "B", "")}));
  EXPECT_EQ(splitsOf("T100\nEa\n$30\nEb\n$70\n"),
            Value(Array{split(30, "", "a"), split(70, "", "b")}));
  EXPECT_TRUE(splitsOf("T100\nSA\n$30\nSB\n$60\n").isNil());     // does not add up
  EXPECT_TRUE(splitsOf("T100\nSA\nSB\n$100\n").isNil());         // lists of other lengths
  EXPECT_TRUE(splitsOf("T100\n$100\n").isNil());                 // neither S nor E
  EXPECT_TRUE(splitsOf("T100\nSA\nEa\n$100\n", false).isNil());  // option off
  EXPECT_TRUE(splitsOf("T5\nSA\nEa\n").isNil());                 // no amounts
  // Empty split lines count, except as the record's very last line.
  EXPECT_EQ(splitsOf("T10\nS\nE\n$10\n"), Value(Array{split(10, "", "")}));
  EXPECT_EQ(splitsOf("T10\nSA\nEa\n$10\nS"), Value(Array{split(10, "A", "a")}));
  // Within 0.01 of the total.
  EXPECT_FALSE(splitsOf("T10.00\nSA\n$3.33\nSB\n$6.66\n").isNil());
}

TEST(QIFImport, SectionTypesAndAccountBlocks) {
  // Entries() trims and ignores case; the account operations match exactly.
  const std::string file =
      "!Account\nNChecking\nTBank\n^\n!type:bank \nD1/1/07\nT1\n^\n"
      "!Account\nNBrokerage\nTInvst\n^\n!Type:Invst\nD1/2/07\nT2\n^\n"
      "!Account\nNCard\nTCCard\n^\n!Type:CCard\nD1/3/07\nT-3\n^\n!Type:Bank\nD1/4/07\nT4\n^\n";
  TARNQIFImport importer;
  importer.SetDataString(file);
  // The lower-case section makes no block valid, so Checking goes with Brokerage.
  EXPECT_EQ(importer.AccountNames(), std::vector<std::string>{"Card"});
  const Array entries = importer.Entries();
  ASSERT_EQ(entries.size(), 2u);
  // Grouped by section type: the Bank section before the CCard one.
  const Array card = importer.EntriesForAccountWithName("Card");
  ASSERT_EQ(card.size(), 2u);
  EXPECT_EQ(Key(card[0], "amount").doubleValue(), 4.0);
  EXPECT_EQ(Key(card[1], "amount").doubleValue(), -3.0);
  EXPECT_TRUE(importer.EntriesForAccountWithName("Nobody").empty());

  // With an exact header both remain; an investment account goes with its header.
  importer.SetDataString(file.substr(0, 27) + "!Type:Bank\n" + file.substr(39));
  EXPECT_EQ(importer.AccountNames(), (std::vector<std::string>{"Checking", "Card"}));
  EXPECT_EQ(importer.dataString().find("Brokerage"), std::string::npos);
  const Dictionary parsed = importer.parse();
  ASSERT_EQ(parsed.at("accounts").arrayValue().size(), 2u);
  EXPECT_EQ(Key(parsed.at("accounts").arrayValue()[0], "name").stringValue(), "Checking");
  EXPECT_EQ(parsed.at("entries").arrayValue().size(), 3u);
  // A prefix finds the first account that begins with it.
  ASSERT_TRUE(importer.AccountWithName("Che").has_value());
  EXPECT_TRUE(importer.AccountWithName("Che")->starts_with("Account\rNChecking"));

  // A header directly followed by another: nothing is removed.
  importer.SetDataString("!Account\n!Account\nNInv\nTInvst\n^\n!Type:Invst\n^\n");
  EXPECT_NE(importer.dataString().find("Inv"), std::string::npos);
  const Array kept = importer.parse().at("accounts").arrayValue();
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(Key(kept[0], "name").stringValue(), "Inv");
  EXPECT_TRUE(Key(kept[0], "entries").arrayValue().empty());
}

TEST(QIFImport, ASectionMarkerInsideARecordNeverReadsRecordsTwice) {
  // Found by fuzzing: a "!Type:Bank" in the middle of a line of a Cash
  // section is part of that section, for the file and for its account.
  TARNQIFImport importer;
  importer.SetDataString(
      "!Account\nNMy Cash\nTCash\n^\n!Type:Cash\nT1\n^\nMsee !Type:Bank\nT2\n^\n");
  EXPECT_EQ(importer.Entries().size(), 2u);
  EXPECT_EQ(importer.EntriesForAccountWithName("My Cash").size(), 2u);
  EXPECT_EQ(Key(importer.parse().at("accounts").arrayValue()[0], "entries").arrayValue().size(),
            2u);
}

TEST(QIFImport, AccountsWithOneNameEachKeepTheirOwnEntries) {
  TARNQIFImport importer;
  importer.SetDataString(
      "!Account\nNCash\nTBank\n^\n!Type:Bank\nT1\n^\n!Account\nNCash\nTBank\n^\n!Type:Bank\nT2\n^\n"
      "!Account\nNCashbox\n^\n!Type:Cash\nT3\n^\n");
  const Array accounts = importer.parse().at("accounts").arrayValue();
  ASSERT_EQ(accounts.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    const Array& own = Key(accounts[i], "entries").arrayValue();
    ASSERT_EQ(own.size(), 1u);
    EXPECT_EQ(Key(own[0], "amount").doubleValue(), static_cast<double>(i + 1));
  }
  // Looked up by name, both "Cash" accounts give the first one's entries.
  EXPECT_EQ(importer.EntriesForAccountWithName("Cash").size(), 1u);
  EXPECT_EQ(Key(importer.EntriesForAccountWithName("Cashbox")[0], "amount").doubleValue(), 3.0);
}

TEST(QIFImport, AutoSwitchBlockIsRemovedOrRefused) {
  std::vector<std::string> logged;
  auto previous = SetLogSink([&](std::string_view line) { logged.emplace_back(line); });
  TARNQIFImport importer;
  importer.SetDataString(
      "!Option:AutoSwitch\n!Account\nNSavings\nTBank\n^\nNVisa\nTCCard\n^\n!Clear:AutoSwitch\n"
      "!Account\nNSavings\nTBank\n^\n!Type:Bank\nD1/1/07\nT5\n^\n");
  EXPECT_EQ(importer.error(), kQIFImportNoError);
  EXPECT_EQ(importer.AccountNames(), std::vector<std::string>{"Savings"});
  EXPECT_EQ(importer.Entries().size(), 1u);
  EXPECT_TRUE(logged.empty());

  importer.SetDataString("!Option:AutoSwitch\n!Account\nNSavings\n^\n!Type:Bank\nT5\n^\n");
  EXPECT_EQ(importer.error(), kQIFImportUnterminatedAutoSwitch);
  EXPECT_TRUE(importer.Entries().empty());
  EXPECT_EQ(logged, std::vector<std::string>{
                        "No end to !Option:AutoSwitch tag in [TARNQIFImport SetDataString:]."});
  SetLogSink(previous);
}

TEST(QIFImport, CategoriesFromTheSectionAndFromEntries) {
  TARNQIFImport importer;
  importer.SetDataString(
      "!Type:Cat\nNSalary\nI\n^\nNFood\nE\n^\nDNo name\n^\nNFood\n^\n"
      "!Type:Bank\nLfood\nT1\n^\nLRent\nT2\n^\nLRent\nT3\n^\n!Type:Cat\nNLater\n^\n");
  EXPECT_EQ(importer.EntryCategories(),
            (std::vector<std::string>{"Salary", "Food", "Food", "Rent"}));
  EXPECT_EQ(importer.EntryCategoryStringToEntryCategory("\rNSalary\rI\r"),
            Value(Dictionary{{"isDeposit", true}, {"name", std::string("Salary")}}));
  EXPECT_TRUE(importer.EntryCategoryStringToEntryCategory("\rDx\r").isNil());
  EXPECT_EQ(importer.EntryTypeListStringToEntryTypes("\rNATM\r^\rNPay\rI\r^").size(), 2u);
  const Dictionary parsed = importer.parse();
  EXPECT_EQ(parsed.at("categories").arrayValue().size(), 4u);
  EXPECT_EQ(parsed.at("entries").arrayValue().size(), 3u);
}

TEST(QIFImport, ClassOperationsAndSettings) {
  EXPECT_EQ(TARNQIFImport::validListTypes(),
            (std::vector<std::string>{"Bank", "CCard", "Cash", "Oth L", "Oth A"}));
  EXPECT_EQ(TARNQIFImport::StringToEntries(std::nullopt), Array{});
  EXPECT_FALSE(TARNQIFImport::StringToEntries("!Type:Bank\nT1\n^\n").has_value());

  TARNQIFImport importer;
  importer.setSourceName(std::nullopt);
  EXPECT_EQ(importer.sourceName(), "");
  QIFImportSettings settings;
  settings.decimalSeparator = ",";
  settings.swapToFrom = 2;
  settings.splitLineItems = false;
  importer.SetSettings(settings, "%d/%m/%Y");
  EXPECT_EQ(importer.GetDecimalSeparator(), ",");
  EXPECT_EQ(importer.GetThousandsSeparator(), ",");  // empty in the settings: kept
  EXPECT_EQ(importer.GetSwapOptions_ToFrom(), 2);
  EXPECT_FALSE(importer.GetImportSplitLineItems());
  EXPECT_EQ(importer.TweakDateString("15.1.2005"), "15/1/2005");
  EXPECT_EQ(importer.TweakAmountString("1.234,5"), "1.2345");  // thousands "," too
}

TEST(QIFImport, FilesAreDecodedInTheirEncodingOrAsTheBytesSuggest) {
  const std::string dir = TARN_TEST_DATA_DIR "/import/";
  auto latin1 = TARNQIFImport::initWithContentsOfFile(dir + "latin1_crlf_payee.qif",
                                                      kISOLatin1StringEncoding);
  ASSERT_EQ(latin1->Entries().size(), 1u);
  EXPECT_EQ(Key(latin1->Entries()[0], "toFrom").stringValue(), "Caf\u00e9 M\u00fcller");
  // Stored as UTF-8 but not valid in it: read in the system's 8-bit encoding.
  auto fallback =
      TARNQIFImport::initWithContentsOfFile(dir + "cp1252_cr_only.qif", kUTF8StringEncoding);
  EXPECT_EQ(Key(fallback->Entries()[0], "toFrom").stringValue(), "\u201cQuoted\u201d \u20ac shop");
  auto cp1252 = TARNQIFImport::initWithContentsOfFile(dir + "cp1252_cr_only.qif",
                                                      kWindowsCP1252StringEncoding);
  EXPECT_EQ(cp1252->parse(), fallback->parse());

  auto missing = TARNQIFImport::initWithContentsOfFile(dir + "no_such_file.qif", 4);
  EXPECT_EQ(missing->error(), kQIFImportNoError);
  EXPECT_TRUE(missing->dataString().empty());
  EXPECT_EQ(TARNQIFImport::initWithContentsOfFile(std::nullopt, 4)->error(), kQIFImportNoData);
}

// The plain reading of one record: every field searched from the record's
// start by its marker, as the format's description puts it.
Value ReferenceRecord(std::string_view record) {
  auto field = [&](char code) -> std::optional<std::string> {
    const std::string marker = std::string("\r") + code;
    const std::size_t at = record.find(marker);
    if (at == std::string_view::npos) return std::nullopt;
    const std::size_t start = at + 2;
    const std::size_t end = std::min(record.find('\r', start), record.size());
    if (end == start) return std::nullopt;
    return std::string(record.substr(start, end - start));
  };
  Dictionary entry;
  const auto amountText = field('T');
  const double amount =
      amountText ? LeadingDecimalNumber(TweakAmountString(*amountText, ".", ",")) : 0.0;
  entry.insert_or_assign("amount", amount);
  entry.insert_or_assign("isDeposit", amount != 0.0 ? amount > 0.0 : true);
  entry.insert_or_assign("cleared", field('C').has_value());
  if (auto date = field('D')) entry.insert_or_assign("date", ImportDateNumber(*date, "%m/%d/%y"));
  if (auto text = field('P')) entry.insert_or_assign("toFrom", *text);
  if (auto text = field('M')) entry.insert_or_assign("description", *text);
  if (auto text = field('L')) entry.insert_or_assign("category", *text);
  if (auto text = field('N')) {
    if (LeadingInteger(*text) != INT32_MAX) entry.insert_or_assign("number", LeadingInteger(*text));
  }
  return entry;
}

TEST(QIFImport, OnePassOverARecordMatchesTheMarkerSearches) {
  std::mt19937 random(12);
  const char codes[] = "DTPMCLNXU";
  const std::vector<std::string> texts = {"", "1/2/07", "12.5", "(3)", "x", "Shop", "99999999999"};
  TARNQIFImport importer;
  importer.SetImportSplitLineItems(false);
  for (int round = 0; round < 3000; ++round) {
    std::string record;
    const int lines = static_cast<int>(random() % 12);
    for (int i = 0; i < lines; ++i) {
      record += random() % 5 == 0 ? "" : "\r";  // now and then a line glued to the last
      record += codes[random() % 9];
      record += texts[random() % texts.size()];
    }
    if (random() % 2) record += "\r";
    if (record.find_first_not_of("\r \t") == std::string::npos) continue;
    EXPECT_EQ(importer.EntryStringToEntry(record), ReferenceRecord(record)) << record;
  }
}

// A file of many sections, account blocks and categories in mixed case, with
// "!" inside lines: the plain reading (a search for "\r!" after each section
// header, every entry's category compared with the list) is the reference
// for what parse gathers in one pass.
std::string GeneratedQif(std::mt19937& random) {
  const char* const headers[] = {"!Type:Bank", "!Type:cash ", "!Type:CCard", "!Type:Invst",
                                 "!Type:Oth A"};
  const char* const categories[] = {
      "Food", "FOOD", "food:Bars", "Rent", "R\u00e9sum\u00e9", "R\u00c9SUM\u00c9", "Pay!day"};
  std::string qif = "!Type:Cat\nNFood\nE\n^\nNSalary\nI\n^\n";
  for (int account = 0; account < 3; ++account) {
    if (random() % 2) {
      qif += "!Account\nNAccount " + std::to_string(account) + "\nTBank\n^\n";
    }
    const int sections = 1 + static_cast<int>(random() % 3);
    for (int section = 0; section < sections; ++section) {
      qif += headers[random() % std::size(headers)];
      qif += "\n";
      const int records = static_cast<int>(random() % 30);
      for (int record = 0; record < records; ++record) {
        qif += "D1/" + std::to_string(1 + random() % 28) + "'07\nT" +
               std::to_string(static_cast<int>(random() % 2000) - 1000) + ".25\n";
        qif += random() % 3 ? "PShop! Now\n" : "P!Bang\n";
        if (random() % 4)
          qif += std::string("L") + categories[random() % std::size(categories)] + "\n";
        qif += random() % 5 ? "^\n" : "^\r\n";
      }
    }
  }
  return qif;
}

Array PlainEntries(const TARNQIFImport& importer, std::string_view text) {
  Array entries;
  for (std::size_t at = text.find("!Type:"); at != std::string_view::npos;) {
    const std::size_t start = at + 6;
    std::string type(text.substr(start, text.find('\r', start) - start));
    while (!type.empty() && type.back() == ' ') type.pop_back();
    bool valid = false;
    for (const std::string& candidate : TARNQIFImport::validListTypes()) {
      valid = valid || CaseInsensitiveEqual(type, candidate);
    }
    std::size_t end = text.find("\r!", start);
    if (end == std::string_view::npos) end = text.size();
    if (valid) {
      for (Value& entry : importer.EntryListStringToEntries(text.substr(start, end - start))) {
        entries.push_back(std::move(entry));
      }
    }
    at = text.find("!Type:", valid ? end : start);
  }
  return entries;
}

TEST(QIFImport, ParseGathersWhatThePlainReadingFinds) {
  std::mt19937 random(21);
  for (int round = 0; round < 60; ++round) {
    TARNQIFImport importer;
    importer.SetDataString(GeneratedQif(random));
    const Dictionary parsed = importer.parse();
    const Array expected = PlainEntries(importer, importer.dataString());
    EXPECT_EQ(parsed.at("entries").arrayValue(), expected) << round;

    std::vector<std::string> names =
        importer.EntryCategoryListStringToEntryCategories(importer.entryCategoriesListString());
    std::vector<std::string> fromEntries;
    for (const Value& entry : expected) {
      const Value* category = entry.find("category");
      if (!category) continue;
      bool known = false;
      for (const std::string& name : names) {
        known = known || CaseInsensitiveEqual(name, category->stringValue());
      }
      if (!known) names.push_back(category->stringValue());
    }
    Array categories(names.begin(), names.end());
    EXPECT_EQ(parsed.at("categories").arrayValue(), categories) << round;
    EXPECT_EQ(importer.EntryCategories(), names) << round;

    // Each named account: its exact sections, grouped in the order of the
    // valid types.
    const auto found = parsed.find("accounts");
    const Array noAccounts;
    const Array& accounts = found != parsed.end() ? found->second.arrayValue() : noAccounts;
    const std::vector<std::string> accountNames = importer.AccountNames();
    ASSERT_EQ(accounts.size(), accountNames.size());
    for (std::size_t i = 0; i < accountNames.size(); ++i) {
      const std::string_view account = *importer.AccountWithName(accountNames[i]);
      Array plain;
      for (const std::string& type : TARNQIFImport::validListTypes()) {
        const std::string marker = "!Type:" + type;
        for (std::size_t at = account.find(marker); at != std::string_view::npos;
             at = account.find(marker, at + 1)) {
          const std::size_t start = at + 6;
          std::size_t end = account.find("\r!", start);
          if (end == std::string_view::npos) end = account.size();
          for (Value& entry :
               importer.EntryListStringToEntries(account.substr(start, end - start))) {
            plain.push_back(std::move(entry));
          }
        }
      }
      const Value& read = accounts[i];
      EXPECT_EQ(Key(read, "name").stringValue(), accountNames[i]);
      EXPECT_EQ(Key(read, "entries").arrayValue(), plain) << accountNames[i];
    }
  }
}

}  // namespace
}  // namespace tarn
