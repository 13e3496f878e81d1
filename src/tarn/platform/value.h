// A property-list value: the form in which accounts, entries and every other
// persisted record are stored and exchanged with the host. Values are plain
// C++ values (copies are deep); nil is the default-constructed Value.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarn::plist {

class Value;

using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value, std::less<>>;
using Data = std::vector<std::uint8_t>;

// An absolute point in time, as property lists store it: seconds since
// 1 January 2001 00:00:00 UTC.
struct Date {
  double secondsSince2001 = 0.0;
  friend bool operator==(const Date&, const Date&) = default;
};

class Value {
 public:
  enum class Kind { Nil, Boolean, Integer, Real, String, Date, Data, Array, Dictionary };

  Value() = default;
  Value(bool value) : storage_(value) {}
  Value(int value) : storage_(std::int64_t{value}) {}
  Value(std::int64_t value) : storage_(value) {}
  Value(double value) : storage_(value) {}
  Value(const char* value) : storage_(std::string(value)) {}
  Value(std::string value) : storage_(std::move(value)) {}
  Value(std::string_view value) : storage_(std::string(value)) {}
  Value(plist::Date value) : storage_(value) {}
  Value(plist::Data value) : storage_(std::move(value)) {}
  Value(plist::Array value) : storage_(std::move(value)) {}
  Value(plist::Dictionary value) : storage_(std::move(value)) {}

  Kind kind() const { return static_cast<Kind>(storage_.index()); }
  bool isNil() const { return kind() == Kind::Nil; }
  // Booleans, integers and reals are all "numbers", as on the desktop platform.
  bool isNumber() const {
    return kind() == Kind::Boolean || kind() == Kind::Integer || kind() == Kind::Real;
  }
  bool isBoolean() const { return kind() == Kind::Boolean; }
  bool isInteger() const { return kind() == Kind::Integer; }
  bool isReal() const { return kind() == Kind::Real; }
  bool isString() const { return kind() == Kind::String; }
  bool isDate() const { return kind() == Kind::Date; }
  bool isData() const { return kind() == Kind::Data; }
  bool isArray() const { return kind() == Kind::Array; }
  bool isDictionary() const { return kind() == Kind::Dictionary; }

  // Numeric readings as the platform's number class gives them; 0 or false
  // for values that are not numbers. Reals are truncated toward zero; values
  // outside the target range wrap as a 64-bit integer narrowed to 32 bits.
  std::int32_t intValue() const;
  std::int64_t longValue() const;
  double doubleValue() const;
  bool boolValue() const;

  // The stored text, array or dictionary; empty ones for other kinds.
  const std::string& stringValue() const;
  const plist::Array& arrayValue() const;
  const plist::Dictionary& dictionaryValue() const;
  const plist::Data& dataValue() const;
  plist::Date dateValue() const;

  // Mutable access; converts a nil value into an empty container first.
  plist::Array& mutableArray();
  plist::Dictionary& mutableDictionary();

  // The value under a key of a dictionary; nullptr when absent or when this
  // value is not a dictionary.
  const Value* find(std::string_view key) const;
  // Sets a key of a dictionary (a nil value becomes an empty dictionary first).
  void set(std::string key, Value value) { mutableDictionary()[std::move(key)] = std::move(value); }

  friend bool operator==(const Value& a, const Value& b) { return a.storage_ == b.storage_; }

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, plist::Date, plist::Data,
               plist::Array, plist::Dictionary>
      storage_;
};

}  // namespace tarn::plist
