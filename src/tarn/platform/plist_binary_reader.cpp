// Reading binary property lists ("bplist00"). The file ends in a 32-byte
// trailer that locates the offset table; the table gives the position of
// every object, and containers refer to their elements by object number.
// Every offset, count and reference is checked against the bytes at hand
// before it is used.
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tarn/platform/plist_file.h"
#include "tarn/platform/utf8.h"

namespace tarn::plist {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;

// A collection that several containers share is decoded once per reference
// (values are trees, not graphs). Repeated decoding may add at most this many
// elements beyond the file's size, which stops "billion laughs" files.
constexpr std::uint64_t kRepeatAllowance = 1 << 20;
// Likewise a shared string or data object is copied for every reference; the
// copies may total this many times the file's size (plus a fixed allowance).
constexpr std::uint64_t kPayloadExpansion = 64;
constexpr std::uint64_t kPayloadAllowance = std::uint64_t{64} << 20;
// Strings up to this length are decoded once per object and then copied;
// longer ones are rarely shared and not worth keeping twice.
constexpr std::size_t kCachedStringLength = 64;

[[gnu::always_inline]] inline std::uint64_t readBigEndian(const std::uint8_t* p, unsigned size) {
  switch (size) {
    case 1:
      return p[0];
    case 2:
      return (std::uint64_t{p[0]} << 8) | p[1];
    case 3:
      return (std::uint64_t{p[0]} << 16) | (std::uint64_t{p[1]} << 8) | p[2];
    case 4:
      return (std::uint64_t{p[0]} << 24) | (std::uint64_t{p[1]} << 16) |
             (std::uint64_t{p[2]} << 8) | p[3];
    case 8: {
      std::uint64_t bits;
      std::memcpy(&bits, p, 8);
      return __builtin_bswap64(bits);
    }
    default: {
      std::uint64_t result = 0;
      for (unsigned i = 0; i < size; ++i) result = (result << 8) | p[i];
      return result;
    }
  }
}

void appendUtf8(std::string& out, std::uint32_t codePoint) {
  if (codePoint < 0x80) {
    out.push_back(static_cast<char>(codePoint));
  } else if (codePoint < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
    out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
  } else if (codePoint < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
    out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
    out.push_back(static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
  }
}

// One-byte strings are ASCII; stray bytes above 127 are taken as Latin-1 so
// that the result is always valid UTF-8.
std::string decodeOneByteString(const std::uint8_t* p, std::size_t count) {
  std::size_t i = 0;
  while (i < count && p[i] < 0x80) ++i;
  if (i == count) return std::string(reinterpret_cast<const char*>(p), count);
  std::string out(reinterpret_cast<const char*>(p), i);
  for (; i < count; ++i) appendUtf8(out, p[i]);
  return out;
}

// UTF-16 big-endian to UTF-8; unpaired surrogates become U+FFFD.
std::string decodeUtf16BigEndian(const std::uint8_t* p, std::size_t units) {
  std::string out;
  out.reserve(units * 3);
  for (std::size_t i = 0; i < units; ++i) {
    std::uint32_t unit = (std::uint32_t{p[2 * i]} << 8) | p[2 * i + 1];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units) {
      const std::uint32_t low = (std::uint32_t{p[2 * i + 2]} << 8) | p[2 * i + 3];
      if (low >= 0xDC00 && low <= 0xDFFF) {
        appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
        ++i;
        continue;
      }
    }
    if (unit >= 0xD800 && unit <= 0xDFFF) unit = 0xFFFD;
    appendUtf8(out, unit);
  }
  return out;
}

std::string hexByte(unsigned byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  return std::string("0x") + kDigits[(byte >> 4) & 15] + kDigits[byte & 15];
}

class BinaryReader {
 public:
  BinaryReader(std::string_view bytes, const std::string& name)
      : data_(reinterpret_cast<const std::uint8_t*>(bytes.data())),
        size_(bytes.size()),
        name_(name) {}

