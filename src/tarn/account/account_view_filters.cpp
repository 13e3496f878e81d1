// The view filters of the register and reconcile views: a filter built from
// a view's settings (search, date range, resolved and tax-deductible
// choices) and the entries each view shows through it.
#include <algorithm>
#include <optional>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/date_ranges.h"
#include "tarn/platform/localized.h"

namespace tarn {

namespace {

struct SearchField {
  std::int32_t viewType;
  const char* nameKey;
  std::int32_t field;
};

// The quick-search kinds of the views and the field each condition tests.
constexpr SearchField kSearchFields[] = {
    {kViewSearchDescription, "Description", kFieldDescription},
    {kViewSearchToFrom, "To/From", kFieldToFrom},
    {kViewSearchType, "Type", kFieldType},
    {kViewSearchNotes, "Notes", kFieldNotes},
    {kViewSearchAmount, "Amount", kFieldAmountText},
    {kViewSearchCheckNumber, "Check Number", kFieldCheckNumberText},
    {kViewSearchCategory, "Category", kFieldCategory},
    {kViewSearchSplitDescription, "Split Description", kFieldSplitDescription},
    {kViewSearchSplitCategory, "Split Category", kFieldSplitCategory},
};

// The period mnemonic of a view date type, or -1 for types that are not a
// named period.
int MnemonicForViewDateType(std::int32_t type) {
  switch (type) {
    case kViewDateToday:
      return kMnemonicToday;
    case kViewDateYesterday:
      return kMnemonicYesterday;
    case 30:
      return kMnemonicThisWeek;
    case 31:
      return kMnemonicThisMonth;
    case 32:
      return kMnemonicThisQuarter;
    case 33:
      return kMnemonicThisYear;
    case 40:
      return kMnemonicLastWeek;
    case 41:
      return kMnemonicLastMonth;
    case 42:
      return kMnemonicLastQuarter;
    case 43:
      return kMnemonicLastYear;
    case 50:
      return kMnemonicWeekToDate;
    case 51:
      return kMnemonicMonthToDate;
    case 52:
      return kMnemonicQuarterToDate;
    case 53:
      return kMnemonicYearToDate;
    default:
      return -1;
  }
}

}  // namespace

std::shared_ptr<TARNFilter> TARNAccount::filterForViewType(std::int32_t viewType) const {
  if (viewType == kEntryViewType) return filterForViewFilterSettings(entryViewFilter_);
  if (viewType == kReconcileViewType) return filterForViewFilterSettings(reconcileViewFilter_);
  return std::make_shared<TARNFilter>();
}

std::shared_ptr<TARNFilter> TARNAccount::filterForViewFilterSettings(
    const ViewFilterSettings& settings) const {
  auto filter = std::make_shared<TARNFilter>();
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->setLogic(kGroupLogicAnd);
  group->setQualifier(kGroupMatchAll);

  const char* nameKey = "General";
  std::int32_t field = kFieldAnything;
  for (const SearchField& search : kSearchFields) {
    if (search.viewType == settings.filterType) {
      nameKey = search.nameKey;
      field = search.field;
    }
  }
  filter->setName(Localized(nameKey));
  const plist::Value searchText =
      settings.filterData.isNil() ? plist::Value(std::string()) : settings.filterData;
  group->addConditionWithCategory(field, kConditionKeepMatches, kTextContains, searchText);

  // The range is inclusive at both ends: after the day before the start,
  // before the day after the end (date numbers shifted as integers).
  std::optional<std::pair<DateNumber, DateNumber>> range;
  const DateNumber today = CalendarDate::now().dateNumber();
  if (settings.dateFilterType == kViewDateFirstEntryToToday) {
    // The end is today at 23:59:59, whose date number is today's.
    if (entries_.empty()) {
      range.emplace(today, today);
    } else {
      range.emplace(firstAndLastRegisterDates().first, today);
    }
  } else if (settings.dateFilterType == kViewDateAllEntries) {
    range = entries_.empty() ? std::pair(today, today) : firstAndLastRegisterDates();
  } else if (settings.dateFilterType == kViewDateCustom) {
    range.emplace(settings.dateFilterStartDate, settings.dateFilterEndDate);
  } else if (int mnemonic = MnemonicForViewDateType(settings.dateFilterType); mnemonic >= 0) {
    CalendarDate start;
    CalendarDate end;
    DateRangeForMnemonic(mnemonic, start, end);
    range.emplace(start.dateNumber(), end.dateNumber());
  }
  if (range) {
    group->addConditionWithCategory(kFieldDate, kConditionKeepMatches, kDateIsAfter,
                                    plist::Value(range->first - 1));
    group->addConditionWithCategory(kFieldDate, kConditionKeepMatches, kDateIsBefore,
                                    plist::Value(range->second + 1));
  }

  if (settings.resolvedFilterType == kViewResolvedOnly ||
      settings.resolvedFilterType == kViewUnresolvedOnly) {
    group->addConditionWithCategory(kFieldResolved, kConditionKeepMatches, kFlagIs,
                                    plist::Value(settings.resolvedFilterType == kViewResolvedOnly));
  }
  if (settings.taxDeductibleFilterType == kViewTaxDeductibleOnly ||
      settings.taxDeductibleFilterType == kViewNotTaxDeductible) {
    group->addConditionWithCategory(
        kFieldTaxDeductible, kConditionKeepMatches, kFlagIs,
        plist::Value(settings.taxDeductibleFilterType == kViewTaxDeductibleOnly));
  }
  filter->addConditionGroup(std::move(group));
  return filter;
}

// The earliest and latest dates of the register (folders are not consulted);
// only called when the register has entries.
std::pair<DateNumber, DateNumber> TARNAccount::firstAndLastRegisterDates() const {
  DateNumber first = entries_.front()->GetDate();
  DateNumber last = first;
  for (const auto& entry : entries_) {
    first = std::min(first, entry->GetDate());
    last = std::max(last, entry->GetDate());
  }
  return {first, last};
}

TARNAccount::Entries TARNAccount::filteredEntries(std::int32_t viewType) const {
  const auto viewFilter = filterForViewType(viewType);
  if (auto selected = folder()) return viewFilter->filterEntries(selected->entries());
  Entries shown = viewFilter->filterEntries(entries_);
  if (auto smart = smartFolder()) shown = smart->filterEntries(shown);
  return shown;
}

TARNAccount::Entries TARNAccount::entryFilteredEntries() const {
  return filteredEntries(kEntryViewType);
}

TARNAccount::Entries TARNAccount::reconcileFilteredEntries() const {
  return filteredEntries(kReconcileViewType);
}

}  // namespace tarn
