#include "tarn/platform/value.h"

#include <cmath>
#include <limits>

namespace tarn::plist {
namespace {

// Truncates a real toward zero into 64 bits without undefined behaviour for
// NaN and values beyond the range (they read as the range's low end).
std::int64_t truncateToInt64(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 9.2233720368547758e18 || value < -9.2233720368547758e18) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return static_cast<std::int64_t>(value);
}

const std::string kEmptyString;
const Array kEmptyArray;
const Dictionary kEmptyDictionary;
const Data kEmptyData;

}  // namespace

std::int64_t Value::longValue() const {
  switch (kind()) {
    case Kind::Boolean:
      return std::get<bool>(storage_) ? 1 : 0;
    case Kind::Integer:
      return std::get<std::int64_t>(storage_);
    case Kind::Real:
      return truncateToInt64(std::get<double>(storage_));
    default:
      return 0;
  }
}

std::int32_t Value::intValue() const {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(longValue()));
}

double Value::doubleValue() const {
  switch (kind()) {
    case Kind::Boolean:
      return std::get<bool>(storage_) ? 1.0 : 0.0;
    case Kind::Integer:
      return static_cast<double>(std::get<std::int64_t>(storage_));
    case Kind::Real:
      return std::get<double>(storage_);
    default:
      return 0.0;
  }
}

bool Value::boolValue() const {
  switch (kind()) {
    case Kind::Boolean:
      return std::get<bool>(storage_);
    case Kind::Integer:
      return std::get<std::int64_t>(storage_) != 0;
    case Kind::Real:
      return std::get<double>(storage_) != 0.0;
    default:
      return false;
  }
}

const std::string& Value::stringValue() const {
  const auto* text = std::get_if<std::string>(&storage_);
  return text ? *text : kEmptyString;
}

const Array& Value::arrayValue() const {
  const auto* array = std::get_if<Array>(&storage_);
  return array ? *array : kEmptyArray;
}

const Dictionary& Value::dictionaryValue() const {
  const auto* dictionary = std::get_if<Dictionary>(&storage_);
  return dictionary ? *dictionary : kEmptyDictionary;
}

const Data& Value::dataValue() const {
  const auto* data = std::get_if<Data>(&storage_);
  return data ? *data : kEmptyData;
}

Date Value::dateValue() const {
  const auto* date = std::get_if<Date>(&storage_);
  return date ? *date : Date{};
}

Array& Value::mutableArray() {
  if (!isArray()) storage_ = Array{};
  return std::get<Array>(storage_);
}

Dictionary& Value::mutableDictionary() {
  if (!isDictionary()) storage_ = Dictionary{};
  return std::get<Dictionary>(storage_);
}

const Value* Value::find(std::string_view key) const {
  const auto* dictionary = std::get_if<Dictionary>(&storage_);
  if (!dictionary) return nullptr;
  auto found = dictionary->find(key);
  return found == dictionary->end() ? nullptr : &found->second;
}

void ReadNumber(const Value& dictionary, std::string_view key, std::int32_t& field) {
  const Value* value = dictionary.find(key);
  if (value && value->isNumber()) field = value->intValue();
}

void ReadFlag(const Value& dictionary, std::string_view key, bool& field) {
  const Value* value = dictionary.find(key);
  if (value && value->isNumber()) field = value->boolValue();
}

}  // namespace tarn::plist
