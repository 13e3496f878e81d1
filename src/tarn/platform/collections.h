// String and array helpers: removing characters of a set, splitting one
// comma-separated line, and the order-keeping array difference that filters
// use. Free functions; the arrays they change belong to the caller.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tarn {

// The text without any character (Unicode code point) that occurs in the set.
// Bytes that are not valid UTF-8, in either text, are compared as single bytes.
std::string withoutCharactersInSet(std::string_view text, std::string_view characters);

// The fields of one comma-separated line (which may span several physical
// lines inside quotes). A field in double quotes may hold commas, line breaks
// and doubled quotes; unquoted fields are taken as they stand, white space and
// quotes in their middle included. Text between a closing quote and the next
// comma is appended to the field; a quote left open runs to the end of the
// line. A line of n separating commas has n + 1 fields, so an empty line is one
// empty field and a final comma adds an empty field.
std::vector<std::string> CSVLineComponents(std::string_view line);

// Removes from `array` every object that `remove` holds (by identity, not by
// equality), keeping the order of the rest; duplicates in either go too.
// O(n + m) through a hash set of pointers; a short `remove` is scanned instead.
template <class T>
void removeObjectsInArray_Optimized(std::vector<std::shared_ptr<T>>& array,
                                    const std::vector<std::shared_ptr<T>>& remove) {
  if (array.empty() || remove.empty()) return;
  constexpr size_t kScanLimit = 8;
  if (remove.size() <= kScanLimit) {
    std::erase_if(array, [&](const std::shared_ptr<T>& object) {
      for (const auto& doomed : remove) {
        if (doomed.get() == object.get()) return true;
      }
      return false;
    });
    return;
  }
  std::unordered_set<const T*> doomed;
  doomed.reserve(remove.size());
  for (const auto& object : remove) doomed.insert(object.get());
  std::erase_if(array,
                [&](const std::shared_ptr<T>& object) { return doomed.count(object.get()) != 0; });
}

}  // namespace tarn
