// Converts between a category and its text in table cells and fields. It shows
// a category by its full name but reads back only a plain own name, looked up
// in the flat list of categories it is given (and shares, not owns).
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/model/category.h"

namespace tarn {

class PFCategoryFormatter {
 public:
  using Categories = std::vector<std::shared_ptr<TARNAccountEntryCategory>>;

  // Text with display attributes (attribute name to value), the core's plain
  // stand-in for the interface's attributed strings.
  struct AttributedString {
    std::string string;
    std::map<std::string, std::string> attributes;
    friend bool operator==(const AttributedString&, const AttributedString&) = default;
  };

  // No categories: every text reads as nothing.
  PFCategoryFormatter() = default;

  const std::optional<Categories>& categories() const { return categories_; }
  void setCategories(std::optional<Categories> categories) { categories_ = std::move(categories); }

  // The category's full name; "" for nullptr.
  std::string stringForObjectValue(const std::shared_ptr<TARNAccountEntryCategory>& category) const;
  AttributedString attributedStringForObjectValue(
      const std::shared_ptr<TARNAccountEntryCategory>& category,
      const std::map<std::string, std::string>& defaultAttributes) const;
  // The first category of the list whose own name equals the text exactly
  // (case-sensitive); nullptr when there is no list or no match.
  std::shared_ptr<TARNAccountEntryCategory> getObjectValue(std::string_view text) const;

 private:
  std::optional<Categories> categories_;
};

}  // namespace tarn
