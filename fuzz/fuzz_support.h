// Helpers shared by the fuzz targets: a check that stops the run with a
// message (libFuzzer then saves the input as a crash), and a comparison of
// property-list values that says where two trees first differ.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tarn/platform/plist_file.h"
#include "tarn/platform/value.h"

namespace tarn::fuzz {

[[noreturn]] inline void Fail(std::string_view what) {
  std::fprintf(stderr, "fuzz check failed: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

inline void Require(bool condition, std::string_view what) {
  if (!condition) Fail(what);
}

// How dates compare after a trip through a writer.
enum class DateRule {
  Exact,
  // The XML form keeps whole seconds only (rounded down), and holds dates
  // beyond its limit at the limit.
  WholeSeconds,
};

// Text with bytes outside printable ASCII as \xNN, so that failure messages
// show exactly which bytes differ.
inline std::string Escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F && byte != '\\') {
      out.push_back(c);
    } else {
      static constexpr char kHex[] = "0123456789ABCDEF";
      out += "\\x";
      out.push_back(kHex[byte >> 4]);
      out.push_back(kHex[byte & 15]);
    }
  }
  return out;
}

// A short text of a value for failure messages.
inline std::string Describe(const plist::Value& value) {
  using Kind = plist::Value::Kind;
  switch (value.kind()) {
    case Kind::Nil:
      return "nil";
    case Kind::Boolean:
      return value.boolValue() ? "true" : "false";
    case Kind::Integer:
      return std::to_string(value.longValue());
    case Kind::Real:
      return std::to_string(value.doubleValue());
    case Kind::String:
      return "\"" + Escaped(value.stringValue()) + "\"";
    case Kind::Date:
      return "date " + std::to_string(value.dateValue().secondsSince2001);
    case Kind::Data:
      return std::to_string(value.dataValue().size()) + " bytes";
    case Kind::Array:
      return "array of " + std::to_string(value.arrayValue().size());
    case Kind::Dictionary:
      return "dictionary of " + std::to_string(value.dictionaryValue().size());
  }
  return "?";
}

// Whether `after` is `before` read back from a writer: the same tree, reals
// equal or both NaN, dates under the rule. On the first difference `where`
// holds its path and both values ("/entries/3/amount: 1.000000 vs 2.000000").
inline bool SameValue(const plist::Value& before, const plist::Value& after, DateRule dates,
                      std::string& where) {
  using Kind = plist::Value::Kind;
  const bool same = [&] {
    if (before.kind() != after.kind()) return false;
    switch (before.kind()) {
      case Kind::Real: {
        const double a = before.doubleValue(), b = after.doubleValue();
        return a == b || (std::isnan(a) && std::isnan(b));
      }
      case Kind::Date: {
        double expected = before.dateValue().secondsSince2001;
        if (dates == DateRule::WholeSeconds) {
          expected = std::clamp(std::floor(expected), -plist::kXmlDateLimitSeconds,
                                plist::kXmlDateLimitSeconds);
        }
        const double actual = after.dateValue().secondsSince2001;
        return expected == actual || (std::isnan(expected) && std::isnan(actual));
      }
      case Kind::Array: {
        const auto& a = before.arrayValue();
        const auto& b = after.arrayValue();
        if (a.size() != b.size()) return false;
        for (std::size_t i = 0; i < a.size(); ++i) {
          if (!SameValue(a[i], b[i], dates, where)) {
            where.insert(0, "/" + std::to_string(i));
            return false;
          }
        }
        return true;
      }
      case Kind::Dictionary: {
        const auto& a = before.dictionaryValue();
        const auto& b = after.dictionaryValue();
        if (a.size() != b.size()) return false;
        for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
          if (i->first != j->first) {
            where = "/" + Escaped(i->first) + ": key vs key " + Escaped(j->first);
            return false;
          }
          if (!SameValue(i->second, j->second, dates, where)) {
            where.insert(0, "/" + Escaped(i->first));
            return false;
          }
        }
        return true;
      }
      default:
        return before == after;
    }
  }();
  if (!same && where.empty()) where = ": " + Describe(before) + " vs " + Describe(after);
  return same;
}

}  // namespace tarn::fuzz
