// Writing binary property lists ("bplist00") in linear time, with the
// smallest reference and offset sizes that the counts allow. Equal strings
// and data are stored once; so are equal numbers and dates that recur while
// they are still among the recent ones (see RecentNumber).
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "tarn/platform/plist_file.h"
#include "tarn/platform/utf8.h"

namespace tarn::plist {
namespace {

constexpr std::uint32_t kNoObject = ~std::uint32_t{0};

// The kinds of object that equal values share.
enum class ObjectKind : std::uint32_t { Integer, Real, Date, String, Data };

constexpr std::size_t kSmallIntegers = 256;

std::array<std::uint32_t, kSmallIntegers> filledWith(std::uint32_t value) {
  std::array<std::uint32_t, kSmallIntegers> table;
  table.fill(value);
  return table;
}

std::uint64_t mix(std::uint64_t h) {
  h ^= h >> 31;
  h *= 0xBF58476D1CE4E5B9ull;
  h ^= h >> 29;
  h *= 0x94D049BB133111EBull;
  h ^= h >> 32;
  return h;
}

std::uint64_t hashBytes(std::string_view bytes, ObjectKind kind) {
  std::uint64_t h = (bytes.size() * 0x9E3779B97F4A7C15ull) ^ static_cast<std::uint64_t>(kind);
  const char* p = bytes.data();
  std::size_t n = bytes.size();
  for (; n >= 8; p += 8, n -= 8) {
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    h = (h ^ word) * 0x9FB21C651E98DF25ull;
    h ^= h >> 28;
  }
  std::uint64_t tail = 0;
  if (n != 0) std::memcpy(&tail, p, n);  // p is null for empty data
  return mix(h ^ tail);
}

// Smallest of 1, 2, 4 or 8 bytes that holds `value`: the sizes an integer
// marker can state.
unsigned powerOfTwoBytesFor(std::uint64_t value) {
  if (value <= 0xFF) return 1;
  if (value <= 0xFFFF) return 2;
  if (value <= 0xFFFFFFFFull) return 4;
  return 8;
}

// Smallest number of bytes, 1 to 8, that holds `value`: for the trailer's
// reference and offset sizes, which may be any of them.
unsigned bytesFor(std::uint64_t value) {
  unsigned size = 1;
  while (size < 8 && (value >> (8 * size)) != 0) ++size;
  return size;
}

// An open-addressing hash table of the strings and data written so far, by
// a 64-bit hash of their bytes, confirmed by comparing the bytes themselves.
// A slot holds the position of the text in the encoder's list of texts.
class TextIndex {
 public:
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t textPlusOne = 0;  // 0: empty
    ObjectKind kind = ObjectKind::String;
  };

  // The slot for (kind, hash): either the one holding a text for which
  // `same` holds or the empty one where it belongs.
  template <typename Same>
  Slot& find(std::uint64_t hash, ObjectKind kind, Same&& same) {
    if ((used_ + 1) * 2 > slots_.size()) grow();
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
      Slot& slot = slots_[i];
      if (slot.textPlusOne == 0) return slot;
      if (slot.hash == hash && slot.kind == kind && same(slot.textPlusOne - 1)) return slot;
    }
  }
  // Starts loading the slot where a search for `hash` begins.
  void prefetch(std::uint64_t hash) const {
    if (!slots_.empty()) __builtin_prefetch(&slots_[hash & (slots_.size() - 1)]);
  }
  void fill(Slot& slot, std::uint64_t hash, ObjectKind kind, std::size_t text) {
    slot = Slot{hash, static_cast<std::uint32_t>(text + 1), kind};
    ++used_;
  }

 private:
  void grow() {
    LargeVector<Slot> old = std::move(slots_);
    slots_.assign(old.empty() ? 1024 : old.size() * 2, Slot{});
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
      if (slot.textPlusOne == 0) continue;
      std::size_t i = slot.hash & mask;
      while (slots_[i].textPlusOne != 0) i = (i + 1) & mask;
      slots_[i] = slot;
    }
  }

  LargeVector<Slot> slots_;
  std::size_t used_ = 0;
};

// A growable byte buffer written through raw pointers; one capacity check
// per object instead of one per byte. It grows with realloc, which moves a
// large buffer by remapping its pages rather than copying them, and leaves
// new space unfilled.
class ByteWriter {
 public:
  explicit ByteWriter(std::size_t expected) : capacity_(expected < 64 ? 64 : expected) {
    bytes_ = static_cast<std::uint8_t*>(std::malloc(capacity_));
    if (bytes_ == nullptr) throw std::bad_alloc();
  }
  ByteWriter(const ByteWriter&) = delete;
  ByteWriter& operator=(const ByteWriter&) = delete;
  ~ByteWriter() { std::free(bytes_); }

