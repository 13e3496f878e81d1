#include "tarn/model/category_formatter.h"

namespace tarn {

std::string PFCategoryFormatter::stringForObjectValue(
    const std::shared_ptr<TARNAccountEntryCategory>& category) const {
  return category ? category->fullName() : std::string();
}

PFCategoryFormatter::AttributedString PFCategoryFormatter::attributedStringForObjectValue(
    const std::shared_ptr<TARNAccountEntryCategory>& category,
    const std::map<std::string, std::string>& defaultAttributes) const {
  return AttributedString{stringForObjectValue(category), defaultAttributes};
}

std::shared_ptr<TARNAccountEntryCategory> PFCategoryFormatter::getObjectValue(
    std::string_view text) const {
  if (!categories_) return nullptr;
  // Own names only, case-sensitive: the list is expected to be flat.
  for (const auto& category : *categories_) {
    if (category && category->name() == text) return category;
  }
  return nullptr;
}

}  // namespace tarn