  Value read() {
    if (size_ < kHeaderSize || std::memcmp(data_, "bplist", 6) != 0) {
      fail("not a binary property list");
    }
    if (std::memcmp(data_ + 6, "00", 2) != 0) {
      fail("unsupported binary property list version \"" +
           std::string(reinterpret_cast<const char*>(data_ + 6), 2) + "\"");
    }
    if (size_ < kHeaderSize + kTrailerSize + 1) fail("truncated trailer");
    if (size_ > 0xFFFFFFFFull) fail("larger than 4 GiB");
    readTrailer();
    state_.assign(objectCount_, kUnseen);
    stringSlot_.assign(objectCount_, 0);
    repeatBudget_ = size_ + kRepeatAllowance;
    payloadBudget_ = kPayloadExpansion * size_ + kPayloadAllowance;
    return readObject(topObject_, 1);
  }

 private:
  enum : std::uint8_t { kUnseen, kInProgress, kDone };

  [[noreturn]] void fail(const std::string& reason) const { throw FileError(name_, reason); }

  void readTrailer() {
    const std::uint8_t* trailer = data_ + size_ - kTrailerSize;
    offsetSize_ = trailer[6];
    refSize_ = trailer[7];
    const std::uint64_t objectCount = readBigEndian(trailer + 8, 8);
    const std::uint64_t topObject = readBigEndian(trailer + 16, 8);
    const std::uint64_t tableOffset = readBigEndian(trailer + 24, 8);
    objectsEnd_ = size_ - kTrailerSize;
    if (offsetSize_ < 1 || offsetSize_ > 8) {
      fail("invalid offset size " + std::to_string(offsetSize_) + " in trailer");
    }
    if (refSize_ < 1 || refSize_ > 8) {
      fail("invalid object reference size " + std::to_string(refSize_) + " in trailer");
    }
    if (objectCount == 0) fail("no objects");
    if (tableOffset < kHeaderSize || tableOffset >= objectsEnd_) {
      fail("offset table out of range (truncated file?)");
    }
    if (objectCount > (objectsEnd_ - tableOffset) / offsetSize_) {
      fail("offset table extends past the trailer (truncated file?)");
    }
    if (topObject >= objectCount) fail("top object out of range");
    objectCount_ = objectCount;
    topObject_ = topObject;
    // Offsets are decoded and checked once, up front: objects are then
    // found by an array look-up.
    const std::uint8_t* table = data_ + tableOffset;
    offsets_.resize(objectCount_);
    for (std::uint64_t i = 0; i < objectCount_; ++i) {
      const std::uint64_t offset = readBigEndian(table + i * offsetSize_, offsetSize_);
      if (offset < kHeaderSize || offset >= objectsEnd_) {
        fail("object offset out of range (object " + std::to_string(i) + ")");
      }
      offsets_[i] = static_cast<std::uint32_t>(offset);
    }
  }

  // Position of an object, between the header and the trailer.
  std::size_t offsetOf(std::uint64_t ref) const { return offsets_[ref]; }

  // The element count of an object whose marker is at `at`, and where its
  // contents begin. Counts of 15 and more follow the marker as an integer.
  std::uint64_t readCount(std::size_t at, std::size_t& contents) const {
    const unsigned nibble = data_[at] & 0x0F;
    contents = at + 1;
    if (nibble != 0x0F) return nibble;
    if (contents >= objectsEnd_) fail("truncated object count");
    const unsigned marker = data_[contents];
    if ((marker & 0xF0) != 0x10 || (marker & 0x0F) > 3) {
      fail("invalid object count at offset " + std::to_string(contents));
    }
    const unsigned size = 1u << (marker & 0x0F);
    if (objectsEnd_ - contents - 1 < size) fail("truncated object count");
    const std::uint64_t count = readBigEndian(data_ + contents + 1, size);
    contents += 1 + size;
    return count;
  }

