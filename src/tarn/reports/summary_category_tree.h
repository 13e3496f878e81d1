// The category tree of a summary's result dictionary: rows with
// "subtotalName", "amount", optional "debits" and "deposits", and "children".
// A row is found by its full name ("Auto:Fuel"), one part per level, names
// compared case-insensitively. Rows are plain dictionaries held by their
// parent's "children" array; the functions below borrow them.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tarn/platform/value.h"

namespace tarn {

class TARNAccountEntryCategory;

// The first category of the list whose number is the given one, or nullptr.
std::shared_ptr<TARNAccountEntryCategory> TARNAccountSummary_CategoryWithNumber(
    const std::vector<std::shared_ptr<TARNAccountEntryCategory>>& categories, std::int32_t number);

// The row at the full name's path, or nullptr. The empty name is the row
// named "" at the top.
plist::Value* TARNAccountSummary_CategorySubtotalWithName(plist::Array& rows,
                                                          std::string_view fullName);
const plist::Value* TARNAccountSummary_CategorySubtotalWithName(const plist::Array& rows,
                                                                std::string_view fullName);

// The row at the full name's path, made (with "amount" 0 and no children)
// at every level where it is missing. The reference is valid until the tree
// changes.
plist::Value& TARNAccountSummary_AddCategorySubtotalWithName(plist::Array& rows,
                                                             std::string_view fullName);

}  // namespace tarn
