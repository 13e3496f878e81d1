// Sorting the register by a column, and the orders of accounts in the host's
// list.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/text.h"

namespace tarn {

namespace {

using EntryComparator = int (TARNAccountEntry::*)(const TARNAccountEntry&) const;

struct ColumnComparators {
  EntryComparator ascending;
  EntryComparator descending;
};

// Both null for a code that names no column.
ColumnComparators ComparatorsForColumn(std::int32_t column) {
  using E = TARNAccountEntry;
  switch (column) {
    case TARNAccount::kSortColumnCheckNumber:
      return {&E::CheckNumberIsGreaterThan, &E::CheckNumberIsGreaterThan_Reversed};
    case TARNAccount::kSortColumnDate:
      return {&E::DatePrimaryCheckSecondaryIsGreaterThan,
              &E::DatePrimaryCheckSecondaryIsGreaterThan_Reversed};
    case TARNAccount::kSortColumnType:
      return {&E::TypePrimaryDateSecondaryIsGreaterThan,
              &E::TypePrimaryDateSecondaryIsGreaterThan_Reversed};
    case TARNAccount::kSortColumnDescription:
      return {&E::DescriptionIsGreaterThan, &E::DescriptionIsGreaterThan_Reversed};
    case TARNAccount::kSortColumnAmount:
      return {&E::AmountIsGreaterThan, &E::AmountIsGreaterThan_Reversed};
    case TARNAccount::kSortColumnResolved:
      return {&E::ClearedIsGreaterThan, &E::ClearedIsGreaterThan_Reversed};
    case TARNAccount::kSortColumnToFrom:
      return {&E::ToFromIsGreaterThan, &E::ToFromIsGreaterThan_Reversed};
    default:
      return {nullptr, nullptr};
  }
}

// The result of sorting by entry number and then, stably, by a column
// comparator that ends with the entry number: the column's key, then the
// entry number (both reversed when descending), then, for entries sharing a
// number, their place in the list.
template <typename MakeKey>
void SortByKeys(TARNAccount::Entries& list, bool descending, MakeKey&& makeKey) {
  using Key = decltype(makeKey(std::declval<const TARNAccountEntry&>()));
  struct Item {
    Key key;
    std::int32_t number;
    std::uint32_t position;
  };
  std::vector<Item> items;
  items.reserve(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    items.push_back({makeKey(*list[i]), list[i]->GetNumber(), static_cast<std::uint32_t>(i)});
  }
  std::sort(items.begin(), items.end(), [descending](const Item& a, const Item& b) {
    if (a.key != b.key) return descending ? b.key < a.key : a.key < b.key;
    if (a.number != b.number) return descending ? b.number < a.number : a.number < b.number;
    return a.position < b.position;
  });
  TARNAccount::Entries sorted;
  sorted.reserve(list.size());
  for (const Item& item : items) sorted.push_back(std::move(list[item.position]));
  list = std::move(sorted);
}

int Sign(int value) {
  return (value > 0) - (value < 0);
}

template <typename T>
int CompareValues(const T& a, const T& b) {
  return (a > b) - (a < b);
}

}  // namespace

void TARNAccount::SortBy(std::int32_t column, bool descending) {
  const std::shared_ptr<TARNAccountFolder> selected = folder();
  SortEntries(selected ? selected->entries() : entries_, column, descending);
}

void TARNAccount::SortEntries(Entries& list, std::int32_t column, bool descending) {
  // The busiest columns sort on keys taken once per entry; they order
  // exactly as the entries' comparators do.
  switch (column) {
    case kSortColumnCheckNumber:
      return SortByKeys(list, descending,
                        [](const TARNAccountEntry& entry) { return entry.CheckOrderKey(); });
    case kSortColumnDate:
      return SortByKeys(list, descending, [](const TARNAccountEntry& entry) {
        return std::pair(entry.GetDate(), entry.CheckOrderKey());
      });
    case kSortColumnDescription:
      return SortByKeys(list, descending, [](const TARNAccountEntry& entry) {
        std::string folded;
        FoldInto(entry.GetDescription(), folded);
        return folded;
      });
    case kSortColumnToFrom:
      return SortByKeys(list, descending, [](const TARNAccountEntry& entry) {
        std::string folded;
        FoldInto(entry.GetToFrom(), folded);
        return folded;
      });
    default:
      break;
  }
  // Every column comparator ends with the entry number, so the first sort
  // only decides the order of a code that names no column (and of entries
  // that share a number).
  std::stable_sort(list.begin(), list.end(),
                   [](const auto& a, const auto& b) { return a->NumberIsGreaterThan(*b) < 0; });
  const ColumnComparators comparators = ComparatorsForColumn(column);
  const EntryComparator compare = descending ? comparators.descending : comparators.ascending;
  if (!compare) return;
  std::stable_sort(list.begin(), list.end(),
                   [compare](const auto& a, const auto& b) { return ((*a).*compare)(*b) < 0; });
}

int TARNAccount::NameIsGreaterThan(const TARNAccount& other) const {
  return Sign(CaseInsensitiveCompare(name_, other.name_));
}

int TARNAccount::NameIsGreaterThan_Reversed(const TARNAccount& other) const {
  return -NameIsGreaterThan(other);
}

int TARNAccount::NumberIsGreaterThan(const TARNAccount& other) const {
  return CompareValues(number_, other.number_);
}

int TARNAccount::BalanceIsGreaterThan(const TARNAccount& other) const {
  return CompareValues(GetBalance(), other.GetBalance());
}

int TARNAccount::BalanceIsGreaterThan_Reversed(const TARNAccount& other) const {
  return -BalanceIsGreaterThan(other);
}

}  // namespace tarn
