// XML property lists: reading through pugixml, writing with a plain string
// builder in the layout the desktop platform uses (tab indentation, one
// element per line).
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <pugixml.hpp>
#include <string>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/plist_file.h"
#include "tarn/platform/utf8.h"

namespace tarn::plist {
namespace {

constexpr std::string_view kXmlHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kXmlFooter = "</plist>\n";

// Seconds between 1970-01-01 and 2001-01-01, both UTC.
constexpr std::int64_t kSeconds1970To2001 = 978307200;

// ---------------------------------------------------------------- writing

// Bytes that cannot appear as themselves in element text: markup characters,
// carriage returns (XML readers turn them into line feeds) and the other C0
// controls, which are written as character references; U+0000 is refused.
struct EscapeTable {
  bool needs[256] = {};
  constexpr EscapeTable() {
    for (int c = 0; c < 0x20; ++c) needs[c] = c != '\t' && c != '\n';
    needs[static_cast<unsigned char>('&')] = true;
    needs[static_cast<unsigned char>('<')] = true;
    needs[static_cast<unsigned char>('>')] = true;
  }
};
constexpr EscapeTable kEscape;

constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

class XmlWriter {
 public:
  explicit XmlWriter(std::string& out) : out_(out) {}

  // The top value is at depth 0 here and at 1 in the readers' count.
  void writeValue(const Value& value, int depth) {
    if (depth + 1 > kMaxNestingDepth) {
      throw FileError("<memory>",
                      "nesting deeper than " + std::to_string(kMaxNestingDepth) + " levels");
    }
    switch (value.kind()) {
      case Value::Kind::Nil:
        return;  // skipped by the container; a nil top level is refused earlier
      case Value::Kind::Boolean:
        indent(depth);
        out_.append(value.boolValue() ? "<true/>\n" : "<false/>\n");
        return;
      case Value::Kind::Integer: {
        indent(depth);
        char digits[24];
        auto end = std::to_chars(digits, digits + sizeof digits, value.longValue()).ptr;
        out_.append("<integer>").append(digits, end).append("</integer>\n");
        return;
      }
      case Value::Kind::Real:
        indent(depth);
        out_.append("<real>");
        writeReal(value.doubleValue());
        out_.append("</real>\n");
        return;
      case Value::Kind::String:
        indent(depth);
        out_.append("<string>");
        writeEscaped(value.stringValue());
        out_.append("</string>\n");
        return;
      case Value::Kind::Date:
        indent(depth);
        out_.append("<date>");
        writeDate(value.dateValue());
        out_.append("</date>\n");
        return;
      case Value::Kind::Data:
        indent(depth);
        out_.append("<data>");
        writeBase64(value.dataValue());
        out_.append("</data>\n");
        return;
      case Value::Kind::Array:
        writeArray(value.arrayValue(), depth);
        return;
      case Value::Kind::Dictionary:
        writeDictionary(value.dictionaryValue(), depth);
        return;
    }
  }

 private:
  void indent(int depth) { out_.append(static_cast<std::size_t>(depth), '\t'); }

  void writeArray(const Array& array, int depth) {
    indent(depth);
    if (array.empty()) {
      out_.append("<array/>\n");
      return;
    }
    out_.append("<array>\n");
    for (const Value& element : array) writeValue(element, depth + 1);
    indent(depth);
    out_.append("</array>\n");
  }

  void writeDictionary(const Dictionary& dictionary, int depth) {
    indent(depth);
    if (dictionary.empty()) {
      out_.append("<dict/>\n");
      return;
    }
    out_.append("<dict>\n");
    for (const auto& [key, element] : dictionary) {
      if (element.isNil()) continue;
      indent(depth + 1);
      out_.append("<key>");
      writeEscaped(key);
      out_.append("</key>\n");
      writeValue(element, depth + 1);
    }
    indent(depth);
    out_.append("</dict>\n");
  }

