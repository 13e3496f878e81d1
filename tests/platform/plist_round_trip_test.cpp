// Property lists written and read back, by us and against libplist.
#include <plist/plist.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tarn/platform/plist_file.h"

namespace tarn::plist {
namespace {

// A dictionary holding every kind of value, with the sizes at which the
// binary form changes encoding (15-element counts, 1/2/4/8-byte integers).
Value everyKind() {
  Dictionary root;
  root["ascii"] = "plain text";
  root["non-ASCII"] = "Caf\xC3\xA9 \xE2\x80\x93 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8E\x89";
  root["empty string"] = "";
  root["spaces only"] = "   ";
  root["markup"] = "a & b < c > d \"q\" 'a' ]]> \ttab\nline\r\ncrlf \x01 control";
  root["long string"] = std::string(300, 'x');
  root["cl\xC3\xA9 <&>"] = "non-ASCII key with markup";
  root["zero"] = 0;
  root["byte"] = 255;
  root["two bytes"] = 65535;
  root["four bytes"] = std::int64_t{4294967295};
  root["eight bytes"] = std::int64_t{4294967296};
  root["largest"] = std::numeric_limits<std::int64_t>::max();
  root["smallest"] = std::numeric_limits<std::int64_t>::min();
  root["minus one"] = -1;
  root["negative"] = -123456;
  root["real"] = 3.14;
  root["tenth"] = 0.1;
  root["negative real"] = -2.5e-300;
  root["huge real"] = 1.7976931348623157e308;
  root["denormal"] = 5e-324;
  root["whole real"] = 1.0;
  root["float exact"] = 0.5;
  root["date"] = Date{294634921.0};                // 2010-05-04 03:02:01 UTC
  root["date before 2001"] = Date{-31536001.0};    // 1999-12-31 23:59:59 UTC
  root["date before 1970"] = Date{-1009843200.0};  // 1969-01-01
  Data bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
  root["data"] = bytes;
  root["short data"] = Data{'h', 'i'};
  root["empty data"] = Data{};
  root["true"] = true;
  root["false"] = false;
  root["empty array"] = Array{};
  root["empty dictionary"] = Dictionary{};
  Array nested;
  for (int i = 0; i < 20; ++i) {
    Dictionary element;
    element["index"] = i;
    element["shared"] = "the same text in every element";
    element["inner"] = Array{Value(i % 2 == 0), Value(Array{Value("deep")}), Value(Dictionary{})};
    nested.push_back(std::move(element));
  }
  root["nested"] = std::move(nested);
  Dictionary wide;
  for (int i = 0; i < 40; ++i) wide["key " + std::to_string(i)] = i * 1000;
  root["wide"] = std::move(wide);
  return Value(std::move(root));
}

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tarn-plist-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// ------------------------------------------------ conversion with libplist

using PlistPtr = std::unique_ptr<void, void (*)(plist_t)>;

plist_t toLibplist(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Boolean:
      return plist_new_bool(value.boolValue());
    case Value::Kind::Integer:
      return plist_new_uint(static_cast<std::uint64_t>(value.longValue()));
    case Value::Kind::Real:
      return plist_new_real(value.doubleValue());
    case Value::Kind::String:
      return plist_new_string(value.stringValue().c_str());
    case Value::Kind::Date: {
      const double seconds = value.dateValue().secondsSince2001;
      const double whole = std::floor(seconds);
      return plist_new_date(static_cast<std::int32_t>(whole),
                            static_cast<std::int32_t>(std::lround((seconds - whole) * 1e6)));
    }
    case Value::Kind::Data: {
      const Data& data = value.dataValue();
      return plist_new_data(reinterpret_cast<const char*>(data.data()), data.size());
    }
    case Value::Kind::Array: {
      plist_t array = plist_new_array();
      for (const Value& element : value.arrayValue()) {
        plist_array_append_item(array, toLibplist(element));
      }
      return array;
    }
    case Value::Kind::Dictionary: {
      plist_t dictionary = plist_new_dict();
      for (const auto& [key, element] : value.dictionaryValue()) {
        plist_dict_set_item(dictionary, key.c_str(), toLibplist(element));
      }
      return dictionary;
    }
    case Value::Kind::Nil:
      break;
  }
  ADD_FAILURE() << "nil has no libplist form";
  return plist_new_bool(0);
}

Value fromLibplist(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t flag = 0;
      plist_get_bool_val(node, &flag);
      return Value(flag != 0);
    }
    case PLIST_UINT: {
      std::uint64_t number = 0;
      plist_get_uint_val(node, &number);
      return Value(static_cast<std::int64_t>(number));
    }
    case PLIST_REAL: {
      double number = 0;
      plist_get_real_val(node, &number);
      return Value(number);
    }
    case PLIST_STRING: {
      char* text = nullptr;
      plist_get_string_val(node, &text);
      Value result(std::string(text ? text : ""));
      std::free(text);
      return result;
    }
    case PLIST_DATE: {
      std::int32_t seconds = 0, microseconds = 0;
      plist_get_date_val(node, &seconds, &microseconds);
      return Value(Date{seconds + microseconds / 1e6});
    }
    case PLIST_DATA: {
      std::uint64_t length = 0;
      const char* bytes = plist_get_data_ptr(node, &length);
      return Value(Data(bytes, bytes + length));
    }
    case PLIST_ARRAY: {
      Array array;
      for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        array.push_back(fromLibplist(plist_array_get_item(node, i)));
      }
      return Value(std::move(array));
    }
    case PLIST_DICT: {
      Dictionary dictionary;
      plist_dict_iter iterator = nullptr;
      plist_dict_new_iter(node, &iterator);
      for (;;) {
        char* key = nullptr;
        plist_t element = nullptr;
        plist_dict_next_item(node, iterator, &key, &element);
        if (!element) break;
        dictionary[key] = fromLibplist(element);
        std::free(key);
      }
      std::free(iterator);
      return Value(std::move(dictionary));
    }
    default:
      break;
  }
  ADD_FAILURE() << "unexpected libplist node type " << plist_get_node_type(node);
  return Value();
}