  std::uint8_t* extend(std::size_t count) {
    if (count > capacity_ - used_) grow(count);
    std::uint8_t* p = bytes_ + used_;
    used_ += count;
    return p;
  }
  std::size_t size() const { return used_; }
  std::string finish() const { return std::string(reinterpret_cast<const char*>(bytes_), used_); }

 private:
  void grow(std::size_t count) {
    const std::size_t capacity = std::max(capacity_ * 2, used_ + count);
    auto* bytes = static_cast<std::uint8_t*>(std::realloc(bytes_, capacity));
    if (bytes == nullptr) throw std::bad_alloc();
    bytes_ = bytes;
    capacity_ = capacity;
  }

  std::uint8_t* bytes_;
  std::size_t capacity_;
  std::size_t used_ = 0;
};

std::uint8_t* putBigEndian(std::uint8_t* p, std::uint64_t value, unsigned size) {
  for (unsigned i = size; i > 0; --i) {
    p[i - 1] = static_cast<std::uint8_t>(value);
    value >>= 8;
  }
  return p + size;
}

// Decodes UTF-8 into UTF-16 code units; malformed bytes become U+FFFD
// (utf8.h).
void utf8ToUtf16(std::string_view text, std::vector<char16_t>& out) {
  out.clear();
  for (std::size_t i = 0; i < text.size();) {
    const Utf8Sequence sequence = DecodeUtf8Sequence(text, i);
    if (sequence.length == 0) {
      out.push_back(u'\uFFFD');
      ++i;
      continue;
    }
    std::uint32_t codePoint = sequence.codePoint;
    if (codePoint >= 0x10000) {
      codePoint -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (codePoint >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(codePoint));
    }
    i += sequence.length;
  }
}

// Encodes a value tree in one breadth-first walk. Objects are numbered as
// they are met; a scalar is written to the output the moment it is met (the
// offset table, not the order of the bytes, says where each object is), so
// the tree is read only once. Containers are written after the walk, when the
// number of objects, and so the width of a reference, is known.
class BinaryEncoder {
 public:
  std::string encode(const Value& top) {
    std::memcpy(out_.extend(8), "bplist00", 8);
    const std::uint32_t topId = idOf(top, 1);
    for (std::size_t i = 0; i < containers_.size(); ++i) {
      // The containers of a list lie apart from each other in memory: start
      // loading the next ones while this one is numbered.
      if (i + kLookAhead < containers_.size()) prefetchItems(*containers_[i + kLookAhead].value);
      if (ahead_.container != i) prepare(i, ahead_);
      std::swap(current_, ahead_);
      if (i + 1 < containers_.size()) prepare(i + 1, ahead_);
      const Value& value = *containers_[i].value;
      const int childDepth = containers_[i].depth + 1;
      const auto firstRef = static_cast<std::uint32_t>(refs_.size());
      if (value.isArray()) {
        for (const Value& element : value.arrayValue()) {
          if (!element.isNil()) refs_.push_back(idOf(element, childDepth));
        }
      } else {
        addDictionary(value.dictionaryValue(), childDepth, current_.probes);
      }
      if (refs_.size() > 0xFFFFFFFFull) throw FileError("<memory>", "too many objects");
      containers_[i].firstRef = firstRef;
      containers_[i].refCount = static_cast<std::uint32_t>(refs_.size() - firstRef);
      if (refs_.size() != firstRef && childDepth > kMaxNestingDepth) tooDeep();
    }
    const unsigned refSize = bytesFor(offsets_.size() - 1);
    for (const Container& container : containers_) writeContainer(container, refSize);
    const std::uint64_t tableOffset = out_.size();
    const unsigned offsetSize = bytesFor(*std::max_element(offsets_.begin(), offsets_.end()));
    std::uint8_t* p = out_.extend(offsets_.size() * offsetSize);
    for (std::uint64_t offset : offsets_) p = putBigEndian(p, offset, offsetSize);
    p = out_.extend(32);
    std::memset(p, 0, 6);  // unused, then the sort version
    p[6] = static_cast<std::uint8_t>(offsetSize);
    p[7] = static_cast<std::uint8_t>(refSize);
    p = putBigEndian(p + 8, offsets_.size(), 8);
    p = putBigEndian(p, topId, 8);
    putBigEndian(p, tableOffset, 8);
    return out_.finish();
  }