  // Checks that `count` units of `unitSize` bytes fit between `contents` and
  // the trailer.
  void requireBytes(std::size_t contents, std::uint64_t count, std::uint64_t unitSize,
                    const char* what) const {
    if (contents > objectsEnd_ || count > (objectsEnd_ - contents) / unitSize) {
      failTruncated(contents, what);
    }
  }
  [[noreturn, gnu::noinline]] void failTruncated(std::size_t contents, const char* what) const {
    fail(std::string("truncated ") + what + " at offset " + std::to_string(contents));
  }

  std::uint64_t readRef(const std::uint8_t* p) const {
    const std::uint64_t ref = readBigEndian(p, refSize_);
    if (ref >= objectCount_) failReference(ref);
    return ref;
  }
  [[noreturn, gnu::noinline]] void failReference(std::uint64_t ref) const {
    fail("object reference out of range (" + std::to_string(ref) + ")");
  }

  // Converts to the value of an object, so that a container can build the
  // value in its own storage instead of moving it there.
  struct ObjectAt {
    BinaryReader& reader;
    std::uint64_t ref;
    int depth;
    operator Value() const { return reader.readObject(ref, depth); }
  };

  Value readObject(std::uint64_t ref, int depth) {
    if (depth > kMaxNestingDepth) {
      fail("nesting deeper than " + std::to_string(kMaxNestingDepth) + " levels");
    }
    const std::size_t at = offsetOf(ref);
    const unsigned marker = data_[at];
    std::size_t contents = at + 1;
    switch (marker >> 4) {
      case 0x0:
        if (marker == 0x08) return Value(false);
        if (marker == 0x09) return Value(true);
        // A null cannot be stored again (writers skip nil), so a file
        // holding one is refused rather than changed on its next save.
        if (marker == 0x00) fail("null object at offset " + std::to_string(at));
        break;
      case 0x1:
        return Value(readInteger(at));
      case 0x2: {
        const unsigned size = 1u << (marker & 0x0F);
        if (size != 4 && size != 8) break;
        requireBytes(contents, size, 1, "real");
        const std::uint64_t bits = readBigEndian(data_ + contents, size);
        if (size == 4) {
          float value;
          const auto narrow = static_cast<std::uint32_t>(bits);
          std::memcpy(&value, &narrow, 4);
          return Value(static_cast<double>(value));
        }
        double value;
        std::memcpy(&value, &bits, 8);
        return Value(value);
      }
      case 0x3: {
        if (marker != 0x33) break;
        requireBytes(contents, 8, 1, "date");
        const std::uint64_t bits = readBigEndian(data_ + contents, 8);
        double seconds;
        std::memcpy(&seconds, &bits, 8);
        return Value(Date{seconds});
      }
      case 0x4: {
        const std::uint64_t count = readCount(at, contents);
        requireBytes(contents, count, 1, "data");
        charge(count);
        return Value(Data(data_ + contents, data_ + contents + count));
      }
      case 0x5:
      case 0x6:
      case 0x7:
        return Value(readString(at, ref));
      case 0x8: {
        // Keyed-archive identifiers read as the dictionary their XML form is.
        const unsigned size = (marker & 0x0F) + 1;
        requireBytes(contents, size, 1, "identifier");
        Dictionary uid;
        uid.emplace("CF$UID", static_cast<std::int64_t>(readBigEndian(data_ + contents, size)));
        return Value(std::move(uid));
      }
      case 0xA:
      case 0xC:
        return readArray(at, ref, depth);
      case 0xD:
        return readDictionary(at, ref, depth);
    }
    fail("unknown object marker " + hexByte(marker) + " at offset " + std::to_string(at));
  }

