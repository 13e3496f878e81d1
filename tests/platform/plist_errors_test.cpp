// Broken property-list files and failed writes: every one a FileError that
// names the file and says what is wrong, never a crash or a half-written file.
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/plist_test_support.h"
#include "tarn/platform/plist_file.h"

namespace tarn::plist {
namespace {

using namespace std::string_literals;

void writeBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The message of the FileError that reading a file raises ("" if none).
std::string readError(const std::string& path) {
  try {
    ReadFile(path);
  } catch (const FileError& error) {
    EXPECT_EQ(error.path(), path);
    return error.what();
  }
  return "";
}

std::string parseError(const std::string& bytes) {
  try {
    Parse(bytes, "test.plist");
  } catch (const FileError& error) {
    return error.reason();
  }
  return "";
}

Value sample() {
  Dictionary entry;
  entry["description"] = "Rent";
  entry["amount"] = -1250.5;
  entry["date"] = 20070315;
  entry["notes"] = "caf\xC3\xA9";
  return Value(Array{Value(entry), Value(entry), Value(Data{1, 2, 3}), Value(Date{1e8})});
}

// Appends `value` big-endian in `width` bytes.
void putNumber(std::string& bytes, std::size_t value, int width) {
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<char>(value >> shift));
  }
}

// A binary property list from objects given as raw bytes: header, objects,
// offset table and trailer, with offsets and references `width` bytes wide.
std::string handMadeBinary(const std::vector<std::string>& objects, unsigned top = 0,
                           int width = 1) {
  std::string bytes = "bplist00";
  std::vector<std::size_t> offsets;
  for (const std::string& object : objects) {
    offsets.push_back(bytes.size());
    bytes += object;
  }
  const std::size_t table = bytes.size();
  for (std::size_t offset : offsets) putNumber(bytes, offset, width);
  bytes += std::string(6, '\0');
  putNumber(bytes, static_cast<std::size_t>(width), 1);
  putNumber(bytes, static_cast<std::size_t>(width), 1);
  putNumber(bytes, objects.size(), 8);
  putNumber(bytes, top, 8);
  putNumber(bytes, table, 8);
  return bytes;
}

// A chain of `depth` one-element arrays ending in true, with 2-byte references.
std::string nestedArrays(int depth) {
  std::vector<std::string> chain;
  for (int i = 1; i <= depth; ++i) {
    chain.emplace_back("\xA1");
    putNumber(chain.back(), static_cast<std::size_t>(i), 2);
  }
  chain.emplace_back("\x09");
  return handMadeBinary(chain, 0, 2);
}

TEST(PlistErrors, MissingEmptyTruncatedAndRandomFilesNameTheFileAndTheReason) {
  TemporaryDirectory directory;
  const std::string missing = directory.file("missing.plist");
  EXPECT_EQ(readError(missing), missing + ": cannot open: No such file or directory");
  EXPECT_EQ(readError(directory.path().string()), directory.path().string() + ": is a directory");

  std::mt19937 generator(7);
  std::string noise(4096, '\0');
  for (char& c : noise) c = static_cast<char>(generator() % 256);
  noise[0] = 'Q';
  const std::string binary = ToBinary(sample());
  const std::string xml = ToXml(sample());
  struct Case {
    std::string bytes, reason;
    bool whole;  // the reason is the whole message, not its start
  };
  // clang-format off
  const Case cases[] = {
      {"", "empty file", true}, {binary.substr(0, 20), "truncated trailer", true},
      {binary.substr(0, binary.size() - 10), "", false},
      {xml.substr(0, xml.size() / 2), "XML error at offset ", false},
      {noise, "not a property list (neither \"bplist\" nor XML)", true},
      {"bplist00" + noise, "", false},
      {"bplist17" + noise, "unsupported binary property list version \"17\"", true}};
  // clang-format on
  const std::string path = directory.file("broken.plist");
  for (const Case& c : cases) {
    writeBytes(path, c.bytes);
    const std::string message = readError(path);
    EXPECT_GT(message.size(), path.size() + 2);
    if (c.whole) {
      EXPECT_EQ(message, path + ": " + c.reason);
    }
    EXPECT_EQ(message.rfind(path + ": " + c.reason, 0), 0u) << message;
  }
}