 private:
  struct Container {
    const Value* value;
    std::uint32_t id;
    std::uint32_t firstRef = 0;  // its element references in refs_
    std::uint32_t refCount = 0;
    int depth;
  };

  static constexpr std::size_t kLookAhead = 2;

  static void prefetchItems(const Value& container) {
    const char* first;
    std::size_t bytes;
    if (container.isDictionary()) {
      const Dictionary& dictionary = container.dictionaryValue();
      if (dictionary.empty()) return;
      first = reinterpret_cast<const char*>(&*dictionary.begin());
      bytes = dictionary.size() * sizeof(*dictionary.begin());
    } else {
      const Array& array = container.arrayValue();
      if (array.empty()) return;
      first = reinterpret_cast<const char*>(array.data());
      bytes = array.size() * sizeof(Value);
    }
    for (std::size_t offset = 0; offset < std::min<std::size_t>(bytes, 2048); offset += 64) {
      __builtin_prefetch(first + offset);
    }
  }

  // What a scalar is looked up by: its bits (numbers, dates) or the hash of
  // its bytes (strings, data).
  struct Probe {
    std::uint64_t bits = 0;
    ObjectKind kind = ObjectKind::Integer;
    bool lookedUp = false;  // in a table by its bits; not for containers, booleans, small integers
  };

  static Probe probeOf(const Value& value) {
    switch (value.kind()) {
      case Value::Kind::Integer: {
        const std::int64_t number = value.longValue();
        if (number >= 0 && number < static_cast<std::int64_t>(kSmallIntegers)) return {};
        return {bitsOf(number), ObjectKind::Integer, true};
      }
      case Value::Kind::Real:
        return {bitsOf(value.doubleValue()), ObjectKind::Real, true};
      case Value::Kind::Date:
        return {bitsOf(value.dateValue().secondsSince2001), ObjectKind::Date, true};
      case Value::Kind::String:
        return {hashBytes(value.stringValue(), ObjectKind::String), ObjectKind::String, true};
      case Value::Kind::Data: {
        const Data& data = value.dataValue();
        const std::string_view bytes(reinterpret_cast<const char*>(data.data()), data.size());
        return {hashBytes(bytes, ObjectKind::Data), ObjectKind::Data, true};
      }
      default:
        return {};
    }
  }

  [[noreturn]] static void tooDeep() {
    throw FileError("<memory>",
                    "nesting deeper than " + std::to_string(kMaxNestingDepth) + " levels");
  }

  // A new object, starting here in the output (containers: placed later).
  std::uint32_t newObject() {
    if (offsets_.size() >= 0xFFFFFFFFull) throw FileError("<memory>", "too many objects");
    offsets_.push_back(out_.size());
    return static_cast<std::uint32_t>(offsets_.size() - 1);
  }

  // Key references first, then value references. Dictionaries in a list
  // mostly repeat the previous one's keys, so a key equal to the one in the
  // same place there reuses its object without hashing.
  // The probes of a dictionary's values, with the index slots they lead
  // to already on their way: a dictionary is prepared while the one before
  // it is numbered, so that its look-ups do not wait for memory.
  struct Prepared {
    std::size_t container = ~std::size_t{0};
    std::vector<Probe> probes;
  };

  void prepare(std::size_t container, Prepared& prepared) {
    prepared.container = container;
    prepared.probes.clear();
    const Value& value = *containers_[container].value;
    if (!value.isDictionary()) return;
    for (const auto& item : value.dictionaryValue()) {
      if (item.second.isNil()) continue;
      const Probe& probe = prepared.probes.emplace_back(probeOf(item.second));
      if (!probe.lookedUp) continue;
      if (probe.kind == ObjectKind::String || probe.kind == ObjectKind::Data) {
        textIndex_.prefetch(probe.bits);
      } else {
        __builtin_prefetch(&recentNumbers_[recentSlot(probe.bits, probe.kind)]);
      }
    }
  }

