// Small helpers over plain arrays: in-place bubble sorts of numbers and the
// English list joiner used in messages ("Food, Rent and Travel"). They work
// on the caller's storage and keep nothing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarn {

// Sort `count` values in place, ascending, by plain bubble sort: for limit =
// count - 1 down to 1, swap neighbours i, i + 1 (i < limit) when the later is
// smaller; no early exit. A count below 2 does nothing. Unordered values
// (NaN) never compare smaller and so are never swapped past.
void BubbleSort_Long(std::int32_t* values, int count);
void BubbleSort_Float(float* values, int count);
void BubbleSort_Double(double* values, int count);

// "" for no strings, the one string for one, otherwise "A, B and C": commas
// between all but the last two, then the localised word for "and", with no
// comma before it. The nil array of the original interface is the empty
// vector here.
std::string StringsToEnglishList(const std::vector<std::string>& strings);

}  // namespace tarn
