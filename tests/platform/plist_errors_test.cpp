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

#include <gtest/gtest.h>

#include "tarn/platform/plist_file.h"

namespace tarn::plist {
namespace {

using namespace std::string_literals;

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tarn-plist-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  ~TemporaryDirectory() {
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add);
    std::filesystem::remove_all(path_);
  }
  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }
  std::size_t entryCount() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path_),
                                                  std::filesystem::directory_iterator()));
  }

 private:
  std::filesystem::path path_;
};

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

// Builds a binary property list from objects given as raw bytes: header,
// objects, offset table and trailer, with 1-byte offsets and references.
std::string handMadeBinary(const std::vector<std::string>& objects, unsigned top = 0) {
  std::string bytes = "bplist00";
  std::vector<std::size_t> offsets;
  for (const std::string& object : objects) {
    offsets.push_back(bytes.size());
    bytes += object;
  }
  const std::size_t table = bytes.size();
  for (std::size_t offset : offsets) bytes.push_back(static_cast<char>(offset));
  std::string trailer(32, '\0');
  trailer[6] = 1;
  trailer[7] = 1;
  trailer[15] = static_cast<char>(objects.size());
  trailer[23] = static_cast<char>(top);
  trailer[31] = static_cast<char>(table);
  return bytes + trailer;
}

TEST(PlistErrors, MissingEmptyTruncatedAndRandomFilesNameTheFileAndTheReason) {
  TemporaryDirectory directory;
  const std::string missing = directory.file("missing.plist");
  EXPECT_EQ(readError(missing), missing + ": cannot open: No such file or directory");

  const std::string empty = directory.file("empty.plist");
  writeBytes(empty, "");
  EXPECT_EQ(readError(empty), empty + ": empty file");

  EXPECT_EQ(readError(directory.path().string()), directory.path().string() + ": is a directory");

  const std::string binary = ToBinary(sample());
  const std::string truncatedBinary = directory.file("truncated.bplist");
  writeBytes(truncatedBinary, binary.substr(0, binary.size() - 10));
  EXPECT_NE(readError(truncatedBinary).find(truncatedBinary + ": "), std::string::npos);
  writeBytes(truncatedBinary, binary.substr(0, 20));
  EXPECT_EQ(readError(truncatedBinary), truncatedBinary + ": truncated trailer");

  const std::string xml = ToXml(sample());
  const std::string truncatedXml = directory.file("truncated.plist");
  writeBytes(truncatedXml, xml.substr(0, xml.size() / 2));
  const std::string xmlMessage = readError(truncatedXml);
  EXPECT_EQ(xmlMessage.rfind(truncatedXml + ": XML error at offset ", 0), 0u) << xmlMessage;

  const std::string random = directory.file("random.plist");
  std::mt19937 generator(7);
  std::string noise(4096, '\0');
  for (char& c : noise) c = static_cast<char>(generator() % 256);
  noise[0] = 'Q';
  writeBytes(random, noise);
  EXPECT_EQ(readError(random), random + ": not a property list (neither \"bplist\" nor XML)");
  writeBytes(random, "bplist00" + noise);
  EXPECT_NE(readError(random), "");
  writeBytes(random, "bplist17" + noise);
  EXPECT_EQ(readError(random), random + ": unsupported binary property list version \"17\"");
}

