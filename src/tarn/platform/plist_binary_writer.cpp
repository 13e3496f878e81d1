// Writing binary property lists ("bplist00") in linear time. A first pass
// numbers the objects breadth first, giving equal strings, numbers, dates and
// data one shared object through a hash table; a second pass writes them with
// the smallest reference and offset sizes that the counts allow.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tarn/platform/plist_file.h"

namespace tarn::plist {
namespace {

constexpr std::uint64_t kNoObject = ~std::uint64_t{0};

// What an object is, with string standing for dictionary keys as well.
enum class ObjectKind : std::uint8_t {
  Boolean,
  Integer,
  Real,
  Date,
  String,
  Data,
  Array,
  Dictionary
};

struct Object {
  // Value* for containers; std::string* for strings; Data* for data.
  const void* item;
  // Booleans, numbers and dates: their bits, kept here so that writing them
  // does not go back to the value tree.
  std::uint64_t bits = 0;
  std::uint32_t firstRef = 0;  // containers: their element references in refs_
  std::uint32_t refCount = 0;
  std::uint16_t depth = 0;
  ObjectKind kind;
};

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

// An open-addressing hash table from a scalar's identity to its object
// number. Numbers and dates are identified by their kind and 64 bits, kept in
// the slot so that a probe touches no other memory; strings and data by a
// 64-bit hash, confirmed by comparing the bytes of the object found.
class ScalarIndex {
 public:
  struct Slot {
    std::uint64_t bits = 0;       // the number's bits, or the bytes' hash
    std::uint32_t idPlusOne = 0;  // 0: empty
    std::uint32_t kind = 0;
  };

  // The slot for (kind, bits): either the one holding it or the empty one
  // where it belongs. `same` confirms a candidate for byte strings.
  template <typename Same>
  Slot& find(std::uint64_t bits, ObjectKind kind, Same&& same) {
    if ((used_ + 1) * 2 > slots_.size()) grow();
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = mix(bits ^ static_cast<std::uint64_t>(kind)) & mask;; i = (i + 1) & mask) {
      Slot& slot = slots_[i];
      if (slot.idPlusOne == 0) return slot;
      if (slot.bits == bits && slot.kind == static_cast<std::uint32_t>(kind) &&
          same(slot.idPlusOne - 1)) {
        return slot;
      }
    }
  }
  void fill(Slot& slot, std::uint64_t bits, ObjectKind kind, std::uint64_t id) {
    slot = Slot{bits, static_cast<std::uint32_t>(id + 1), static_cast<std::uint32_t>(kind)};
    ++used_;
  }

 private:
  void grow() {
    std::vector<Slot> old = std::move(slots_);
    slots_.assign(old.empty() ? 1024 : old.size() * 2, Slot{});
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
      if (slot.idPlusOne == 0) continue;
      std::size_t i = mix(slot.bits ^ slot.kind) & mask;
      while (slots_[i].idPlusOne != 0) i = (i + 1) & mask;
      slots_[i] = slot;
    }
  }

  std::vector<Slot> slots_;
  std::size_t used_ = 0;
};

