// A property-list value: the form in which accounts, entries and every other
// persisted record are stored and exchanged with the host. Values are plain
// C++ values (copies are deep); nil is the default-constructed Value.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "tarn/platform/bulk_storage.h"

namespace tarn::plist {

class Value;

// A dictionary of a property list: keys kept in ascending byte order in one
// contiguous vector, with the look-up and insertion interface of std::map.
// An account file holds hundreds of thousands of small dictionaries; one
// allocation for each, instead of one per key, is what makes loading and
// saving them fast. Inserting past the last key (the order readers and
// writers produce) is constant time; elsewhere it shifts the later keys.
// Iterators are invalidated by any insertion or erasure.
template <class V>
class SortedDictionary {
 public:
  using key_type = std::string;
  using mapped_type = V;
  using value_type = std::pair<std::string, V>;
  using iterator = typename std::vector<value_type, DictionaryAllocator<value_type>>::iterator;
  using const_iterator =
      typename std::vector<value_type, DictionaryAllocator<value_type>>::const_iterator;
  using size_type = std::size_t;

  SortedDictionary() = default;
  SortedDictionary(std::initializer_list<value_type> items) {
    for (const value_type& item : items) insert_or_assign(item.first, item.second);
  }

  iterator begin() { return items_.begin(); }
  iterator end() { return items_.end(); }
  const_iterator begin() const { return items_.begin(); }
  const_iterator end() const { return items_.end(); }
  const_iterator cbegin() const { return items_.cbegin(); }
  const_iterator cend() const { return items_.cend(); }
  size_type size() const { return items_.size(); }
  bool empty() const { return items_.empty(); }
  void clear() { items_.clear(); }
  void reserve(size_type count) { items_.reserve(count); }

  iterator lower_bound(std::string_view key) {
    return std::lower_bound(items_.begin(), items_.end(), key, KeyLess{});
  }
  const_iterator lower_bound(std::string_view key) const {
    return std::lower_bound(items_.begin(), items_.end(), key, KeyLess{});
  }
  iterator find(std::string_view key) {
    auto found = lower_bound(key);
    return (found != items_.end() && found->first == key) ? found : items_.end();
  }
  const_iterator find(std::string_view key) const {
    auto found = lower_bound(key);
    return (found != items_.end() && found->first == key) ? found : items_.end();
  }
  size_type count(std::string_view key) const { return find(key) != end() ? 1 : 0; }
  bool contains(std::string_view key) const { return find(key) != end(); }

  V& at(std::string_view key) {
    auto found = find(key);
    if (found == end()) throw std::out_of_range("plist dictionary has no such key");
    return found->second;
  }
  const V& at(std::string_view key) const {
    auto found = find(key);
    if (found == end()) throw std::out_of_range("plist dictionary has no such key");
    return found->second;
  }

  // Inserts a new key with a value built from the arguments; an existing key
  // is left as it is.
  template <class K, class... Args>
  std::pair<iterator, bool> try_emplace(K&& key, Args&&... args) {
    const std::string_view text(key);
    if (items_.empty() || std::string_view(items_.back().first) < text) {
      items_.emplace_back(std::piecewise_construct, std::forward_as_tuple(std::forward<K>(key)),
                          std::forward_as_tuple(std::forward<Args>(args)...));
      return {std::prev(items_.end()), true};
    }
    auto position = lower_bound(text);
    if (position != items_.end() && position->first == text) return {position, false};
    position = items_.emplace(position, std::piecewise_construct,
                              std::forward_as_tuple(std::forward<K>(key)),
                              std::forward_as_tuple(std::forward<Args>(args)...));
    return {position, true};
  }
  template <class K, class... Args>
  std::pair<iterator, bool> emplace(K&& key, Args&&... args) {
    return try_emplace(std::forward<K>(key), std::forward<Args>(args)...);
  }
  std::pair<iterator, bool> insert(value_type item) {
    return try_emplace(std::move(item.first), std::move(item.second));
  }
  // As try_emplace, constant time when the hint is the right position.
  template <class K, class... Args>
  iterator emplace_hint(const_iterator hint, K&& key, Args&&... args) {
    const std::string_view text(key);
    const bool afterPrevious =
        hint == items_.cbegin() || std::string_view(std::prev(hint)->first) < text;
    const bool beforeNext = hint == items_.cend() || text < std::string_view(hint->first);
    if (afterPrevious && beforeNext) {
      return items_.emplace(hint, std::piecewise_construct,
                            std::forward_as_tuple(std::forward<K>(key)),
                            std::forward_as_tuple(std::forward<Args>(args)...));
    }
    return try_emplace(std::forward<K>(key), std::forward<Args>(args)...).first;
  }
  template <class K, class M>
  std::pair<iterator, bool> insert_or_assign(K&& key, M&& value) {
    const std::string_view text(key);
    if (items_.empty() || std::string_view(items_.back().first) < text) {
      items_.emplace_back(std::forward<K>(key), std::forward<M>(value));
      return {std::prev(items_.end()), true};
    }
    auto position = lower_bound(text);
    if (position != items_.end() && position->first == text) {
      position->second = std::forward<M>(value);
      return {position, false};
    }
    return {items_.emplace(position, std::forward<K>(key), std::forward<M>(value)), true};
  }
  // Appends an item whose key sorts after every key present, unchecked:
  // for readers that have already compared the keys.
  template <class K, class... Args>
  V& appendSorted(K&& key, Args&&... args) {
    return items_
        .emplace_back(std::piecewise_construct, std::forward_as_tuple(std::forward<K>(key)),
                      std::forward_as_tuple(std::forward<Args>(args)...))
        .second;
  }
  template <class K>
  V& operator[](K&& key) {
    return try_emplace(std::forward<K>(key)).first->second;
  }

  size_type erase(std::string_view key) {
    auto found = find(key);
    if (found == items_.end()) return 0;
    items_.erase(found);
    return 1;
  }
  iterator erase(const_iterator position) { return items_.erase(position); }

  friend bool operator==(const SortedDictionary& a, const SortedDictionary& b) {
    return a.items_ == b.items_;
  }

 private:
  struct KeyLess {
    bool operator()(const value_type& item, std::string_view key) const {
      return std::string_view(item.first) < key;
    }
  };

  std::vector<value_type, DictionaryAllocator<value_type>> items_;
};

using Array = std::vector<Value>;
using Dictionary = SortedDictionary<Value>;
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

// The optional number keys of a stored record: a number under `key` replaces
// `field` (its integer or flag reading); a missing key, a value of another
// kind or a receiver that is no dictionary leaves `field` as it was.
void ReadNumber(const Value& dictionary, std::string_view key, std::int32_t& field);
void ReadFlag(const Value& dictionary, std::string_view key, bool& field);

}  // namespace tarn::plist
