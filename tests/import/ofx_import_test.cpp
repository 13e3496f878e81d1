// The OFX importer: loading (failures, encodings, the tolerant reading) and
// the statements and transactions that parse() reads.
#include <gtest/gtest.h>

#include <string>

#include "tarn/account/account_settings.h"
#include "tarn/import/ofx_import.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {
namespace {

const std::string kDataDir = std::string(TARN_TEST_DATA_DIR) + "/ofx/";

// An OFX 1 file: header, then a bank statement around the given transactions.
std::string ofx1(const std::string& transactions, const std::string& statementExtra = "") {
  return "OFXHEADER:100\nDATA:OFXSGML\nENCODING:USASCII\nCHARSET:1252\n\n"
         "<OFX>\n<BANKMSGSRSV1>\n<STMTTRNRS>\n<STMTRS>\n<CURDEF>USD\n" +
         statementExtra + "<BANKTRANLIST>\n" + transactions +
         "</BANKTRANLIST>\n</STMTRS>\n</STMTTRNRS>\n</BANKMSGSRSV1>\n</OFX>\n";
}

std::string ofx2(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<?OFX OFXHEADER=\"200\"?>\n<OFX>" + body +
         "</OFX>\n";
}

// The importer with the options a host sets from an account's defaults.
std::shared_ptr<TARNOFXImport> load(const std::string& bytes, bool tolerant = false) {
  auto importer = TARNOFXImport::loadFromBytes(bytes, {tolerant});
  if (importer) importer->SetOptions(OFXImportSettings{});
  return importer;
}

const plist::Array& entriesOf(const plist::Value& result, std::size_t account = 0) {
  return result.find("accounts")->arrayValue().at(account).find("entries")->arrayValue();
}

plist::Value onlyEntry(const std::string& bytes, bool tolerant = false) {
  auto importer = load(bytes, tolerant);
  if (!importer) return plist::Value("(not loaded)");
  const plist::Value result = importer->parse();
  const plist::Array& entries = entriesOf(result);
  return entries.size() == 1 ? entries[0] : plist::Value("(not one entry)");
}

std::string textOf(const plist::Value& entry, const char* key) {
  const plist::Value* value = entry.find(key);
  return value ? value->stringValue() : "(none)";
}

TEST(OFXImportLoading, EveryFailureGivesNullAndItsReason) {
  struct Case {
    std::string bytes;
    OFXLoadFailure failure;
  };
  const Case cases[] = {
      {"<OFX></", OFXLoadFailure::TooShort},
      {"OFXHEADER:100\nno statement here", OFXLoadFailure::NoOFXStart},
      {"OFXHEADER:100\n<OFX><CODE>0", OFXLoadFailure::NoOFXEnd},
      {"HEADER</OFX><OFX>", OFXLoadFailure::NoOFXEnd},
      {"OFXHEADER:100\n<OFX></OFX>", OFXLoadFailure::EmptyOFX},
      {"ENCODING:UTF-8\n<OFX><N>\xC3(</OFX>", OFXLoadFailure::Undecodable},
      {std::string("\xFE\xFF\xD8\x00\x00<\x00O\x00F", 10), OFXLoadFailure::Undecodable},
      {ofx1("<STMTTRN><NAME>A&amp;B</STMTTRN>"), OFXLoadFailure::XMLRejected},
      {ofx2("<BANKMSGSRSV1>"), OFXLoadFailure::XMLRejected},
  };
  for (const Case& c : cases) {
    OFXLoadError error;
    EXPECT_FALSE(TARNOFXImport::loadFromBytes(c.bytes, {}, &error)) << c.bytes;
    EXPECT_EQ(error.failure, c.failure) << c.bytes;
    EXPECT_FALSE(error.description().empty());
  }
  OFXLoadError error;
  EXPECT_FALSE(TARNOFXImport::initWithContentsOfFile(kDataDir + "no-such-file.ofx", {}, &error));
  EXPECT_EQ(error.failure, OFXLoadFailure::Unreadable);
  EXPECT_FALSE(TARNOFXImport::initWithContentsOfFile(kDataDir + "no-such-file.ofx"));

  // The doubled entity name is rejected where the parser meets it.
  const std::string doubled = ofx1("<STMTTRN><NAME>A&amp;B</STMTTRN>");
  ASSERT_FALSE(TARNOFXImport::loadFromBytes(doubled, {}, &error));
  EXPECT_NE(error.description().find("byte " + std::to_string(error.offset)), std::string::npos);
  const std::string xml = TARNOFXImport::escapePhysicalEntitiesInElementsInString(
      TARNOFXImport::addMissingEndTagsToElementsInString(doubled.substr(
          doubled.find("<OFX>"), doubled.find("</OFX>") + 6 - doubled.find("<OFX>"))));
  EXPECT_EQ(xml.substr(error.offset, 8), "&ampamp;");
}

TEST(OFXImportLoading, HeaderEncodingsDecideHowBytesAreRead) {
  const auto nameIn = [](const char* file, bool tolerant) {
    OFXLoadError error;
    auto importer = TARNOFXImport::initWithContentsOfFile(kDataDir + file, {tolerant}, &error);
    if (!importer) return "(" + error.description() + ")";
    importer->SetOptions(OFXImportSettings{});
    const plist::Value result = importer->parse();
    return textOf(entriesOf(result).at(0), "description");
  };
  const std::string cafe = "Caf\xC3\xA9 \xE2\x82\xAC";
  // Header and bytes agree on UTF-8, or on UTF-16 after a byte-order mark.
  EXPECT_EQ(nameIn("header_utf8.ofx", false), cafe);
  EXPECT_EQ(nameIn("utf16_unicode_header.ofx", false), cafe);
  // The faithful reading hands the parser Windows-1252 bytes, which are not
  // UTF-8, so accented Windows-1252 files load only tolerantly.
  EXPECT_EQ(nameIn("cp1252_accented_name.ofx", false).substr(0, 26), "(The file's XML was reject");
  EXPECT_EQ(nameIn("cp1252_accented_name.ofx", true), cafe);
  // CHARSET:1252, CHARSET:NONE, no fields: the euro byte 0x80 decodes as the
  // euro sign under Windows-1252 and as a control character under Latin-1.
  EXPECT_EQ(nameIn("charset_1252_euro.ofx", true), "X\xE2\x82\xACY");
  EXPECT_EQ(nameIn("no_header_fields.ofx", true), "X\xE2\x82\xACY");
  EXPECT_EQ(nameIn("charset_none_latin1.ofx", true), "X\xC2\x80Y");
  EXPECT_EQ(nameIn("charset_1250.ofx", true), "\xC5\x99\xC5\xA1");
  // A header that claims Windows-1252 over UTF-8 bytes: decoding and encoding
  // again gives the bytes back, which the parser reads as UTF-8.
  EXPECT_EQ(nameIn("header_claims_cp1252_bytes_utf8.ofx", false), cafe);
  EXPECT_EQ(nameIn("header_claims_cp1252_bytes_utf8.ofx", true), cafe);
  // A header that claims UTF-8 over Windows-1252 bytes cannot be decoded; the
  // tolerant reading falls back to Windows-1252.
  EXPECT_EQ(nameIn("header_claims_utf8_bytes_cp1252.ofx", false),
            "(The file's text is not valid Unicode (UTF-8).)");
  EXPECT_EQ(nameIn("header_claims_utf8_bytes_cp1252.ofx", true), cafe);
  // OFX 2 follows its XML declaration.
  EXPECT_EQ(nameIn("ofx2_declared_windows1252.ofx", false), "Caf\xC3\xA9");
}

TEST(OFXImportLoading, AmpersandsFaithfullyAndTolerantly) {
  // A bare ampersand reaches MEMO; NAME reads text children only and loses it.
  const plist::Value bare =
      onlyEntry(ofx1("<STMTTRN><TRNAMT>1<NAME>A&B<MEMO>C&D<PAYEE><NAME>E&F</PAYEE></STMTTRN>"));
  EXPECT_EQ(textOf(bare, "notes"), "C&D");
  EXPECT_EQ(textOf(bare, "description"), "AB");
  EXPECT_EQ(textOf(bare, "toFrom"), "EF");
  // Escaped ampersands fail the faithful load and pass the tolerant one,
  // where NAME and PAYEE/NAME keep them too.
  const std::string escaped = ofx1(
      "<STMTTRN><TRNAMT>1<NAME>A&amp;B<MEMO>C&amp;D &lt;x&gt; &#65;<PAYEE><NAME>E&F</PAYEE>"
      "</STMTTRN>");
  EXPECT_FALSE(load(escaped));
  const plist::Value tolerant = onlyEntry(escaped, true);
  EXPECT_EQ(textOf(tolerant, "description"), "A&B");
  EXPECT_EQ(textOf(tolerant, "notes"), "C&D <x> A");
  EXPECT_EQ(textOf(tolerant, "toFrom"), "E&F");
  // The faithful MEMO reading keeps amp and leaves out other references.
  const plist::Value memo = onlyEntry(
      ofx2("<BANKMSGSRSV1><STMTTRNRS><STMTRS><BANKTRANLIST><STMTTRN><MEMO>a&amp;b&lt;c</MEMO>"
           "<NAME>d&amp;e</NAME></STMTTRN></BANKTRANLIST></STMTRS></STMTTRNRS></BANKMSGSRSV1>"));
  EXPECT_EQ(textOf(memo, "notes"), "a&bc");
  EXPECT_EQ(textOf(memo, "description"), "de");
  // The walk stops at a doubled ampersand, losing "</OFX>" with the rest.
  EXPECT_FALSE(load(ofx1("<STMTTRN><NAME>A&&B</STMTTRN>")));
}

TEST(OFXImportLoading, XmlDeclarationDecidesTheFormAndTolerantReadingRetriesAsSgml) {
  // SGML without end tags under an XML declaration (any letter case).
  const std::string sgml = ofx1("<STMTTRN><TRNAMT>-3<NAME>N</STMTTRN>");
  const std::string declared = "<?XML version=\"1.0\"?>\n" + sgml.substr(sgml.find("<OFX>"));
  OFXLoadError error;
  EXPECT_FALSE(TARNOFXImport::loadFromBytes(declared, {}, &error));
  EXPECT_EQ(error.failure, OFXLoadFailure::XMLRejected);
  auto importer = TARNOFXImport::loadFromBytes(declared, {true}, &error);
  ASSERT_TRUE(importer) << error.description();
  EXPECT_TRUE(importer->loadedTolerantly());
  importer->SetOptions(OFXImportSettings{});
  EXPECT_EQ(entriesOf(importer->parse()).at(0).find("amount")->doubleValue(), -3.0);
  // Without the declaration the same text is OFX 1 and loads faithfully.
  importer = TARNOFXImport::loadFromBytes(sgml);
  ASSERT_TRUE(importer);
  EXPECT_FALSE(importer->loadedTolerantly());
}

TEST(OFXImportParse, TransactionFieldsAndSwapOptions) {
  CalendarDate::overrideNow(CalendarDate(2024, 6, 30));
  const std::string file = ofx1(
      "<STMTTRN><TRNTYPE>CHECK<DTUSER>20050102<DTPOSTED>20050105<TRNAMT>-1,234.50<FITID>F1"
      "<CHECKNUM>1001<REFNUM>R-7<MEMO>memo<PAYEE><NAME>payee</PAYEE><NAME>name</STMTTRN>"
      "<STMTTRN><TRNTYPE>DEP<DTUSER></DTUSER><TRNAMT>0.00<NAME>n<EXTDNAME>extended</STMTTRN>"
      "<STMTTRN><DTPOSTED>2005<MEMO></MEMO></STMTTRN>",
      "<BANKACCTFROM><ACCTID>12-34</BANKACCTFROM>");
  auto importer = TARNOFXImport::loadFromBytes(file);
  ASSERT_TRUE(importer);
  OFXImportSettings settings;  // name 2, payee 1, memo 4, type 3, refnum 5
  settings.zeroAmountsAsDeposits = false;
  importer->SetOptions(settings);
  plist::Value result = importer->parse();
  const plist::Value& account = result.find("accounts")->arrayValue().at(0);
  EXPECT_EQ(textOf(account, "currency"), "USD");
  EXPECT_EQ(textOf(account, "accountID"), "12-34");
  const plist::Array& entries = entriesOf(result);
  ASSERT_EQ(entries.size(), 3u);

  plist::Dictionary first;
  first["type"] = "CHECK";
  first["date"] = 20050102;
  first["cleared"] = true;
  first["amount"] = -1234.5;
  first["isDeposit"] = false;
  first["fitID"] = "F1";
  // CHECKNUM gave 1001, but REFNUM, read later into "number", reads "R-7" as 0.
  first["number"] = 0;
  first["notes"] = "memo";
  first["toFrom"] = "payee";
  first["description"] = "name";
  EXPECT_EQ(entries[0], plist::Value(first));

  // A DTUSER that is not simple gives no date, DTPOSTED untried; no DTPOSTED
  // means not cleared; zero is a debit here; EXTDNAME wins over NAME.
  const plist::Value& second = entries[1];
  EXPECT_FALSE(second.find("date"));
  EXPECT_FALSE(second.find("cleared")->boolValue());
  EXPECT_FALSE(second.find("isDeposit")->boolValue());
  EXPECT_EQ(textOf(second, "description"), "extended");
  // A date without eight digits is today; an empty MEMO still arrives.
  EXPECT_EQ(entries[2].find("date")->intValue(), 20240630);
  EXPECT_FALSE(entries[2].find("amount"));
  EXPECT_EQ(textOf(entries[2], "notes"), "");

  // -100 reads nothing; values outside the table drop the text; with NAME and
  // PAYEE/NAME both going to toFrom, NAME (read last) wins.
  importer->SetSwapOptions_TransactionType(kOFXSwapNotRead);
  importer->SetSwapOptions_ReferenceNumber(kOFXSwapNotRead);
  importer->SetSwapOptions_Memo(99);
  importer->SetSwapOptions_Name(kOFXSwapToFrom);
  importer->SetSwapOptions_Payee(kOFXSwapToFrom);
  result = importer->parse();
  const plist::Value& swapped = entriesOf(result)[0];
  EXPECT_FALSE(swapped.find("type"));
  EXPECT_FALSE(swapped.find("notes"));
  EXPECT_FALSE(swapped.find("description"));
  EXPECT_EQ(swapped.find("number")->intValue(), 1001);
  EXPECT_EQ(textOf(swapped, "toFrom"), "name");
  EXPECT_TRUE(result.find("types")->arrayValue().empty());
  CalendarDate::overrideNow(std::nullopt);
}

TEST(OFXImportParse, AmountsFollowTheSeparatorsAndZeroOption) {
  auto importer =
      load(ofx1("<STMTTRN><TRNAMT>1.234,56</STMTTRN><STMTTRN><TRNAMT>(7,5)</STMTTRN>"
                "<STMTTRN><TRNAMT>0</STMTTRN><STMTTRN><TRNAMT>-1.500</STMTTRN>"));
  ASSERT_TRUE(importer);
  importer->SetDecimalSeparator(",");
  importer->SetThousandsSeparator(".");
  importer->SetDecimalSeparator(std::nullopt);  // leaves ","
  plist::Value result = importer->parse();
  EXPECT_EQ(entriesOf(result)[0].find("amount")->doubleValue(), 1234.56);
  EXPECT_EQ(entriesOf(result)[1].find("amount")->doubleValue(), -7.5);
  EXPECT_TRUE(entriesOf(result)[2].find("isDeposit")->boolValue());
  // Plain-looking text still goes through the separators: "." groups thousands.
  EXPECT_EQ(entriesOf(result)[3].find("amount")->doubleValue(), -1500.0);
  // A thousands separator that plain text cannot hold leaves its point a decimal point.
  importer->SetThousandsSeparator(" ");
  result = importer->parse();
  EXPECT_EQ(entriesOf(result)[3].find("amount")->doubleValue(), -1.5);
  // A decimal separator made of a digit is replaced even in plain text.
  importer->SetDecimalSeparator("5");
  result = importer->parse();
  EXPECT_EQ(entriesOf(result)[3].find("amount")->doubleValue(), -1.0);
}

TEST(OFXImportParse, TypesArePairsOfNameAndDirection) {
  auto importer = load(ofx1(
      "<STMTTRN><TRNTYPE>DEBIT<TRNAMT>-5</STMTTRN><STMTTRN><TRNTYPE>DEBIT<TRNAMT>0</STMTTRN>"
      "<STMTTRN><TRNTYPE>DEBIT<TRNAMT>-1</STMTTRN><STMTTRN><TRNTYPE>debit<TRNAMT>-1</STMTTRN>"));
  ASSERT_TRUE(importer);
  const plist::Value result = importer->parse();
  plist::Array expected;
  for (auto [name, deposit] : {std::pair{"DEBIT", false}, {"DEBIT", true}, {"debit", false}}) {
    plist::Dictionary type;
    type["name"] = name;
    type["isDeposit"] = deposit;
    expected.push_back(type);
  }
  EXPECT_EQ(*result.find("types"), plist::Value(expected));
  // parse() gathers them while reading; the public step finds the same.
  EXPECT_EQ(importer->EntryTypesInAccounts(result.find("accounts")->arrayValue()), expected);
}

TEST(OFXImportParse, LoanStatementsSplitTheirPayments) {
  auto importer =
      TARNOFXImport::initWithContentsOfFile(kDataDir + "loan_escrow_parts_short_of_total.ofx");
  ASSERT_TRUE(importer);
  importer->SetOptions(OFXImportSettings{});
  const plist::Value result = importer->parse();
  const plist::Value& account = result.find("accounts")->arrayValue().at(0);
  EXPECT_EQ(textOf(account, "accountID"), "L-77");
  const plist::Array& entries = entriesOf(result);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(textOf(entries[0], "type"), "PAYMENT");
  const auto splitsOf = [](const plist::Value& entry) {
    std::vector<std::pair<std::string, double>> splits;
    for (const plist::Value& split : entry.find("splits")->arrayValue()) {
      splits.emplace_back(split.find("description")->stringValue(),
                          split.find("amount")->doubleValue());
    }
    return splits;
  };
  using Splits = std::vector<std::pair<std::string, double>>;
  // The 50 that the escrow parts leave of their total goes to other escrow.
  EXPECT_EQ(splitsOf(entries[0]), (Splits{{"Principal", -700},
                                          {"Interest", -300},
                                          {"Escrow Tax", -200},
                                          {"Escrow Insurance", -50},
                                          {"Escrow Other", -50}}));
  // Zero principal and insurance still split; a zero escrow total adds no escrow.
  EXPECT_EQ(splitsOf(entries[1]), (Splits{{"Principal", 0}, {"Interest", -10}, {"Insurance", 0}}));
}

TEST(OFXImportParse, StatementsInDocumentOrderOnePerMessageSet) {
  const std::string statement =
      "<STMTTRNRS><STMTRS><BANKACCTFROM><ACCTID>%</ACCTID></BANKACCTFROM><BANKTRANLIST>"
      "<STMTTRN><TRNAMT>1</TRNAMT></STMTTRN></BANKTRANLIST></STMTRS></STMTTRNRS>";
  const auto with = [&](const char* id) {
    std::string text = statement;
    text.replace(text.find('%'), 1, id);
    return text;
  };
  auto importer = load(
      ofx2("<SIGNONMSGSRSV1/><CREDITCARDMSGSRSV1><CCSTMTTRNRS><CCSTMTRS><CCACCTFROM><ACCTID>card"
           "</ACCTID></CCACCTFROM></CCSTMTRS></CCSTMTTRNRS></CREDITCARDMSGSRSV1>"
           "<BANKMSGSRSV1>" +
           with("bank1") + with("bank2") +
           "</BANKMSGSRSV1>"
           "<INVSTMTMSGSRSV1/><BANKMSGSRSV1><STMTTRNRS/></BANKMSGSRSV1>"
           "<BANKMSGSRSV1>" +
           with("bank3") + "</BANKMSGSRSV1>"));
  ASSERT_TRUE(importer);
  const plist::Value result = importer->parse();
  const plist::Array& accounts = result.find("accounts")->arrayValue();
  ASSERT_EQ(accounts.size(), 3u);
  EXPECT_EQ(textOf(accounts[0], "accountID"), "card");
  EXPECT_TRUE(accounts[0].find("entries")->arrayValue().empty());
  EXPECT_FALSE(accounts[0].find("currency"));
  EXPECT_EQ(textOf(accounts[1], "accountID"), "bank1");
  EXPECT_EQ(textOf(accounts[2], "accountID"), "bank3");

  // No usable /OFX: nothing, but a dictionary all the same.
  TARNOFXImport empty;
  plist::Dictionary nothing;
  nothing["accounts"] = plist::Array();
  nothing["types"] = plist::Array();
  EXPECT_EQ(empty.parse(), plist::Value(nothing));
  EXPECT_TRUE(empty.BankStatementAggregateToAccount(XMLNode()).isNil());
  EXPECT_TRUE(empty.LoanTransactionAggregateToEntry(XMLNode()).isNil());
}

TEST(OFXImportParse, DatesTakeTheirFirstEightDigits) {
  CalendarDate::overrideNow(CalendarDate(2024, 2, 29));
  TARNOFXImport importer;
  importer.SetDateFormat("%d/%m/%Y");  // plays no part
  EXPECT_EQ(importer.DateStringToDateNumber("20050102"), 20050102);
  EXPECT_EQ(importer.DateStringToDateNumber("20131121000000.000[-7:MST]"), 20131121);
  EXPECT_EQ(importer.DateStringToDateNumber("2013-11-21"), 20131121);
  EXPECT_EQ(importer.DateStringToDateNumber("1234567"), 20240229);
  EXPECT_EQ(importer.DateStringToDateNumber(""), 20240229);
  CalendarDate::overrideNow(std::nullopt);
}

}  // namespace
}  // namespace tarn
