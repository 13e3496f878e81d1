#include "tarn/reports/summary_category_tree.h"

#include <string>
#include <utility>

#include "tarn/model/category.h"
#include "tarn/platform/text.h"
#include "tarn/reports/account_summary.h"

namespace tarn {

namespace {

constexpr std::string_view kSubtotalName = "subtotalName";
constexpr std::string_view kChildren = "children";

// The next part of a full name, consumed from `rest`; ":" separates parts.
std::string_view NextPart(std::string_view& rest, bool& more) {
  const std::size_t colon = rest.find(':');
  if (colon == std::string_view::npos) {
    more = false;
    return rest;
  }
  std::string_view part = rest.substr(0, colon);
  rest.remove_prefix(colon + 1);
  return part;
}

template <typename Rows>
auto* RowNamed(Rows& rows, std::string_view name) {
  for (auto& row : rows) {
    const plist::Value* rowName = row.find(kSubtotalName);
    if (rowName && CaseInsensitiveEqual(rowName->stringValue(), name)) return &row;
  }
  return static_cast<decltype(&rows.front())>(nullptr);
}

template <typename Rows>
auto* FindRow(Rows& rows, std::string_view fullName) {
  Rows* level = &rows;
  std::string_view rest = fullName;
  bool more = true;
  while (true) {
    auto* row = RowNamed(*level, NextPart(rest, more));
    if (!row || !more) return row;
    const plist::Value* children = row->find(kChildren);
    if (!children || !children->isArray()) return static_cast<decltype(row)>(nullptr);
    if constexpr (std::is_const_v<Rows>) {
      level = &children->arrayValue();
    } else {
      level = &row->mutableDictionary()[std::string(kChildren)].mutableArray();
    }
  }
}

plist::Value NewRow(std::string_view name) {
  plist::Dictionary row;
  row.emplace("amount", 0.0);
  row.emplace(std::string(kChildren), plist::Array());
  row.emplace(std::string(kSubtotalName), std::string(name));
  return plist::Value(std::move(row));
}

void AddToKey(plist::Dictionary& row, const char* key, double amount) {
  auto [position, made] = row.try_emplace(key, amount);
  if (!made) position->second = plist::Value(position->second.doubleValue() + amount);
}

void Flatten(const plist::Array& rows, std::vector<const plist::Value*>& out) {
  for (const plist::Value& row : rows) {
    out.push_back(&row);
    if (const plist::Value* children = row.find(kChildren); children && children->isArray()) {
      Flatten(children->arrayValue(), out);
    }
  }
}

}  // namespace

std::shared_ptr<TARNAccountEntryCategory> TARNAccountSummary_CategoryWithNumber(
    const std::vector<std::shared_ptr<TARNAccountEntryCategory>>& categories, std::int32_t number) {
  for (const auto& category : categories) {
    if (category && category->number() == number) return category;
  }
  return nullptr;
}

plist::Value* TARNAccountSummary_CategorySubtotalWithName(plist::Array& rows,
                                                          std::string_view fullName) {
  return FindRow(rows, fullName);
}

const plist::Value* TARNAccountSummary_CategorySubtotalWithName(const plist::Array& rows,
                                                                std::string_view fullName) {
  return FindRow(rows, fullName);
}

plist::Value& TARNAccountSummary_AddCategorySubtotalWithName(plist::Array& rows,
                                                             std::string_view fullName) {
  plist::Array* level = &rows;
  std::string_view rest = fullName;
  bool more = true;
  while (true) {
    const std::string_view part = NextPart(rest, more);
    plist::Value* row = RowNamed(*level, part);
    if (!row) row = &level->emplace_back(NewRow(part));
    if (!more) return *row;
    level = &row->mutableDictionary()[std::string(kChildren)].mutableArray();
  }
}

std::vector<const plist::Value*> TARNAccountSummary::allCategorySubtotalsForCategorySubtotals(
    const plist::Array& rows) const {
  std::vector<const plist::Value*> all;
  Flatten(rows, all);
  return all;
}

void TARNAccountSummary::processOverallSummaryCategorySubtotals(
    const plist::Array& periodRows, std::optional<std::string_view> parentName,
    plist::Array& overallRows) const {
  for (const plist::Value& row : periodRows) {
    const plist::Value* name = row.find(kSubtotalName);
    std::string path = parentName ? std::string(*parentName) + ":" : std::string();
    if (name) path += name->stringValue();
    const plist::Value* amountValue = row.find("amount");
    const double amount = amountValue ? amountValue->doubleValue() : 0.0;
    plist::Dictionary& overall =
        TARNAccountSummary_AddCategorySubtotalWithName(overallRows, path).mutableDictionary();
    AddToKey(overall, "amount", amount);
    AddToKey(overall, amount >= 0 ? "deposits" : "debits", amount);
    if (const plist::Value* children = row.find(kChildren); children && children->isArray()) {
      processOverallSummaryCategorySubtotals(children->arrayValue(), path, overallRows);
    }
  }
}

}  // namespace tarn