  void addDictionary(const Dictionary& dictionary, int childDepth,
                     const std::vector<Probe>& probes) {
    values_.clear();
    std::size_t position = 0;
    for (const auto& [key, element] : dictionary) {
      if (element.isNil()) continue;
      std::uint32_t id;
      if (position < previousKeys_.size() && *previousKeys_[position].first == key) {
        id = previousKeys_[position].second;
      } else {
        id = idOfString(key);
        if (position < previousKeys_.size()) {
          previousKeys_[position] = {&key, id};
        } else {
          previousKeys_.emplace_back(&key, id);
        }
      }
      refs_.push_back(id);
      values_.push_back(&element);
      ++position;
    }
    for (std::size_t i = 0; i < values_.size(); ++i) {
      refs_.push_back(idOf(*values_[i], childDepth, probes[i]));
    }
  }

  template <typename T>
  static std::uint64_t bitsOf(T number) {
    std::uint64_t bits;
    std::memcpy(&bits, &number, 8);
    return bits;
  }

  std::uint32_t idOf(const Value& value, int depth) { return idOf(value, depth, probeOf(value)); }

  std::uint32_t idOf(const Value& value, int depth, const Probe& probe) {
    switch (value.kind()) {
      case Value::Kind::Boolean: {
        std::uint32_t& shared = value.boolValue() ? trueId_ : falseId_;
        if (shared == kNoObject) {
          shared = newObject();
          *out_.extend(1) = value.boolValue() ? 0x09 : 0x08;
        }
        return shared;
      }
      case Value::Kind::Integer:
        // Small counts, types and flags recur on every entry: a table, not a hash.
        if (!probe.lookedUp) {
          std::uint32_t& shared = smallIntegers_[static_cast<std::size_t>(value.longValue())];
          if (shared == kNoObject) {
            shared = newObject();
            writeInteger(value.longValue());
          }
          return shared;
        }
        return idOfNumber(ObjectKind::Integer, probe.bits);
      case Value::Kind::Real:
      case Value::Kind::Date:
        return idOfNumber(probe.kind, probe.bits);
      case Value::Kind::String:
        return idOfBytes(ObjectKind::String, value.stringValue(), probe.bits);
      case Value::Kind::Data: {
        const Data& data = value.dataValue();
        return idOfBytes(ObjectKind::Data,
                         std::string_view(reinterpret_cast<const char*>(data.data()), data.size()),
                         probe.bits);
      }
      default: {
        if (depth > kMaxNestingDepth) tooDeep();
        const std::uint32_t id = newObject();
        containers_.push_back(Container{&value, id, 0, 0, depth});
        return id;
      }
    }
  }

  std::uint32_t idOfNumber(ObjectKind kind, std::uint64_t bits) {
    RecentNumber& recent = recentNumbers_[recentSlot(bits, kind)];
    if (recent.idPlusOne != 0 && recent.bits == bits && recent.kind == kind) {
      return recent.idPlusOne - 1;
    }
    const std::uint32_t id = newObject();
    recent = RecentNumber{bits, id + 1, kind};
    if (kind == ObjectKind::Integer) {
      writeInteger(static_cast<std::int64_t>(bits));
    } else {
      std::uint8_t* p = out_.extend(9);
      p[0] = kind == ObjectKind::Real ? 0x23 : 0x33;
      putBigEndian(p + 1, bits, 8);
    }
    return id;
  }

  std::uint32_t idOfString(const std::string& text) {
    return idOfBytes(ObjectKind::String, text, hashBytes(text, ObjectKind::String));
  }

  // Strings and data are found by hash; their slot holds the position of
  // their text in texts_ rather than their object number.
  std::uint32_t idOfBytes(ObjectKind kind, std::string_view bytes, std::uint64_t hash) {
    auto& slot =
        textIndex_.find(hash, kind, [&](std::size_t text) { return texts_[text].bytes == bytes; });
    if (slot.textPlusOne != 0) return texts_[slot.textPlusOne - 1].id;
    const std::uint32_t id = newObject();
    if (kind == ObjectKind::String) {
      writeString(bytes);
    } else {
      writeMarker(0x40, bytes.size());
      if (!bytes.empty()) std::memcpy(out_.extend(bytes.size()), bytes.data(), bytes.size());
    }
    // The tree outlives the encoder: texts are compared where they lie.
    texts_.push_back(Text{bytes, id});
    textIndex_.fill(slot, hash, kind, texts_.size() - 1);
    return id;
  }

  // A marker whose low nibble holds the count, or 0xF and an integer after it.
  void writeMarker(unsigned high, std::uint64_t count) {
    if (count < 15) {
      *out_.extend(1) = static_cast<std::uint8_t>(high | count);
      return;
    }
    const unsigned size = powerOfTwoBytesFor(count);
    std::uint8_t* p = out_.extend(2 + size);
    p[0] = static_cast<std::uint8_t>(high | 0x0F);
    p[1] = static_cast<std::uint8_t>(0x10 | (size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3));
    putBigEndian(p + 2, count, size);
  }