TEST(PlistErrors, MalformedXmlSaysWhatAndWhere) {
  std::string deep;
  for (int i = 0; i < 600; ++i) deep = "<array>" + deep + "</array>";
  const std::pair<std::string, std::string> cases[] = {
      {"<integer>12a</integer>", "invalid integer \"12a\" at offset 44"},
      {"<integer>-9223372036854775809</integer>", "invalid integer"},
      {"<real>1.5.2</real>", "invalid real"},
      {"<date>2010-13-01T00:00:00Z</date>", "invalid date"},
      {"<date>2010-01-01</date>", "invalid date"},
      {"<date>999999999999-01-01T00:00:00Z</date>", "invalid date"},
      {"<data>aGVs*bG8=</data>", "invalid base64"},
      {"<dict><key>a</key></dict>", "a dictionary key without a value"},
      {"<dict><string>a</string><true/></dict>", "expected <key>"},
      {"<blob/>", "unknown element <blob>"},
      {"", "holds no value"},
      {"<array><string>x</array>", "XML error at offset"},
      {deep, "nesting deeper than 512 levels"}};
  auto wrap = [](const std::string& body) {
    return "<?xml version=\"1.0\"?>\n<plist version=\"1.0\">" + body + "</plist>";
  };
  for (const auto& [body, message] : cases) {
    EXPECT_NE(parseError(wrap(body)).find(message), std::string::npos) << message;
  }
  EXPECT_NE(parseError("<html><body/></html>").find("unknown element <html>"), std::string::npos);
  // Values above the signed range keep their bit pattern, as binary unsigned integers do.
  EXPECT_EQ(ParseXml(wrap("<integer>18446744073709551615</integer>")).longValue(), -1);
}

