// String and array helpers of the companion framework.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tarn {

// The text without any character (Unicode code point) that occurs in the set.
std::string withoutCharactersInSet(std::string_view text, std::string_view characters);

// The fields of one comma-separated line (which may span several physical
// lines inside quotes). A field in double quotes may hold commas, line breaks
// and doubled quotes; unquoted fields are taken as they stand.
std::vector<std::string> CSVLineComponents(std::string_view line);

// Removes from `array` every object that `remove` holds (by identity),
// keeping the order of the rest. O(n + m) through a hash set of pointers.
template <class T>
void removeObjectsInArray_Optimized(std::vector<std::shared_ptr<T>>& array,
                                    const std::vector<std::shared_ptr<T>>& remove) {
  if (array.empty() || remove.empty()) return;
  std::unordered_set<const T*> doomed;
  doomed.reserve(remove.size());
  for (const auto& object : remove) doomed.insert(object.get());
  std::erase_if(array, [&](const std::shared_ptr<T>& object) { return doomed.count(object.get()) != 0; });
}

}  // namespace tarn
