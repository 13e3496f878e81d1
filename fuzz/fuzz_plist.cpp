// Property lists from arbitrary bytes. Reading either format may fail only
// with tarn::FileError; the copying and the in-place XML readers agree; and
// whatever parses is written by both writers and read back to the same value
// (the XML form keeps dates to the whole second, and cannot hold U+0000).
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz_support.h"
#include "tarn/platform/error.h"
#include "tarn/platform/plist_file.h"

using tarn::FileError;
using tarn::fuzz::DateRule;
using tarn::fuzz::Require;
using tarn::fuzz::SameValue;
namespace plist = tarn::plist;

namespace {

void RequireSame(const plist::Value& before, const plist::Value& after, DateRule dates,
                 std::string_view what) {
  std::string where;
  if (!SameValue(before, after, dates, where)) {
    tarn::fuzz::Fail(std::string(what) + " differs at " + where);
  }
}

bool HoldsNul(const plist::Value& value) {
  switch (value.kind()) {
    case plist::Value::Kind::String:
      return value.stringValue().find('\0') != std::string::npos;
    case plist::Value::Kind::Array:
      for (const auto& element : value.arrayValue()) {
        if (HoldsNul(element)) return true;
      }
      return false;
    case plist::Value::Kind::Dictionary:
      for (const auto& [key, element] : value.dictionaryValue()) {
        if (key.find('\0') != std::string::npos || HoldsNul(element)) return true;
      }
      return false;
    default:
      return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);

  std::optional<plist::Value> value;
  try {
    value = plist::Parse(bytes, "input");
  } catch (const FileError&) {
  }

  // The file reader parses XML in place; it must read what the copying reader
  // reads (both without the format check that Parse and ReadFile make first).
  if (!plist::LooksBinary(bytes) && !bytes.empty()) {
    std::optional<plist::Value> copied, inPlace;
    try {
      copied = plist::ParseXml(bytes, "input");
    } catch (const FileError&) {
    }
    std::string buffer(bytes);
    try {
      inPlace = plist::ParseXmlInPlace(buffer, "input");
    } catch (const FileError&) {
    }
    Require(inPlace.has_value() == copied.has_value(), "in-place XML reader disagrees on success");
    if (copied) RequireSame(*copied, *inPlace, DateRule::Exact, "in-place XML reading");
  }
  if (!value) return 0;

  // The binary writer stores whatever a reader produced; the XML writer all
  // but a string or key holding U+0000, which it refuses.
  RequireSame(*value, plist::ParseBinary(plist::ToBinary(*value), "binary"), DateRule::Exact,
              "binary round trip");
  if (HoldsNul(*value)) {
    bool refused = false;
    try {
      plist::ToXml(*value);
    } catch (const FileError&) {
      refused = true;
    }
    Require(refused, "the XML writer stored a string holding U+0000");
    return 0;
  }
  RequireSame(*value, plist::ParseXml(plist::ToXml(*value), "xml"), DateRule::WholeSeconds,
              "XML round trip");
  return 0;
}