  // Non-negative integers take the fewest of 1, 2, 4 or 8 bytes; negative
  // ones always 8 (only 8-byte integers are signed).
  void writeInteger(std::int64_t number) {
    const unsigned size = number < 0 ? 8 : powerOfTwoBytesFor(static_cast<std::uint64_t>(number));
    std::uint8_t* p = out_.extend(1 + size);
    p[0] = static_cast<std::uint8_t>(0x10 | (size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3));
    putBigEndian(p + 1, static_cast<std::uint64_t>(number), size);
  }

  void writeString(std::string_view text) {
    bool ascii = true;
    for (char c : text) {
      if (static_cast<unsigned char>(c) >= 0x80) {
        ascii = false;
        break;
      }
    }
    if (ascii) {
      writeMarker(0x50, text.size());
      if (!text.empty()) std::memcpy(out_.extend(text.size()), text.data(), text.size());
      return;
    }
    utf8ToUtf16(text, units_);
    writeMarker(0x60, units_.size());
    std::uint8_t* p = out_.extend(units_.size() * 2);
    for (char16_t unit : units_) {
      *p++ = static_cast<std::uint8_t>(unit >> 8);
      *p++ = static_cast<std::uint8_t>(unit);
    }
  }

  void writeContainer(const Container& container, unsigned refSize) {
    offsets_[container.id] = out_.size();
    const bool dictionary = container.value->isDictionary();
    writeMarker(dictionary ? 0xD0 : 0xA0, dictionary ? container.refCount / 2 : container.refCount);
    std::uint8_t* p = out_.extend(std::size_t{container.refCount} * refSize);
    const std::uint32_t* ref = refs_.data() + container.firstRef;
    const std::uint32_t* end = ref + container.refCount;
    switch (refSize) {
      case 1:
        for (; ref != end; ++ref) *p++ = static_cast<std::uint8_t>(*ref);
        break;
      case 2:
        for (; ref != end; ++ref, p += 2) putBigEndian(p, *ref, 2);
        break;
      case 3:
        for (; ref != end; ++ref, p += 3) putBigEndian(p, *ref, 3);
        break;
      default:
        for (; ref != end; ++ref, p += refSize) putBigEndian(p, *ref, refSize);
    }
  }

  struct Text {
    std::string_view bytes;
    std::uint32_t id;
  };

  // Numbers and dates are shared through a direct-mapped table of recent
  // ones rather than an index of all: a value that recurs (a date, a
  // monthly amount) is found while its slot holds it, and an account's
  // many unique numbers cost no look-up in a table as large as themselves.
  // A value met again after its slot was taken is stored twice, which
  // readers accept.
  struct RecentNumber {
    std::uint64_t bits = 0;
    std::uint32_t idPlusOne = 0;  // 0: empty
    ObjectKind kind = ObjectKind::Integer;
  };
  static constexpr std::size_t kRecentNumbers = std::size_t{1} << 16;
  static std::size_t recentSlot(std::uint64_t bits, ObjectKind kind) {
    return mix(bits ^ static_cast<std::uint64_t>(kind)) & (kRecentNumbers - 1);
  }

  ByteWriter out_{1 << 16};
  LargeVector<std::uint64_t> offsets_;  // by object number
  LargeVector<Container> containers_;   // in the order they are met
  LargeVector<std::uint32_t> refs_;
  TextIndex textIndex_;
  std::vector<RecentNumber> recentNumbers_ = std::vector<RecentNumber>(kRecentNumbers);
  LargeVector<Text> texts_;
  std::vector<std::pair<const std::string*, std::uint32_t>> previousKeys_;
  std::vector<const Value*> values_;
  std::vector<char16_t> units_;
  Prepared current_;
  Prepared ahead_;
  std::array<std::uint32_t, kSmallIntegers> smallIntegers_ = filledWith(kNoObject);
  std::uint32_t trueId_ = kNoObject;
  std::uint32_t falseId_ = kNoObject;
};

}  // namespace

std::string ToBinary(const Value& value) {
  if (value.isNil()) throw FileError("<memory>", "a nil value cannot be stored");
  return BinaryEncoder().encode(value);
}

}  // namespace tarn::plist