TEST(PlistErrors, MalformedXmlSaysWhatAndWhere) {
  auto wrap = [](const std::string& body) {
    return "<?xml version=\"1.0\"?>\n<plist version=\"1.0\">" + body + "</plist>";
  };
  EXPECT_EQ(parseError(wrap("<integer>12a</integer>")), "invalid integer \"12a\" at offset 44");
  EXPECT_NE(parseError(wrap("<integer>-9223372036854775809</integer>")).find("invalid integer"),
            std::string::npos);
  EXPECT_NE(parseError(wrap("<real>1.5.2</real>")).find("invalid real"), std::string::npos);
  EXPECT_NE(parseError(wrap("<date>2010-13-01T00:00:00Z</date>")).find("invalid date"),
            std::string::npos);
  EXPECT_NE(parseError(wrap("<date>2010-01-01</date>")).find("invalid date"), std::string::npos);
  EXPECT_NE(parseError(wrap("<date>999999999999-01-01T00:00:00Z</date>")).find("invalid date"),
            std::string::npos);
  EXPECT_NE(parseError(wrap("<data>aGVs*bG8=</data>")).find("invalid base64"), std::string::npos);
  EXPECT_NE(parseError(wrap("<dict><key>a</key></dict>")).find("a dictionary key without a value"),
            std::string::npos);
  EXPECT_NE(parseError(wrap("<dict><string>a</string><true/></dict>")).find("expected <key>"),
            std::string::npos);
  EXPECT_NE(parseError(wrap("<blob/>")).find("unknown element <blob>"), std::string::npos);
  EXPECT_NE(parseError(wrap("")).find("holds no value"), std::string::npos);
  EXPECT_NE(parseError(wrap("<array><string>x</array>")).find("XML error at offset"),
            std::string::npos);
  EXPECT_NE(parseError("<html><body/></html>").find("unknown element <html>"), std::string::npos);
  // Values above the signed range keep their bit pattern, as unsigned 64-bit
  // integers of the binary form do.
  EXPECT_EQ(ParseXml(wrap("<integer>18446744073709551615</integer>")).longValue(), -1);

  std::string deep;
  for (int i = 0; i < 600; ++i) deep += "<array>";
  for (int i = 0; i < 600; ++i) deep += "</array>";
  EXPECT_NE(parseError(wrap(deep)).find("nesting deeper than 512 levels"), std::string::npos);
}

