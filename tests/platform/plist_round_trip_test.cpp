// Property lists written and read back, by us and against libplist.
#include <plist/plist.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "platform/plist_test_support.h"
#include "support/libplist_bridge.h"
#include "tarn/platform/plist_file.h"

namespace tarn::plist {
namespace {

// Every kind of value, at the sizes where the binary form changes encoding
// (15-element counts, 1/2/4/8-byte integers).
Value everyKind() {
  Data bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
  // clang-format off
  Dictionary root{
      {"ascii", "plain text"}, {"empty string", ""}, {"spaces only", "   "},
      {"non-ASCII", "Caf\xC3\xA9 \xE2\x80\x93 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8E\x89"},
      {"markup", "a & b < c > d \"q\" 'a' ]]> \ttab\nline\r\ncrlf \x01 control"},
      {"long string", std::string(300, 'x')}, {"cl\xC3\xA9 <&>", "non-ASCII key"},
      {"zero", 0}, {"byte", 255}, {"two bytes", 65535}, {"four bytes", std::int64_t{4294967295}},
      {"eight bytes", std::int64_t{4294967296}}, {"minus one", -1}, {"negative", -123456},
      {"largest", std::numeric_limits<std::int64_t>::max()},
      {"smallest", std::numeric_limits<std::int64_t>::min()},
      {"real", 3.14}, {"tenth", 0.1}, {"negative real", -2.5e-300}, {"denormal", 5e-324},
      {"huge real", 1.7976931348623157e308}, {"whole real", 1.0}, {"float exact", 0.5},
      {"date", Date{294634921.0}}, {"date before 2001", Date{-31536001.0}},
      {"date before 1970", Date{-1009843200.0}}, {"data", bytes}, {"short data", Data{'h', 'i'}},
      {"empty data", Data{}}, {"true", true}, {"false", false}, {"empty array", Array{}},
      {"empty dictionary", Dictionary{}}};
  // clang-format on
  Array nested;
  for (int i = 0; i < 20; ++i) {
    nested.push_back(Dictionary{
        {"index", i},
        {"shared", "the same text in every element"},
        {"inner", Array{Value(i % 2 == 0), Value(Array{Value("deep")}), Value(Dictionary{})}}});
  }
  root["nested"] = std::move(nested);
  Dictionary wide;
  for (int i = 0; i < 40; ++i) wide["key " + std::to_string(i)] = i * 1000;
  root["wide"] = std::move(wide);
  return Value(std::move(root));
}

using PlistPtr = std::unique_ptr<void, void (*)(plist_t)>;

// What libplist reads from `bytes`, written back by libplist in binary.
std::string libplistRewrites(const std::string& bytes) {
  plist_t node = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  if (!node) {
    ADD_FAILURE() << "libplist could not read what we wrote";
    return "";
  }
  char* out = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(node, &out, &length);
  std::string result(out, length);
  std::free(out);
  plist_free(node);
  return result;
}

std::string libplistWrites(const Value& value, Format format) {
  PlistPtr node(toLibplist(value), plist_free);
  char* bytes = nullptr;
  std::uint32_t length = 0;
  if (format == Format::Xml) {
    plist_to_xml(node.get(), &bytes, &length);
  } else {
    plist_to_bin(node.get(), &bytes, &length);
  }
  std::string result(bytes, length);
  std::free(bytes);
  return result;
}

TEST(PlistRoundTrip, EveryKindOfValueSurvivesXmlAndBinaryFiles) {
  TemporaryDirectory directory;
  const Value original = everyKind();
  for (Format format : {Format::Xml, Format::Binary}) {
    SCOPED_TRACE(format == Format::Xml ? "XML" : "binary");
    const std::string path = directory.file(format == Format::Xml ? "a.plist" : "a.bplist");
    WriteFile(path, original, format);
    const Value back = ReadFile(path);
    EXPECT_EQ(back, original);
    // Writing again gives the same bytes: nothing drifts between rounds.
    EXPECT_EQ(format == Format::Xml ? ToXml(back) : ToBinary(back),
              format == Format::Xml ? ToXml(original) : ToBinary(original));
  }
  // Scalars at the top level, and a string too long for a 1-byte count.
  for (const Value& top : {Value("top"), Value(42), Value(Date{0.0}), Value(Data{1, 2, 3}),
                           Value(std::string(70000, 'y')), Value(false)}) {
    EXPECT_EQ(ParseXml(ToXml(top)), top);
    EXPECT_EQ(ParseBinary(ToBinary(top)), top);
  }
}

TEST(PlistRoundTrip, XmlKeepsWholeSecondsOfDatesAndBinaryKeepsFractions) {
  const Value date(Date{294634921.75});
  EXPECT_EQ(ParseBinary(ToBinary(date)).dateValue().secondsSince2001, 294634921.75);
  EXPECT_EQ(ParseXml(ToXml(date)).dateValue().secondsSince2001, 294634921.0);
  for (double seconds : {-7e10, 3e11}) {  // before the common era and far ahead
    EXPECT_EQ(ParseXml(ToXml(Value(Date{seconds}))).dateValue().secondsSince2001, seconds);
  }
  // A damaged binary file's date millions of years away is saved at the
  // XML form's limit, not refused and not wrapped around.
  for (double seconds : {-4.27e96, 1e20}) {
    const double limit = std::copysign(kXmlDateLimitSeconds, seconds);
    EXPECT_EQ(ParseXml(ToXml(Value(Date{seconds}))).dateValue().secondsSince2001, limit);
  }
  // Before 2001 the second is rounded down, not toward zero.
  const std::pair<double, const char*> written[] = {{-0.5, "2000-12-31T23:59:59Z"},
                                                    {0.0, "2001-01-01T00:00:00Z"},
                                                    {-26524800.0, "2000-02-29T00:00:00Z"}};
  for (const auto& [seconds, text] : written) {
    EXPECT_NE(ToXml(Value(Date{seconds})).find(std::string("<date>") + text + "</date>"),
              std::string::npos)
        << text;
  }
}

TEST(PlistRoundTrip, XmlLooksLikeTheDesktopPlatformsAndRealsAreShortest) {
  const Dictionary dictionary{
      {"amount", 0.1}, {"list", Array{Value(1), Value(true)}}, {"none", Array{}}};
  EXPECT_EQ(ToXml(Value(dictionary)),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "
            "\"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n<dict>\n\t<key>amount</key>\n\t<real>0.1</real>\n"
            "\t<key>list</key>\n\t<array>\n\t\t<integer>1</integer>\n\t\t<true/>\n\t</array>\n"
            "\t<key>none</key>\n\t<array/>\n</dict>\n</plist>\n");
  for (double real : {0.1 + 0.2, 1e21, 1e-7, -0.0, 123456789.125, 2.0 / 3.0}) {
    EXPECT_EQ(ParseXml(ToXml(Value(real))).doubleValue(), real);
  }
  EXPECT_TRUE(std::isnan(ParseXml(ToXml(Value(std::nan("")))).doubleValue()));
  EXPECT_EQ(ParseXml(ToXml(Value(-HUGE_VAL))).doubleValue(), -HUGE_VAL);
}

TEST(PlistRoundTrip, BinaryWriterSharesEqualScalarsAndUsesMinimalSizes) {
  // 100 references each to one long string and one real: three objects.
  Value repeated;
  repeated.mutableArray().assign(100, Value(std::string(200, 's')));
  for (int i = 0; i < 100; ++i) repeated.mutableArray().emplace_back(2.5);
  const std::string bytes = ToBinary(repeated);
  const auto trailer = reinterpret_cast<const std::uint8_t*>(bytes.data() + bytes.size() - 32);
  EXPECT_EQ(trailer[7], 1);   // reference size
  EXPECT_EQ(trailer[15], 3);  // object count
  EXPECT_LT(bytes.size(), 200u + 9u + 300u + 64u);
  EXPECT_EQ(ParseBinary(bytes), repeated);
  // Integer 1 and real 1.0 are different objects; so are true and 1.
  const Array mixed{Value(1), Value(1.0), Value(true), Value(1)};
  EXPECT_EQ(ParseBinary(ToBinary(Value(mixed))), Value(mixed));
  // Past 255 and 65535 objects references widen to 2 and 3 bytes; libplist follows.
  for (int count : {300, 70000}) {
    Value distinct;
    for (int i = 0; i < count; ++i) distinct.mutableArray().push_back(Value(i));
    const std::string wide = ToBinary(distinct);
    EXPECT_EQ(static_cast<int>(wide[wide.size() - 32 + 7]), count < 65535 ? 2 : 3);
    EXPECT_EQ(ParseBinary(wide), distinct);
    EXPECT_EQ(ParseBinary(libplistRewrites(wide)), distinct);
  }
}

TEST(PlistRoundTrip, InvalidUtf8IsReplacedNotFatalInBinary) {
  const std::string broken =
      "ok \xC3 \xFF \xED\xA0\x80 \xF0\x9F\x8E end";  // truncated, bad, surrogate
  const Value back = ParseBinary(ToBinary(Value(broken)));
  EXPECT_EQ(back.stringValue().substr(0, 3), "ok ");
  EXPECT_NE(back.stringValue().find("\xEF\xBF\xBD"), std::string::npos);
  EXPECT_EQ(back.stringValue().substr(back.stringValue().size() - 4), " end");
}

TEST(PlistRoundTrip, NilValuesInsideContainersAreSkipped) {
  Dictionary dictionary;
  dictionary["kept"] = 1;
  dictionary["absent"] = Value();
  const Value value(Array{Value(dictionary), Value(), Value("x")});
  const Value expected(Array{Value(Dictionary{{"kept", Value(1)}}), Value("x")});
  EXPECT_EQ(ParseXml(ToXml(value)), expected);
  EXPECT_EQ(ParseBinary(ToBinary(value)), expected);
  EXPECT_THROW(ToXml(Value()), FileError);
  EXPECT_THROW(ToBinary(Value()), FileError);
}

TEST(PlistRoundTrip, InteroperatesWithLibplistBothWays) {
  const Value original = everyKind();
  const Value date(Date{294634921.5});  // fractions of a second survive binary
  // libplist reads what we write, and says so when it writes it again.
  EXPECT_EQ(ParseBinary(libplistRewrites(ToBinary(original))), original);
  EXPECT_EQ(ParseBinary(libplistRewrites(ToXml(original))), original);
  EXPECT_EQ(ParseBinary(libplistRewrites(ToBinary(date))), date);
  // libplist writes carriage returns raw into XML, which XML readers read as line feeds.
  Value fromThem = original;
  fromThem.mutableDictionary()["markup"] =
      "a & b < c > d \"q\" 'a' ]]> \ttab\nline\ncrlf \x01 control";
  for (Format format : {Format::Binary, Format::Xml}) {
    const std::string bytes = libplistWrites(fromThem, format);
    EXPECT_EQ(format == Format::Xml ? ParseXml(bytes) : ParseBinary(bytes), fromThem);
    EXPECT_EQ(Parse(bytes), fromThem);
  }
  // libplist stores reals that a float holds exactly in 4 bytes.
  const Value floats(Array{Value(0.5), Value(-1024.0), Value(0.1)});
  const std::string bytes = libplistWrites(floats, Format::Binary);
  EXPECT_NE(bytes.find('\x22'), std::string::npos);
  EXPECT_EQ(ParseBinary(bytes), floats);
  EXPECT_EQ(ParseBinary(libplistWrites(date, Format::Binary)), date);
}

TEST(PlistRoundTrip, ReadsHandWrittenXmlWithCommentsCdataAndOtherEncodings) {
  const std::string directory = std::string(TARN_TEST_DATA_DIR) + "/plist/";
  const Value value = ReadFile(directory + "comments_cdata_crlf_and_entities.plist");
  // clang-format off
  const std::pair<const char*, Value> fields[] = {
      {"Name", "Checks & <Balances>"}, {"Memo", "line one\nline two <raw> & more"},
      {"Spaces", "  "}, {"Hex", 255}, {"Negative", -42}, {"Real", 1250.0}, {"Infinity", HUGE_VAL},
      {"Fraction", Date{294634921.25}}, {"Repeated", "last"},
      {"Icon", Data{'h', 'e', 'l', 'l', 'o', ' ', 'w', 'o', 'r', 'l', 'd'}},
      {"Entries", Array{value.find("Entries")->arrayValue().at(0), Dictionary{}}}};
  // clang-format on
  for (const auto& [key, expected] : fields) {
    ASSERT_NE(value.find(key), nullptr) << key;
    EXPECT_EQ(*value.find(key), expected) << key;
  }
  // The same document saved as UTF-16 (little-endian, with a mark).
  const Value utf16 = ReadFile(directory + "utf16le_with_bom.plist");
  EXPECT_EQ(utf16.find("Name")->stringValue(), "Caf\xC3\xA9 \xE2\x82\xAC");
  EXPECT_EQ(utf16.find("Amount")->doubleValue(), -12.5);
}

}  // namespace
}  // namespace tarn::plist