Value libplistReads(const std::string& bytes, Format format) {
  plist_t node = nullptr;
  if (format == Format::Xml) {
    plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  } else {
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  }
  if (!node) {
    ADD_FAILURE() << "libplist could not read what we wrote";
    return Value();
  }
  Value result = fromLibplist(node);
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

// libplist writes carriage returns raw into XML, where every XML reader (ours
// included) must read a line end as a line feed.
Value withoutCarriageReturns(Value value) {
  value.mutableDictionary()["markup"] =
      "a & b < c > d \"q\" 'a' ]]> \ttab\nline\ncrlf \x01 control";
  return value;
}

// ------------------------------------------------------------------- tests

TEST(PlistRoundTrip, EveryKindOfValueSurvivesXmlAndBinaryFiles) {
  TemporaryDirectory directory;
  const Value original = everyKind();
  for (Format format : {Format::Xml, Format::Binary}) {
    SCOPED_TRACE(format == Format::Xml ? "XML" : "binary");
    const std::string path = directory.file(format == Format::Xml ? "a.plist" : "a.bplist");
    WriteFile(path, original, format);
    const Value back = ReadFile(path);
    EXPECT_EQ(back, original);
    EXPECT_EQ(back.find("markup")->stringValue(), original.find("markup")->stringValue());
    EXPECT_TRUE(back.find("smallest")->isInteger());
    EXPECT_TRUE(back.find("whole real")->isReal());
    EXPECT_TRUE(back.find("date")->isDate());
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
  // Years before the common era and far ahead keep their seconds.
  for (double seconds : {-7e10, 3e11}) {
    EXPECT_EQ(ParseXml(ToXml(Value(Date{seconds}))).dateValue().secondsSince2001, seconds);
  }
  // Before 2001 the second is rounded down, not toward zero.
  EXPECT_NE(ToXml(Value(Date{-0.5})).find("<date>2000-12-31T23:59:59Z</date>"), std::string::npos);
  EXPECT_NE(ToXml(Value(Date{0.0})).find("<date>2001-01-01T00:00:00Z</date>"), std::string::npos);
  EXPECT_NE(
      ToXml(Value(Date{-978307200.0 + 951782400.0})).find("<date>2000-02-29T00:00:00Z</date>"),
      std::string::npos);
}

TEST(PlistRoundTrip, XmlLooksLikeTheDesktopPlatformsAndRealsAreShortest) {
  Dictionary dictionary;
  dictionary["amount"] = 0.1;
  dictionary["list"] = Array{Value(1), Value(true)};
  dictionary["none"] = Array{};
  const std::string xml = ToXml(Value(dictionary));
  EXPECT_EQ(xml,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n"
            "\t<key>amount</key>\n"
            "\t<real>0.1</real>\n"
            "\t<key>list</key>\n"
            "\t<array>\n"
            "\t\t<integer>1</integer>\n"
            "\t\t<true/>\n"
            "\t</array>\n"
            "\t<key>none</key>\n"
            "\t<array/>\n"
            "</dict>\n"
            "</plist>\n");
  for (double real : {0.1 + 0.2, 1e21, 1e-7, -0.0, 123456789.125, 2.0 / 3.0}) {
    EXPECT_EQ(ParseXml(ToXml(Value(real))).doubleValue(), real);
  }
  const double nan = ParseXml(ToXml(Value(std::nan("")))).doubleValue();
  EXPECT_TRUE(std::isnan(nan));
  EXPECT_EQ(ParseXml(ToXml(Value(-HUGE_VAL))).doubleValue(), -HUGE_VAL);
}

TEST(PlistRoundTrip, BinaryWriterSharesEqualScalarsAndUsesMinimalSizes) {
  // 100 references to one long string and one real: the array plus two objects.
  Value repeated;
  repeated.mutableArray().assign(100, Value(std::string(200, 's')));
  for (int i = 0; i < 100; ++i) repeated.mutableArray().emplace_back(2.5);
  const std::string bytes = ToBinary(repeated);
  const auto trailer = reinterpret_cast<const std::uint8_t*>(bytes.data() + bytes.size() - 32);
  EXPECT_EQ(trailer[7], 1);   // one-byte references for 3 objects
  EXPECT_EQ(trailer[15], 3);  // object count (low byte of 8)
  EXPECT_LT(bytes.size(), 200u + 9u + 300u + 64u);
  EXPECT_EQ(ParseBinary(bytes), repeated);
  // Integer 1 and real 1.0 are different objects; so are true and 1.
  const Array mixed{Value(1), Value(1.0), Value(true), Value(1)};
  EXPECT_EQ(ParseBinary(ToBinary(Value(mixed))), Value(mixed));
  // Past 255 and 65535 objects references widen to 2 and 3 bytes (any size
  // from 1 to 8 is allowed), and libplist follows.
  for (int count : {300, 70000}) {
    Value distinct;
    for (int i = 0; i < count; ++i) distinct.mutableArray().push_back(Value(i));
    const std::string wide = ToBinary(distinct);
    EXPECT_EQ(static_cast<int>(wide[wide.size() - 32 + 7]), count < 65535 ? 2 : 3);
    EXPECT_EQ(ParseBinary(wide), distinct);
    EXPECT_EQ(libplistReads(wide, Format::Binary), distinct);
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

TEST(PlistRoundTrip, LibplistReadsWhatWeWrite) {
  const Value original = everyKind();
  EXPECT_EQ(libplistReads(ToBinary(original), Format::Binary), original);
  EXPECT_EQ(libplistReads(ToXml(original), Format::Xml), original);
  // Fractions of a second survive the binary form in libplist too.
  const Value date(Date{294634921.5});
  EXPECT_EQ(libplistReads(ToBinary(date), Format::Binary), date);
}

TEST(PlistRoundTrip, WeReadWhatLibplistWrites) {
  const Value original = withoutCarriageReturns(everyKind());
  EXPECT_EQ(ParseBinary(libplistWrites(original, Format::Binary)), original);
  EXPECT_EQ(ParseXml(libplistWrites(original, Format::Xml)), original);
  EXPECT_EQ(Parse(libplistWrites(original, Format::Binary)), original);
  EXPECT_EQ(Parse(libplistWrites(original, Format::Xml)), original);
  // libplist stores reals that a float holds exactly in 4 bytes.
  const Value floats(Array{Value(0.5), Value(-1024.0), Value(0.1)});
  const std::string bytes = libplistWrites(floats, Format::Binary);
  EXPECT_NE(bytes.find('\x22'), std::string::npos);
  EXPECT_EQ(ParseBinary(bytes), floats);
  const Value date(Date{294634921.5});
  EXPECT_EQ(ParseBinary(libplistWrites(date, Format::Binary)), date);
}

TEST(PlistRoundTrip, ReadsHandWrittenXmlWithCommentsCdataAndOtherEncodings) {
  const std::string directory = std::string(TARN_TEST_DATA_DIR) + "/plist/";
  const Value value = ReadFile(directory + "comments_cdata_crlf_and_entities.plist");
  EXPECT_EQ(value.find("Name")->stringValue(), "Checks & <Balances>");
  EXPECT_EQ(value.find("Memo")->stringValue(), "line one\nline two <raw> & more");
  EXPECT_EQ(value.find("Spaces")->stringValue(), "  ");
  EXPECT_EQ(value.find("Hex")->longValue(), 255);
  EXPECT_EQ(value.find("Negative")->longValue(), -42);
  EXPECT_EQ(value.find("Real")->doubleValue(), 1250.0);
  EXPECT_EQ(value.find("Infinity")->doubleValue(), HUGE_VAL);
  EXPECT_EQ(value.find("Fraction")->dateValue().secondsSince2001, 294634921.25);
  EXPECT_EQ(value.find("Icon")->dataValue(),
            (Data{'h', 'e', 'l', 'l', 'o', ' ', 'w', 'o', 'r', 'l', 'd'}));
  EXPECT_EQ(value.find("Entries")->arrayValue().size(), 2u);
  EXPECT_TRUE(value.find("Entries")->arrayValue()[1].dictionaryValue().empty());
  EXPECT_EQ(value.find("Repeated")->stringValue(), "last");
  // The same document saved as UTF-16 (little-endian, with a mark).
  const Value utf16 = ReadFile(directory + "utf16le_with_bom.plist");
  EXPECT_EQ(utf16.find("Name")->stringValue(), "Caf\xC3\xA9 \xE2\x82\xAC");
  EXPECT_EQ(utf16.find("Amount")->doubleValue(), -12.5);
}

}  // namespace
}  // namespace tarn::plist