  void writeEscaped(std::string_view text) {
    std::size_t runStart = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto c = static_cast<unsigned char>(text[i]);
      if (!kEscape.needs[c]) continue;
      out_.append(text.data() + runStart, i - runStart);
      runStart = i + 1;
      switch (c) {
        case '&':
          out_.append("&amp;");
          break;
        case '<':
          out_.append("&lt;");
          break;
        case '>':
          out_.append("&gt;");
          break;
        case '\0':
          // No XML document can hold U+0000, not even as a reference (a
          // reader would cut the text there); the binary form can.
          throw FileError("<memory>",
                          "a string holds the character U+0000, which XML cannot store");
        default: {
          char reference[8] = "&#";
          auto end = std::to_chars(reference + 2, reference + 6, static_cast<int>(c)).ptr;
          *end++ = ';';
          out_.append(reference, end);
        }
      }
    }
    out_.append(text.data() + runStart, text.size() - runStart);
  }

  // Shortest text that reads back as the same double.
  void writeReal(double value) {
    if (std::isnan(value)) {
      out_.append("nan");
    } else if (std::isinf(value)) {
      out_.append(value > 0 ? "+infinity" : "-infinity");
    } else {
      char digits[32];
      auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
      out_.append(digits, end);
    }
  }

  // Whole seconds, rounded down, in UTC. Fractions of a second are lost: the
  // XML form has no place for them.
  void writeDate(Date date) {
    double seconds = std::floor(date.secondsSince2001);
    // Keep the arithmetic in range; such dates lie far beyond any calendar use.
    seconds = std::clamp(seconds, -kXmlDateLimitSeconds, kXmlDateLimitSeconds);
    const auto since1970 = static_cast<std::int64_t>(seconds) + kSeconds1970To2001;
    const std::int64_t days = FloorDivide(since1970, 86400);
    const std::int64_t secondOfDay = since1970 - days * 86400;
    const CivilDay civil = CivilFromDays(days);
    std::int64_t year = civil.year;
    const auto month = static_cast<unsigned>(civil.month);
    const auto day = static_cast<unsigned>(civil.day);
    char text[64];
    char* p = text;
    if (year < 0) {
      *p++ = '-';
      year = -year;
    }
    char yearDigits[24];
    auto yearEnd = std::to_chars(yearDigits, yearDigits + sizeof yearDigits, year).ptr;
    for (auto width = yearEnd - yearDigits; width < 4; ++width) *p++ = '0';
    p = std::copy(yearDigits, yearEnd, p);
    auto two = [&p](char separator, unsigned number) {
      *p++ = separator;
      *p++ = static_cast<char>('0' + number / 10);
      *p++ = static_cast<char>('0' + number % 10);
    };
    two('-', month);
    two('-', day);
    two('T', static_cast<unsigned>(secondOfDay / 3600));
    two(':', static_cast<unsigned>(secondOfDay / 60 % 60));
    two(':', static_cast<unsigned>(secondOfDay % 60));
    *p++ = 'Z';
    out_.append(text, p);
  }

  void writeBase64(const Data& data) {
    const std::size_t start = out_.size();
    out_.resize(start + (data.size() + 2) / 3 * 4);
    char* p = out_.data() + start;
    std::size_t i = 0;
    for (; i + 3 <= data.size(); i += 3) {
      const std::uint32_t triple = (data[i] << 16) | (data[i + 1] << 8) | data[i + 2];
      *p++ = kBase64Alphabet[triple >> 18];
      *p++ = kBase64Alphabet[(triple >> 12) & 63];
      *p++ = kBase64Alphabet[(triple >> 6) & 63];
      *p++ = kBase64Alphabet[triple & 63];
    }
    if (i < data.size()) {
      const bool two = i + 1 < data.size();
      const std::uint32_t triple = (data[i] << 16) | (two ? data[i + 1] << 8 : 0);
      *p++ = kBase64Alphabet[triple >> 18];
      *p++ = kBase64Alphabet[(triple >> 12) & 63];
      *p++ = two ? kBase64Alphabet[(triple >> 6) & 63] : '=';
      *p++ = '=';
    }
  }