  // 1, 2 and 4-byte integers are unsigned, 8-byte ones signed; 16-byte ones
  // hold unsigned values beyond the signed range, kept as their bit pattern.
  std::int64_t readInteger(std::size_t at) const {
    const unsigned size = 1u << (data_[at] & 0x0F);
    if (size > 16) fail("invalid integer size at offset " + std::to_string(at));
    requireBytes(at + 1, size, 1, "integer");
    if (size == 16) {
      const std::uint64_t high = readBigEndian(data_ + at + 1, 8);
      const std::uint64_t low = readBigEndian(data_ + at + 9, 8);
      if (high != 0 && high != ~std::uint64_t{0}) {
        fail("integer beyond 64 bits at offset " + std::to_string(at));
      }
      return static_cast<std::int64_t>(low);
    }
    return static_cast<std::int64_t>(readBigEndian(data_ + at + 1, size));
  }

  // Charges the bytes of a decoded string or data object to the budget.
  void charge(std::uint64_t bytes) {
    if (bytes > payloadBudget_) fail("shared strings expand beyond the size limit");
    payloadBudget_ -= bytes;
  }

  // The string of an object decoded before (charged again, as a copy), or
  // nullptr.
  const std::string* decodedBefore(std::uint64_t ref) {
    const std::uint32_t slot = stringSlot_[ref];
    if (slot == 0) return nullptr;
    charge(strings_[slot - 1].size());
    return &strings_[slot - 1];
  }

  std::string readString(std::size_t at, std::uint64_t ref) {
    if (const std::string* known = decodedBefore(ref)) return *known;
    std::string text = decodeString(at, ref);
    if (text.size() <= kCachedStringLength && strings_.size() < 0xFFFFFFFEu) {
      strings_.push_back(text);
      stringSlot_[ref] = static_cast<std::uint32_t>(strings_.size());
    }
    return text;
  }

  // A dictionary key, decoded once per object. The reference is good until
  // the next string is decoded.
  const std::string& readKey(std::size_t at, std::uint64_t ref) {
    if (const std::string* known = decodedBefore(ref)) return *known;
    longKey_ = readString(at, ref);
    if (const std::uint32_t slot = stringSlot_[ref]; slot != 0) return strings_[slot - 1];
    return longKey_;
  }

  // Whether key object `after` sorts after key object `before`. The
  // dictionaries of a list repeat the same key objects in the same order, so
  // pairs found in order are remembered and their text is not compared again.
  bool ascending(std::uint64_t before, const std::string& beforeKey, std::uint64_t after,
                 const std::string& afterKey) {
    OrderedPair& known = orderedPairs_[(before * 0x9E3779B1u + after) % orderedPairs_.size()];
    if (known.before == before && known.after == after) return true;
    if (!(std::string_view(beforeKey) < std::string_view(afterKey))) return false;
    known = {before, after};
    return true;
  }

  std::string decodeString(std::size_t at, std::uint64_t ref) {
    std::size_t contents;
    const std::uint64_t count = readCount(at, contents);
    switch (data_[at] >> 4) {
      case 0x5:
        requireBytes(contents, count, 1, "string");
        charge(count);
        return decodeOneByteString(data_ + contents, count);
      case 0x6:
        requireBytes(contents, count, 2, "string");
        charge(2 * count);
        return decodeUtf16BigEndian(data_ + contents, count);
      case 0x7: {  // UTF-8, as later versions of the format write
        requireBytes(contents, count, 1, "string");
        charge(count);
        std::string text(reinterpret_cast<const char*>(data_ + contents), count);
        MakeValidUtf8(text);
        return text;
      }
    }
    fail("object " + std::to_string(ref) + " is not a string");
  }

  // Marks a container as being decoded; a reference back to it is a cycle.
  void enter(std::uint64_t ref, std::uint64_t count) {
    if (state_[ref] == kInProgress) fail("reference cycle through object " + std::to_string(ref));
    if (state_[ref] == kDone) {
      if (count > repeatBudget_) fail("shared containers expand beyond the size limit");
      repeatBudget_ -= count;
    }
    state_[ref] = kInProgress;
  }

