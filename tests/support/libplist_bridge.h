// Builds libplist's tree of a property-list value, for the tests and
// benchmarks that use libplist as the reference reader and writer. The
// caller frees the result with plist_free; nil gives nullptr.
#pragma once

#include <plist/plist.h>

#include <cmath>
#include <cstdint>

#include "tarn/platform/value.h"

namespace tarn::plist {

inline plist_t toLibplist(const Value& value) {
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
  return nullptr;  // nil has no property-list form
}

}  // namespace tarn::plist