  std::string& out_;
};

// Roughly how many bytes a value takes as XML, to reserve the output once.
std::size_t estimateXmlSize(const Value& value, int depth) {
  if (depth > kMaxNestingDepth) return 0;  // the writer reports it
  switch (value.kind()) {
    case Value::Kind::String:
      return value.stringValue().size() + 20 + depth;
    case Value::Kind::Data:
      return value.dataValue().size() * 4 / 3 + 20 + depth;
    case Value::Kind::Array: {
      std::size_t size = 20 + 2 * depth;
      for (const Value& element : value.arrayValue()) size += estimateXmlSize(element, depth + 1);
      return size;
    }
    case Value::Kind::Dictionary: {
      std::size_t size = 20 + 2 * depth;
      for (const auto& [key, element] : value.dictionaryValue()) {
        size += key.size() + 13 + depth + estimateXmlSize(element, depth + 1);
      }
      return size;
    }
    default:
      return 40 + depth;
  }
}

// ---------------------------------------------------------------- reading

// pugixml does only what a property list needs: character and entity
// references, CDATA sections and line-end normalisation. Comments, processing
// instructions, the declaration and the DOCTYPE are skipped unparsed; text is
// kept inside its element rather than in a node of its own; whitespace-only
// text is kept only when it is the whole content of an element (a string of
// spaces), not between elements.
constexpr unsigned kParseOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol |
                                   pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata;

bool isXmlSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isXmlSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isXmlSpace(text.back())) text.remove_suffix(1);
  return text;
}

class XmlReader {
 public:
  explicit XmlReader(const std::string& name) : name_(name) {}

  Value readDocument(const pugi::xml_document& document) {
    pugi::xml_node root = document.document_element();
    if (!root) fail("no root element", document);
    if (std::strcmp(root.name(), "plist") == 0) {
      pugi::xml_node top = firstElement(root);
      if (!top) fail("the plist element holds no value", root);
      return readValue(top, 1);
    }
    return readValue(root, 1);
  }

 private:
  [[noreturn]] void fail(const std::string& reason, pugi::xml_node node) const {
    throw FileError(name_, reason + " at offset " + std::to_string(node.offset_debug()));
  }

  static pugi::xml_node firstElement(pugi::xml_node parent) {
    pugi::xml_node child = parent.first_child();
    while (child && child.type() != pugi::node_element) child = child.next_sibling();
    return child;
  }
  static pugi::xml_node nextElement(pugi::xml_node node) {
    node = node.next_sibling();
    while (node && node.type() != pugi::node_element) node = node.next_sibling();
    return node;
  }
  // Containers reserve their elements up front: dictionaries read in bulk
  // storage do not reuse the space a growing array leaves behind.
  static std::size_t countElements(pugi::xml_node parent) {
    std::size_t count = 0;
    for (pugi::xml_node child = firstElement(parent); child; child = nextElement(child)) ++count;
    return count;
  }