TEST(PlistErrors, MalformedBinarySaysWhatIsWrong) {
  // A well-formed one first, so the builder is known to be right.
  EXPECT_EQ(ParseBinary(handMadeBinary({"\xA2\x01\x02",
                                        "\x51"
                                        "a",
                                        "\x09"})),
            Value(Array{Value("a"), Value(true)}));
  EXPECT_EQ(ParseBinary(nestedArrays(100)).kind(), Value::Kind::Array);
  struct Case {
    std::vector<std::string> objects;
    unsigned top;
    std::string message;
  };
  // clang-format off
  const Case cases[] = {
      {{"\xA1\x00"s}, 0, "reference cycle through object 0"},
      {{"\xA1\x01", "\xA1\x00"s}, 0, "reference cycle through object 0"},
      {{"\xA1\x05"}, 0, "object reference out of range (5)"},
      {{"\x5F\x10\xC8" "abc"}, 0, "truncated string at offset 11"},
      {{"\x4F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}, 0, "truncated data at offset 18"},
      {{"\xD1\x01\x02", "\x10\x05", "\x09"}, 0, "dictionary key (object 1) is not a string"},
      {{"\x91"}, 0, "unknown object marker 0x91 at offset 8"},
      // Found by fuzzing: nulls read as nil could not be written back.
      {{"\x00"s}, 0, "null object at offset 8"},
      {{"\xA1\x01", "\x00"s}, 0, "null object at offset 10"},
      {{"\xD1\x01\x02", "\x51" "a", "\x00"s}, 0, "null object at offset 13"},
      {{"\x0F"}, 0, "unknown object marker 0x0F at offset 8"},
      {{"\x09"}, 3, "top object out of range"}};
  // clang-format on
  for (const Case& c : cases) {
    EXPECT_EQ(parseError(handMadeBinary(c.objects, c.top)), c.message);
  }
  EXPECT_EQ(parseError(handMadeBinary({"\x75"})).substr(0, 15), "truncated strin");
  // One byte of a good file changed: {position (negative from the end), byte, message}.
  const std::tuple<int, char, std::string> patches[] = {
      {9, '\x70', "object offset out of range (object 0)"},
      {-1, '\x60', "offset table out of range (truncated file?)"},
      {-24, '\x01', "offset table extends past the trailer (truncated file?)"},
      {-26, '\0', "invalid offset size 0 in trailer"}};
  for (const auto& [position, byte, message] : patches) {
    std::string bytes = handMadeBinary({"\x09"});
    bytes[position < 0 ? bytes.size() + position : position] = byte;
    EXPECT_EQ(parseError(bytes), message);
  }
  // Shared arrays that double at every level would expand to 2^40 values.
  std::vector<std::string> doubling;
  for (int i = 1; i <= 40; ++i) {
    doubling.push_back(std::string("\xA2") + static_cast<char>(i) + static_cast<char>(i));
  }
  doubling.push_back("\x09");
  EXPECT_EQ(parseError(handMadeBinary(doubling)), "shared containers expand beyond the size limit");
  EXPECT_EQ(parseError(nestedArrays(600)), "nesting deeper than 512 levels");
  // And the writers refuse to produce what the readers would refuse.
  Value deep(true);
  for (int i = 0; i < 600; ++i) deep = Value(Array{deep});
  EXPECT_THROW(ToBinary(deep), FileError);
  EXPECT_THROW(ToXml(deep), FileError);
}

// Found by fuzzing: malformed UTF-8 (in a binary UTF-8 string or an XML
// document) came through as it was, and the binary writer then changed it;
// a NUL, which a binary file can hold, was cut off by the XML round trip; and
// the two XML readers disagreed on a document holding a NUL byte.
TEST(PlistErrors, StringsReadAsValidUtf8AndOnlyBinaryHoldsANul) {
  // A stray Latin-1 byte, a valid e-acute, a surrogate and a truncated sequence.
  const std::string malformed = "caf\xE9 \xC3\xA9 \xED\xA0\x80 \xF0\x9F";
  const std::string fffd = "\xEF\xBF\xBD";
  const Value expected(Dictionary{
      {"k" + fffd, "caf" + fffd + " \xC3\xA9 " + fffd + fffd + fffd + " " + fffd + fffd}});
  const std::string binary = handMadeBinary({"\xD1\x01\x02",
                                             "\x72"
                                             "k\xE9",
                                             "\x7E" + malformed});
  const std::string xml =
      "<plist><dict><key>k\xE9</key><string>" + malformed + "</string></dict></plist>";
  for (const std::string& bytes : {binary, xml}) {
    const Value read = Parse(bytes);
    EXPECT_EQ(read, expected);
    EXPECT_EQ(ParseBinary(ToBinary(read)), expected);
    EXPECT_EQ(ParseXml(ToXml(read)), expected);
  }

  const Value nul(Array{Value(std::string("a\0b", 3))});
  EXPECT_EQ(ParseBinary(ToBinary(nul)), nul);
  try {
    ToXml(Value(Dictionary{{std::string("k\0", 2), 1}}));
    ADD_FAILURE() << "a key holding U+0000 was written as XML";
  } catch (const FileError& error) {
    EXPECT_EQ(error.reason(), "a string holds the character U+0000, which XML cannot store");
  }
  EXPECT_THROW(ToXml(nul), FileError);

  // An 8-bit XML document holding a NUL byte is refused by both XML readers
  // alike; the in-place one used to accept a broken tag cut short by one.
  for (const std::string& bytes :
       {"<string>a</string>\0"s,
        "w\x92^$<string/"
        ">\xFF\xFF\xFF\xFF\xFF\xFF<\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E\x9E"
        "a\x9E\x9Er\xFF"
        "ay/\x00\x00\x00>"s}) {
    std::string buffer = bytes;
    EXPECT_THROW(ParseXml(bytes), FileError);
    EXPECT_THROW(ParseXmlInPlace(buffer), FileError);
  }
  EXPECT_EQ(parseError("<string>a</string>\0"s), "NUL byte at offset 18");
}

// Other writers may store keys in any order, or one key twice. The reader
// remembers key pairs it found in order; dictionaries whose keys come in the
// other order, between and after sorted ones, must still be sorted.
TEST(PlistErrors, BinaryKeysInAnyOrderReadSortedAndTheLastDuplicateWins) {
  const Value sorted(Dictionary{{"a", 1}, {"b", 2}});
  // Objects: 0 the list of 2, 1, 2, 3, 4, 5, 12; 1 {b: 2, a: 1}; 2 {a: 1, b: 2};
  // 3 {b: 1, b: 2, a: 1}; 4 {a: 1, a: 2}; 5 {c: 3, a: 1, b: 2}; then 6 "a",
  // 7 "b", 8 "c", 9 the integer 1, 10 the integer 2, 11 the integer 3;
  // 12 {b: "x", a: "y", c: "z"}, whose values are strings decoded while
  // its keys are placed; 13 "x", 14 "y", 15 "z".
  const Value list = ParseBinary(handMadeBinary(
      {"\xA7\x02\x01\x02\x03\x04\x05\x0C", "\xD2\x07\x06\x0A\x09", "\xD2\x06\x07\x09\x0A",
       "\xD3\x07\x07\x06\x09\x0A\x09", "\xD2\x06\x06\x09\x0A", "\xD3\x08\x06\x07\x0B\x09\x0A",
       "\x51"
       "a",
       "\x51"
       "b",
       "\x51"
       "c",
       "\x10\x01", "\x10\x02", "\x10\x03", "\xD3\x07\x06\x08\x0D\x0E\x0F",
       "\x51"
       "x",
       "\x51"
       "y",
       "\x51"
       "z"}));
  EXPECT_EQ(list, Value(Array{sorted, sorted, sorted, sorted, Value(Dictionary{{"a", 2}}),
                              Value(Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}),
                              Value(Dictionary{{"a", "y"}, {"b", "x"}, {"c", "z"}})}));
}

TEST(PlistErrors, DamagedBinaryFilesNeverCrash) {
  const std::string good = ToBinary(sample());
  std::mt19937 generator(12345);
  int rejected = 0;
  for (int round = 0; round < 1000; ++round) {
    std::string damaged = good;
    const int flips = 1 + static_cast<int>(generator() % 4);
    for (int i = 0; i < flips; ++i) {
      damaged[generator() % damaged.size()] = static_cast<char>(generator() % 256);
    }
    if (round % 5 == 0) damaged.resize(generator() % damaged.size());
    try {
      ParseBinary(damaged, "damaged");
    } catch (const FileError& failure) {
      ++rejected;
      EXPECT_EQ(failure.path(), "damaged");
      EXPECT_FALSE(failure.reason().empty());
    }
  }
  EXPECT_GT(rejected, 30);  // most damage is caught, and nothing crashed
}

TEST(PlistErrors, FailedWritesLeaveTheTargetUntouchedAndNoTemporaryFile) {
  using std::filesystem::perms;
  TemporaryDirectory directory;
  const std::string target = directory.file("account.plist");
  WriteFile(target, Value("original"), Format::Xml);
  const std::string before = readBytes(target);
  ASSERT_EQ(directory.entryCount(), 1u);

  EXPECT_THROW(WriteFile(target, Value(), Format::Binary), FileError);  // nil cannot be stored

  // The file system refuses the bytes halfway (file size limit).
  {
    struct rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = old;
    small.rlim_cur = 4096;
    ::setrlimit(RLIMIT_FSIZE, &small);
    try {
      WriteFile(target, Value(std::string(100000, 'z')), Format::Xml);
      ADD_FAILURE() << "a write beyond the size limit succeeded";
    } catch (const FileError& error) {
      EXPECT_NE(std::string(error.what()).find(target + ": cannot write: "), std::string::npos)
          << error.what();
    }
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
  }
  EXPECT_EQ(readBytes(target), before);
  EXPECT_EQ(directory.entryCount(), 1u);

  // The rename fails: the target is a directory with contents.
  const std::string blocked = directory.file("blocked");
  std::filesystem::create_directories(blocked + "/inside");
  EXPECT_THROW(WriteFile(blocked, Value(1), Format::Binary), FileError);
  EXPECT_TRUE(std::filesystem::is_directory(blocked + "/inside"));
  EXPECT_EQ(directory.entryCount(), 2u);

  // A missing directory: nothing can be created.
  EXPECT_THROW(WriteFile(directory.file("no/such/dir.plist"), Value(1), Format::Xml), FileError);

  // An unwritable directory (only meaningful when not running as root).
  if (::geteuid() != 0) {
    std::filesystem::permissions(directory.path(), perms::owner_read | perms::owner_exec);
    EXPECT_THROW(WriteFile(target, Value("new"), Format::Xml), FileError);
    std::filesystem::permissions(directory.path(), perms::owner_all);
  }
  EXPECT_EQ(readBytes(target), before);

  // A successful write replaces the content and keeps the permissions.
  const auto mode = perms::owner_read | perms::owner_write | perms::group_read;
  std::filesystem::permissions(target, mode);
  WriteFile(target, Value("replaced"), Format::Binary);
  EXPECT_EQ(ReadFile(target), Value("replaced"));
  EXPECT_EQ(std::filesystem::status(target).permissions(), mode);
  EXPECT_EQ(directory.entryCount(), 2u);
}

}  // namespace
}  // namespace tarn::plist