  Value readArray(std::size_t at, std::uint64_t ref, int depth) {
    std::size_t contents;
    const std::uint64_t count = readCount(at, contents);
    requireBytes(contents, count, refSize_, "array");
    enter(ref, count);
    Value result{Array{}};
    Array& array = result.mutableArray();
    array.reserve(count);
    const std::uint8_t* refs = data_ + contents;
    for (std::uint64_t i = 0; i < count; ++i) {
      array.emplace_back(ObjectAt{*this, readRef(refs + i * refSize_), depth + 1});
    }
    state_[ref] = kDone;
    return result;
  }

  Value readDictionary(std::size_t at, std::uint64_t ref, int depth) {
    std::size_t contents;
    const std::uint64_t count = readCount(at, contents);
    if (count > objectsEnd_) fail("truncated dictionary at offset " + std::to_string(at));
    requireBytes(contents, 2 * count, refSize_, "dictionary");
    enter(ref, count);
    Value result{Dictionary{}};
    Dictionary& dictionary = result.mutableDictionary();
    dictionary.reserve(static_cast<std::size_t>(count));
    const std::uint8_t* keyRefs = data_ + contents;
    const std::uint8_t* valueRefs = keyRefs + count * refSize_;
    std::uint64_t lastKeyRef = 0;  // the key object of the last item
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t keyRef = readRef(keyRefs + i * refSize_);
      const std::size_t keyAt = offsetOf(keyRef);
      const unsigned keyKind = data_[keyAt] >> 4;
      if (keyKind != 0x5 && keyKind != 0x6 && keyKind != 0x7) {
        fail("dictionary key (object " + std::to_string(keyRef) + ") is not a string");
      }
      const std::string& key = readKey(keyAt, keyRef);
      const ObjectAt value{*this, readRef(valueRefs + i * refSize_), depth + 1};
      // Keys usually come sorted, and then each one is appended where it is
      // built. Otherwise it goes to its place; a repeated key overwrites its
      // first slot: the last value wins.
      if (dictionary.empty() ||
          ascending(lastKeyRef, std::prev(dictionary.end())->first, keyRef, key)) {
        dictionary.appendSorted(key, value);
        lastKeyRef = keyRef;
      } else {
        // The key is copied first: reading the value may decode strings,
        // which moves the decoded key.
        std::string placedKey = key;
        dictionary.insert_or_assign(std::move(placedKey), Value(value));
      }
    }
    state_[ref] = kDone;
    return result;
  }

  const std::uint8_t* data_;
  std::size_t size_;
  const std::string& name_;
  unsigned offsetSize_ = 0;
  unsigned refSize_ = 0;
  std::uint64_t objectCount_ = 0;
  std::uint64_t topObject_ = 0;
  std::size_t objectsEnd_ = 0;
  LargeVector<std::uint32_t> offsets_;
  LargeVector<std::uint8_t> state_;
  // Strings decoded so far, by object: slot i + 1 in strings_, 0 for none.
  // Keys and repeated texts are shared objects, decoded once and copied.
  LargeVector<std::uint32_t> stringSlot_;
  std::vector<std::string> strings_;
  std::string longKey_;
  struct OrderedPair {
    std::uint64_t before = ~std::uint64_t{0};
    std::uint64_t after = ~std::uint64_t{0};
  };
  std::array<OrderedPair, 64> orderedPairs_{};
  std::uint64_t repeatBudget_ = 0;
  std::uint64_t payloadBudget_ = 0;
};

}  // namespace

bool LooksBinary(std::string_view bytes) {
  return bytes.substr(0, 6) == "bplist";
}

Value ParseBinary(std::string_view bytes, const std::string& name) {
  if (bytes.empty()) throw FileError(name, "empty file");
  BulkStorageScope bulk;
  return BinaryReader(bytes, name).read();
}

}  // namespace tarn::plist