  // The text of an element: its embedded text, followed by any text and
  // CDATA children (text after a CDATA section becomes a child of its own).
  // The text of a string or key, made valid UTF-8 (pugixml passes stray
  // bytes of a UTF-8 document through as they are).
  static std::string text(pugi::xml_node element) {
    std::string result = element.value();
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
      if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
        result.append(child.value());
      }
    }
    MakeValidUtf8(result);
    return result;
  }
  // The same without a copy when the text is all in one piece.
  static std::string_view textView(pugi::xml_node element, std::string& storage) {
    if (!element.first_child()) return element.value();
    storage = text(element);
    return storage;
  }

  Value readValue(pugi::xml_node element, int depth) {
    if (depth > kMaxNestingDepth) {
      fail("nesting deeper than " + std::to_string(kMaxNestingDepth) + " levels", element);
    }
    const char* name = element.name();
    switch (name[0]) {
      case 'd':
        if (std::strcmp(name, "dict") == 0) return readDictionary(element, depth);
        if (std::strcmp(name, "date") == 0) return readDate(element);
        if (std::strcmp(name, "data") == 0) return readData(element);
        break;
      case 'a':
        if (std::strcmp(name, "array") == 0) return readArray(element, depth);
        break;
      case 's':
        if (std::strcmp(name, "string") == 0) return Value(text(element));
        break;
      case 'i':
        if (std::strcmp(name, "integer") == 0) return readInteger(element);
        break;
      case 'r':
        if (std::strcmp(name, "real") == 0) return readReal(element);
        break;
      case 't':
        if (std::strcmp(name, "true") == 0) return Value(true);
        break;
      case 'f':
        if (std::strcmp(name, "false") == 0) return Value(false);
        break;
      case 'k':
        if (std::strcmp(name, "key") == 0) fail("<key> outside a dictionary", element);
        break;
    }
    fail(std::string("unknown element <") + name + ">", element);
  }

  Value readArray(pugi::xml_node element, int depth) {
    Value result{Array{}};
    Array& array = result.mutableArray();
    array.reserve(countElements(element));
    for (pugi::xml_node child = firstElement(element); child; child = nextElement(child)) {
      array.push_back(readValue(child, depth + 1));
    }
    return result;
  }

  Value readDictionary(pugi::xml_node element, int depth) {
    Value result{Dictionary{}};
    Dictionary& dictionary = result.mutableDictionary();
    dictionary.reserve(countElements(element) / 2);
    for (pugi::xml_node key = firstElement(element); key;) {
      if (std::strcmp(key.name(), "key") != 0) {
        fail(std::string("expected <key> in a dictionary, found <") + key.name() + ">", key);
      }
      pugi::xml_node value = nextElement(key);
      if (!value) fail("a dictionary key without a value", key);
      // Keys usually come sorted, so the end hint makes insertion constant
      // time (emplace_hint compares once; insert_or_assign would twice). A
      // repeated key finds its first slot, which the assignment overwrites:
      // the last value wins.
      auto slot = dictionary.emplace_hint(dictionary.end(), text(key), Value());
      slot->second = readValue(value, depth + 1);
      key = nextElement(value);
    }
    return result;
  }

  Value readInteger(pugi::xml_node element) {
    std::string storage;
    std::string_view digits = trimmed(textView(element, storage));
    const std::string_view original = digits;
    bool negative = false;
    if (!digits.empty() && (digits.front() == '-' || digits.front() == '+')) {
      negative = digits.front() == '-';
      digits.remove_prefix(1);
    }
    int base = 10;
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
      base = 16;
      digits.remove_prefix(2);
    }
    std::uint64_t magnitude = 0;
    auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size() ||
        (negative && magnitude > std::uint64_t{1} << 63)) {
      fail("invalid integer \"" + std::string(original) + "\"", element);
    }
    // Values above the signed range keep their bit pattern (as the binary
    // form's unsigned integers do).
    return Value(static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude));
  }

  Value readReal(pugi::xml_node element) {
    std::string storage;
    std::string_view digits = trimmed(textView(element, storage));
    const std::string_view original = digits;
    if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
    double value = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    // Out-of-range magnitudes read as the nearest infinity or zero.
    if (error == std::errc::result_out_of_range) {
      value = std::strtod(std::string(original).c_str(), nullptr);
      error = std::errc();
    }
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size()) {
      fail("invalid real \"" + std::string(original) + "\"", element);
    }
    return Value(value);
  }

  // "YYYY-MM-DDTHH:MM:SSZ"; a fraction of a second and the trailing Z are
  // tolerated, a missing time is not.
  Value readDate(pugi::xml_node element) {
    std::string storage;
    const std::string_view original = trimmed(textView(element, storage));
    std::string_view text = original;
    auto invalid = [&]() { fail("invalid date \"" + std::string(original) + "\"", element); };
    auto number = [&](std::size_t minDigits, std::size_t maxDigits) -> std::int64_t {
      std::size_t count = 0;
      std::int64_t result = 0;
      while (count < text.size() && count < maxDigits && text[count] >= '0' && text[count] <= '9') {
        result = result * 10 + (text[count] - '0');
        ++count;
      }
      if (count < minDigits) invalid();
      text.remove_prefix(count);
      return result;
    };
    auto expect = [&](char c) {
      if (text.empty() || text.front() != c) invalid();
      text.remove_prefix(1);
    };
    bool negativeYear = false;
    if (!text.empty() && text.front() == '-') {
      negativeYear = true;
      text.remove_prefix(1);
    }
    std::int64_t year = number(4, 9);  // keeps the seconds within 64 bits
    if (negativeYear) year = -year;
    expect('-');
    const auto month = static_cast<int>(number(2, 2));
    expect('-');
    const auto day = static_cast<int>(number(2, 2));
    expect('T');
    const std::int64_t hour = number(2, 2);
    expect(':');
    const std::int64_t minute = number(2, 2);
    expect(':');
    const std::int64_t second = number(2, 2);
    double fraction = 0;
    if (!text.empty() && text.front() == '.') {
      double scale = 0.1;
      text.remove_prefix(1);
      if (text.empty() || text.front() < '0' || text.front() > '9') invalid();
      while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
        fraction += (text.front() - '0') * scale;
        scale /= 10;
        text.remove_prefix(1);
      }
    }
    if (!text.empty() && text.front() == 'Z') text.remove_prefix(1);
    if (!text.empty() || month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 ||
        minute > 59 || second > 60) {
      invalid();
    }
    const std::int64_t days = DaysFromCivil(year, month, day);
    const std::int64_t since1970 = days * 86400 + hour * 3600 + minute * 60 + second;
    return Value(Date{static_cast<double>(since1970 - kSeconds1970To2001) + fraction});
  }

  Value readData(pugi::xml_node element) {
    static constexpr auto kDecode = [] {
      std::array<std::int8_t, 256> table{};
      table.fill(-1);
      for (int i = 0; i < 64; ++i) table[static_cast<unsigned char>(kBase64Alphabet[i])] = i;
      return table;
    }();
    std::string storage;
    const std::string_view text = textView(element, storage);
    Data bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t accumulator = 0;
    int bits = 0;
    bool padding = false;
    for (char c : text) {
      if (isXmlSpace(c)) continue;
      if (c == '=') {
        padding = true;
        continue;
      }
      const int sextet = kDecode[static_cast<unsigned char>(c)];
      if (sextet < 0 || padding) fail("invalid base64 data", element);
      accumulator = (accumulator << 6) | static_cast<std::uint32_t>(sextet);
      bits += 6;
      if (bits >= 8) {
        bits -= 8;
        bytes.push_back(static_cast<std::uint8_t>(accumulator >> bits));
      }
    }
    return Value(std::move(bytes));
  }

  const std::string& name_;
};