class ObjectTable {
 public:
  // Numbers every object reachable from the top value, breadth first.
  void build(const Value& top) {
    idOf(top, 1);
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      const ObjectKind kind = objects_[i].kind;
      if (kind != ObjectKind::Array && kind != ObjectKind::Dictionary) continue;
      const auto* value = static_cast<const Value*>(objects_[i].item);
      const int childDepth = objects_[i].depth + 1;
      const auto firstRef = static_cast<std::uint32_t>(refs_.size());
      if (kind == ObjectKind::Array) {
        for (const Value& element : value->arrayValue()) {
          if (!element.isNil()) {
            refs_.push_back(static_cast<std::uint32_t>(idOf(element, childDepth)));
          }
        }
      } else {
        addDictionary(value->dictionaryValue(), childDepth);
      }
      if (refs_.size() > 0xFFFFFFFFull) throw FileError("<memory>", "too many objects");
      objects_[i].firstRef = firstRef;
      objects_[i].refCount = static_cast<std::uint32_t>(refs_.size() - firstRef);
    }
  }

  const std::vector<Object>& objects() const { return objects_; }
  const std::vector<std::uint32_t>& refs() const { return refs_; }

 private:
  // Key references first, then value references. Dictionaries in a list
  // mostly repeat the previous one's keys, so a key equal to the one in the
  // same place there reuses its object without hashing.
  void addDictionary(const Dictionary& dictionary, int childDepth) {
    values_.clear();
    std::size_t position = 0;
    for (const auto& [key, element] : dictionary) {
      if (element.isNil()) continue;
      std::uint32_t id;
      if (position < previousKeys_.size() && *previousKeys_[position].first == key) {
        id = previousKeys_[position].second;
      } else {
        id = static_cast<std::uint32_t>(idOfString(&key));
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
    for (const Value* element : values_) {
      refs_.push_back(static_cast<std::uint32_t>(idOf(*element, childDepth)));
    }
  }

  std::uint64_t add(const void* item, ObjectKind kind, int depth, std::uint64_t bits = 0) {
    if (depth > kMaxNestingDepth) {
      throw FileError("<memory>",
                      "nesting deeper than " + std::to_string(kMaxNestingDepth) + " levels");
    }
    if (objects_.size() >= 0xFFFFFFFFull) throw FileError("<memory>", "too many objects");
    objects_.push_back(Object{item, bits, 0, 0, static_cast<std::uint16_t>(depth), kind});
    return objects_.size() - 1;
  }

  template <typename T>
  static std::uint64_t bitsOf(T number) {
    std::uint64_t bits;
    std::memcpy(&bits, &number, 8);
    return bits;
  }

  std::uint64_t idOf(const Value& value, int depth) {
    switch (value.kind()) {
      case Value::Kind::Boolean: {
        std::uint64_t& shared = value.boolValue() ? trueId_ : falseId_;
        if (shared == kNoObject)
          shared = add(&value, ObjectKind::Boolean, depth, value.boolValue());
        return shared;
      }
      case Value::Kind::Integer:
        return idOfNumber(&value, ObjectKind::Integer, bitsOf(value.longValue()), depth);
      case Value::Kind::Real:
        return idOfNumber(&value, ObjectKind::Real, bitsOf(value.doubleValue()), depth);
      case Value::Kind::Date:
        return idOfNumber(&value, ObjectKind::Date, bitsOf(value.dateValue().secondsSince2001),
                          depth);
      case Value::Kind::String:
        return idOfString(&value.stringValue());
      case Value::Kind::Data: {
        const Data& data = value.dataValue();
        return idOfBytes(&data, ObjectKind::Data,
                         std::string_view(reinterpret_cast<const char*>(data.data()), data.size()));
      }
      case Value::Kind::Array:
        return add(&value, ObjectKind::Array, depth);
      default:
        return add(&value, ObjectKind::Dictionary, depth);
    }
  }

  // Scalars are shared whatever their depth (they hold nothing), so an
  // object keeps the depth of its first use.
  std::uint64_t idOfNumber(const Value* value, ObjectKind kind, std::uint64_t bits, int depth) {
    auto& slot = index_.find(bits, kind, [](std::uint64_t) { return true; });
    if (slot.idPlusOne != 0) return slot.idPlusOne - 1;
    const std::uint64_t id = add(value, kind, depth, bits);
    index_.fill(slot, bits, kind, id);
    return id;
  }

  std::uint64_t idOfString(const std::string* text) {
    return idOfBytes(text, ObjectKind::String, *text);
  }

  std::uint64_t idOfBytes(const void* item, ObjectKind kind, std::string_view bytes) {
    const std::uint64_t hash = hashBytes(bytes, kind);
    auto& slot = index_.find(hash, kind, [&](std::uint64_t id) {
      const Object& other = objects_[id];
      if (kind == ObjectKind::String) return *static_cast<const std::string*>(other.item) == bytes;
      const auto* data = static_cast<const Data*>(other.item);
      return std::string_view(reinterpret_cast<const char*>(data->data()), data->size()) == bytes;
    });
    if (slot.idPlusOne != 0) return slot.idPlusOne - 1;
    const std::uint64_t id = add(item, kind, 0);
    index_.fill(slot, hash, kind, id);
    return id;
  }

  std::vector<Object> objects_;
  std::vector<std::uint32_t> refs_;
  ScalarIndex index_;
  std::vector<std::pair<const std::string*, std::uint32_t>> previousKeys_;
  std::vector<const Value*> values_;
  std::uint64_t trueId_ = kNoObject;
  std::uint64_t falseId_ = kNoObject;
};

// A growable byte buffer written through raw pointers; one capacity check
// per object instead of one per byte.
class ByteWriter {
 public:
  explicit ByteWriter(std::size_t expected) { bytes_.resize(expected < 64 ? 64 : expected); }

  std::uint8_t* extend(std::size_t count) {
    if (used_ + count > bytes_.size()) bytes_.resize(std::max(bytes_.size() * 2, used_ + count));
    std::uint8_t* p = reinterpret_cast<std::uint8_t*>(bytes_.data()) + used_;
    used_ += count;
    return p;
  }
  std::size_t size() const { return used_; }
  std::string finish() {
    bytes_.resize(used_);
    return std::move(bytes_);
  }

 private:
  std::string bytes_;
  std::size_t used_ = 0;
};

std::uint8_t* putBigEndian(std::uint8_t* p, std::uint64_t value, unsigned size) {
  for (unsigned i = size; i > 0; --i) {
    p[i - 1] = static_cast<std::uint8_t>(value);
    value >>= 8;
  }
  return p + size;
}

// Decodes UTF-8 into UTF-16 code units. Malformed sequences (stray
// continuation bytes, overlong forms, surrogates, values past U+10FFFF,
// truncation) become U+FFFD, one per offending byte.
void utf8ToUtf16(std::string_view text, std::vector<char16_t>& out) {
  out.clear();
  const auto* p = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::size_t n = text.size();
  for (std::size_t i = 0; i < n;) {
    const std::uint32_t lead = p[i];
    if (lead < 0x80) {
      out.push_back(static_cast<char16_t>(lead));
      ++i;
      continue;
    }
    std::size_t length = 0;
    std::uint32_t codePoint = 0;
    std::uint32_t minimum = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2, codePoint = lead & 0x1F, minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3, codePoint = lead & 0x0F, minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4, codePoint = lead & 0x07, minimum = 0x10000;
    }
    bool valid = length != 0 && i + length <= n;
    for (std::size_t k = 1; valid && k < length; ++k) {
      if ((p[i + k] & 0xC0) != 0x80) valid = false;
      codePoint = (codePoint << 6) | (p[i + k] & 0x3F);
    }
    if (valid && (codePoint < minimum || codePoint > 0x10FFFF ||
                  (codePoint >= 0xD800 && codePoint <= 0xDFFF))) {
      valid = false;
    }
    if (!valid) {
      out.push_back(u'\uFFFD');
      ++i;
      continue;
    }
    if (codePoint >= 0x10000) {
      codePoint -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (codePoint >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(codePoint));
    }
    i += length;
  }
}

