// The account's folders and smart folders, the register's entry list, and the
// view filters of the register and reconcile views.
#include <algorithm>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
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

template <typename List, typename Item>
void AddUnlessPresent(List& list, Item item) {
  if (item && std::find(list.begin(), list.end(), item) == list.end()) {
    list.push_back(std::move(item));
  }
}

template <typename List>
void RemoveAtIndex(List& list, std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= list.size()) return;
  list.erase(list.begin() + index);
}

}  // namespace

void TARNAccount::SetEntries(Entries entries) {
  entries_ = std::move(entries);
  for (const auto& entry : entries_) entry->SetAccount(this);
}

void TARNAccount::SetSchedules(Schedules schedules) {
  schedules_ = std::move(schedules);
  for (const auto& schedule : schedules_) schedule->SetAccount(this);
}

void TARNAccount::AddEntry(const std::shared_ptr<TARNAccountEntry>& entry) {
  if (!entry) return;
  entry->SetAccount(this);
  if (auto selected = folder()) {
    selected->entries().push_back(entry);
  } else {
    entries_.push_back(entry);
  }
}

void TARNAccount::RemoveEntry(const std::shared_ptr<TARNAccountEntry>& entry) {
  if (!entry) return;
  if (auto found = std::find(entries_.begin(), entries_.end(), entry); found != entries_.end()) {
    entries_.erase(found);
    return;
  }
  for (const auto& each : folders_) std::erase(each->entries(), entry);
}

void TARNAccount::addSmartFolder(std::shared_ptr<TARNFilter> smartFolder) {
  AddUnlessPresent(smartFolders_, std::move(smartFolder));
}

void TARNAccount::removeSmartFolder(const std::shared_ptr<TARNFilter>& smartFolder) {
  std::erase(smartFolders_, smartFolder);
}

void TARNAccount::removeSmartFolderAtIndex(std::int32_t index) {
  RemoveAtIndex(smartFolders_, index);
}

void TARNAccount::addFolder(std::shared_ptr<TARNAccountFolder> folder) {
  AddUnlessPresent(folders_, std::move(folder));
}

void TARNAccount::removeFolder(const std::shared_ptr<TARNAccountFolder>& folder) {
  std::erase(folders_, folder);
}

void TARNAccount::removeFolderAtIndex(std::int32_t index) {
  RemoveAtIndex(folders_, index);
}

void TARNAccount::SetFolders(Folders folders) {
  folders_ = std::move(folders);
  std::erase(folders_, nullptr);
  for (const auto& each : folders_) {
    for (const auto& entry : each->entries()) entry->SetAccount(this);
  }
}

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