TEST(PlistErrors, MalformedBinarySaysWhatIsWrong) {
  // A well-formed one first, so the builder is known to be right.
  EXPECT_EQ(ParseBinary(handMadeBinary({"\xA2\x01\x02",
                                        "\x51"
                                        "a",
                                        "\x09"})),
            Value(Array{Value("a"), Value(true)}));
  auto error = [](const std::string& bytes) { return parseError(bytes); };
  EXPECT_EQ(error(handMadeBinary({"\xA1\x00"s})), "reference cycle through object 0");
  EXPECT_EQ(error(handMadeBinary({"\xA1\x01", "\xA1\x00"s})), "reference cycle through object 0");
  EXPECT_EQ(error(handMadeBinary({"\xA1\x05"})), "object reference out of range (5)");
  EXPECT_EQ(error(handMadeBinary({"\x5F\x10\xC8"
                                  "abc"})),
            "truncated string at offset 11");
  EXPECT_EQ(error(handMadeBinary({"\x4F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})),
            "truncated data at offset 18");
  EXPECT_EQ(error(handMadeBinary({"\xD1\x01\x02", "\x10\x05", "\x09"})),
            "dictionary key (object 1) is not a string");
  EXPECT_EQ(error(handMadeBinary({"\x75"})).substr(0, 15), "truncated strin");
  EXPECT_EQ(error(handMadeBinary({"\x91"})), "unknown object marker 0x91 at offset 8");
  EXPECT_EQ(error(handMadeBinary({"\x09"}, 3)), "top object out of range");

  std::string badOffset = handMadeBinary({"\x09"});
  badOffset[9] = '\x70';  // the one offset now points into the trailer
  EXPECT_EQ(error(badOffset), "object offset out of range (object 0)");
  std::string badTable = handMadeBinary({"\x09"});
  badTable[badTable.size() - 1] = '\x60';
  EXPECT_EQ(error(badTable), "offset table out of range (truncated file?)");
  std::string manyObjects = handMadeBinary({"\x09"});
  manyObjects[manyObjects.size() - 32 + 8] = '\x01';  // 2^56 objects
  EXPECT_EQ(error(manyObjects), "offset table extends past the trailer (truncated file?)");
  std::string badSize = handMadeBinary({"\x09"});
  badSize[badSize.size() - 32 + 6] = 0;
  EXPECT_EQ(error(badSize), "invalid offset size 0 in trailer");

  // 600 arrays each holding the next: too deep.
  std::vector<std::string> chain;
  for (int i = 1; i < 100; ++i) chain.push_back(std::string("\xA1") + static_cast<char>(i));
  chain.push_back("\x09");
  EXPECT_EQ(ParseBinary(handMadeBinary(chain)).kind(), Value::Kind::Array);

  // Shared arrays that double at every level would expand to 2^40 values.
  std::vector<std::string> doubling;
  for (int i = 1; i <= 40; ++i) {
    doubling.push_back(std::string("\xA2") + static_cast<char>(i) + static_cast<char>(i));
  }
  doubling.push_back("\x09");
  EXPECT_EQ(error(handMadeBinary(doubling)), "shared containers expand beyond the size limit");
}

TEST(PlistErrors, DeepBinaryNestingIsRefused) {
  // Offsets and references need two bytes here, so build the file directly.
  const int depth = 600;
  std::string bytes = "bplist00";
  std::vector<std::size_t> offsets;
  for (int i = 0; i < depth; ++i) {
    offsets.push_back(bytes.size());
    bytes += "\xA1";
    bytes.push_back(static_cast<char>((i + 1) >> 8));
    bytes.push_back(static_cast<char>((i + 1) & 0xFF));
  }
  offsets.push_back(bytes.size());
  bytes += "\x09";
  const std::size_t table = bytes.size();
  for (std::size_t offset : offsets) {
    bytes.push_back(static_cast<char>(offset >> 8));
    bytes.push_back(static_cast<char>(offset & 0xFF));
  }
  std::string trailer(32, '\0');
  trailer[6] = 2;
  trailer[7] = 2;
  trailer[14] = static_cast<char>(offsets.size() >> 8);
  trailer[15] = static_cast<char>(offsets.size() & 0xFF);
  trailer[30] = static_cast<char>(table >> 8);
  trailer[31] = static_cast<char>(table & 0xFF);
  EXPECT_EQ(parseError(bytes + trailer), "nesting deeper than 512 levels");
  // And the writers refuse to produce what the readers would refuse.
  Value deep(true);
  for (int i = 0; i < depth; ++i) deep = Value(Array{deep});
  EXPECT_THROW(ToBinary(deep), FileError);
  EXPECT_THROW(ToXml(deep), FileError);
}

TEST(PlistErrors, DamagedBinaryFilesNeverCrash) {
  const std::string good = ToBinary(sample());
  std::mt19937 generator(12345);
  int rejected = 0;
  for (int round = 0; round < 3000; ++round) {
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
  EXPECT_GT(rejected, 100);  // most damage is caught, and nothing crashed
}

TEST(PlistErrors, FailedWritesLeaveTheTargetUntouchedAndNoTemporaryFile) {
  TemporaryDirectory directory;
  const std::string target = directory.file("account.plist");
  WriteFile(target, Value("original"), Format::Xml);
  const std::string before = readBytes(target);
  ASSERT_EQ(directory.entryCount(), 1u);

  // A nil value cannot be stored: refused before anything is written.
  try {
    WriteFile(target, Value(), Format::Binary);
    ADD_FAILURE() << "nil was written";
  } catch (const FileError& error) {
    EXPECT_EQ(error.path(), target);
  }

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
    std::filesystem::permissions(
        directory.path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    EXPECT_THROW(WriteFile(target, Value("new"), Format::Xml), FileError);
    std::filesystem::permissions(directory.path(), std::filesystem::perms::owner_all);
  }
  EXPECT_EQ(readBytes(target), before);

  // A successful write replaces the content and keeps the permissions.
  std::filesystem::permissions(target, std::filesystem::perms::owner_read |
                                           std::filesystem::perms::owner_write |
                                           std::filesystem::perms::group_read);
  WriteFile(target, Value("replaced"), Format::Binary);
  EXPECT_EQ(ReadFile(target), Value("replaced"));
  EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms::owner_read |
                                                               std::filesystem::perms::owner_write |
                                                               std::filesystem::perms::group_read);
  EXPECT_EQ(directory.entryCount(), 2u);
}

}  // namespace
}  // namespace tarn::plist