class BinaryWriter {
 public:
  explicit BinaryWriter(const ObjectTable& table)
      : objects_(table.objects()),
        refs_(table.refs()),
        refSize_(bytesFor(objects_.size() - 1)),
        out_(objects_.size() * 12 + 64) {}

  std::string write() {
    std::memcpy(out_.extend(8), "bplist00", 8);
    std::vector<std::uint64_t> offsets(objects_.size());
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      offsets[i] = out_.size();
      writeObject(objects_[i]);
    }
    const std::uint64_t tableOffset = out_.size();
    const unsigned offsetSize = bytesFor(offsets.back());
    std::uint8_t* p = out_.extend(offsets.size() * offsetSize);
    for (std::uint64_t offset : offsets) p = putBigEndian(p, offset, offsetSize);
    p = out_.extend(32);
    std::memset(p, 0, 6);  // unused, then the sort version
    p[6] = static_cast<std::uint8_t>(offsetSize);
    p[7] = static_cast<std::uint8_t>(refSize_);
    p = putBigEndian(p + 8, objects_.size(), 8);
    p = putBigEndian(p, 0, 8);  // the top object is always the first
    putBigEndian(p, tableOffset, 8);
    return out_.finish();
  }

 private:
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

  void writeBits(std::uint8_t marker, std::uint64_t bits) {
    std::uint8_t* p = out_.extend(9);
    p[0] = marker;
    putBigEndian(p + 1, bits, 8);
  }

  // Non-negative integers take the fewest of 1, 2, 4 or 8 bytes; negative
  // ones always 8 (only 8-byte integers are signed).
  void writeInteger(std::int64_t number) {
    const unsigned size = number < 0 ? 8 : powerOfTwoBytesFor(static_cast<std::uint64_t>(number));
    std::uint8_t* p = out_.extend(1 + size);
    p[0] = static_cast<std::uint8_t>(0x10 | (size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3));
    putBigEndian(p + 1, static_cast<std::uint64_t>(number), size);
  }

  void writeString(const std::string& text) {
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

  void writeRefs(const Object& object, unsigned high) {
    writeMarker(high,
                object.kind == ObjectKind::Dictionary ? object.refCount / 2 : object.refCount);
    std::uint8_t* p = out_.extend(std::size_t{object.refCount} * refSize_);
    const std::uint32_t* ref = refs_.data() + object.firstRef;
    const std::uint32_t* end = ref + object.refCount;
    switch (refSize_) {
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
        for (; ref != end; ++ref, p += refSize_) putBigEndian(p, *ref, refSize_);
    }
  }

  void writeObject(const Object& object) {
    switch (object.kind) {
      case ObjectKind::Boolean:
        *out_.extend(1) = object.bits ? 0x09 : 0x08;
        return;
      case ObjectKind::Integer:
        writeInteger(static_cast<std::int64_t>(object.bits));
        return;
      case ObjectKind::Real:
        writeBits(0x23, object.bits);
        return;
      case ObjectKind::Date:
        writeBits(0x33, object.bits);
        return;
      case ObjectKind::String:
        writeString(*static_cast<const std::string*>(object.item));
        return;
      case ObjectKind::Data: {
        const auto* data = static_cast<const Data*>(object.item);
        writeMarker(0x40, data->size());
        if (!data->empty()) std::memcpy(out_.extend(data->size()), data->data(), data->size());
        return;
      }
      case ObjectKind::Array:
        writeRefs(object, 0xA0);
        return;
      case ObjectKind::Dictionary:
        writeRefs(object, 0xD0);
        return;
    }
  }

  const std::vector<Object>& objects_;
  const std::vector<std::uint32_t>& refs_;
  unsigned refSize_;
  ByteWriter out_;
  std::vector<char16_t> units_;
};

}  // namespace

std::string ToBinary(const Value& value) {
  if (value.isNil()) throw FileError("<memory>", "a nil value cannot be stored");
  ObjectTable table;
  table.build(value);
  return BinaryWriter(table).write();
}

}  // namespace tarn::plist