// pugixml reads an 8-bit document only up to its first NUL byte, and not in
// the same way in place as from a copy (the in-place reader took a broken tag
// cut short by a NUL). No XML text holds a NUL, so an 8-bit document with one
// is refused; UTF-16 and UTF-32 documents, whose NUL bytes are parts of
// characters, are converted by pugixml the same way in both readers.
void refuseNulBytes(std::string_view bytes, const std::string& name) {
  const bool wide = bytes.size() >= 2 && (bytes[0] == '\0' || bytes[1] == '\0' ||
                                          (bytes[0] == '\xFE' && bytes[1] == '\xFF') ||
                                          (bytes[0] == '\xFF' && bytes[1] == '\xFE'));
  if (wide) return;
  if (const void* nul = std::memchr(bytes.data(), 0, bytes.size())) {
    const auto offset = static_cast<const char*>(nul) - bytes.data();
    throw FileError(name, "NUL byte at offset " + std::to_string(offset));
  }
}

Value readParsed(const pugi::xml_document& document, const pugi::xml_parse_result& result,
                 const std::string& name) {
  if (!result) {
    throw FileError(name, std::string("XML error at offset ") + std::to_string(result.offset) +
                              ": " + result.description());
  }
  return XmlReader(name).readDocument(document);
}

}  // namespace

std::string ToXml(const Value& value) {
  if (value.isNil()) throw FileError("<memory>", "a nil value cannot be stored");
  std::string out;
  out.reserve(kXmlHeader.size() + kXmlFooter.size() + estimateXmlSize(value, 0));
  out.append(kXmlHeader);
  XmlWriter(out).writeValue(value, 0);
  out.append(kXmlFooter);
  return out;
}

Value ParseXml(std::string_view bytes, const std::string& name) {
  BulkStorageScope bulk;
  if (bytes.empty()) throw FileError(name, "empty file");
  refuseNulBytes(bytes, name);
  pugi::xml_document document;
  auto result = document.load_buffer(bytes.data(), bytes.size(), kParseOptions);
  return readParsed(document, result, name);
}

Value ParseXmlInPlace(std::string& bytes, const std::string& name) {
  BulkStorageScope bulk;
  if (bytes.empty()) throw FileError(name, "empty file");
  refuseNulBytes(bytes, name);
  pugi::xml_document document;
  auto result = document.load_buffer_inplace(bytes.data(), bytes.size(), kParseOptions);
  return readParsed(document, result, name);
}

}  // namespace tarn::plist
