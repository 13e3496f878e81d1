// The settings an account remembers between sessions, one plain value per
// group: the register and reconcile view filters (one type, held twice), and
// the options of the last QIF, OFX and text import and of the text export.
// They own nothing and refer to nothing; the account holds one of each and
// stores them in its dictionary, and an importer can take its group whole.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"

namespace tarn {

// The two views that have a view filter.
inline constexpr std::int32_t kEntryViewType = 1;
inline constexpr std::int32_t kReconcileViewType = 2;

// Which field the quick search tests; any other value searches everything.
inline constexpr std::int32_t kViewSearchDescription = 10;
inline constexpr std::int32_t kViewSearchToFrom = 11;
inline constexpr std::int32_t kViewSearchType = 12;
inline constexpr std::int32_t kViewSearchNotes = 13;
inline constexpr std::int32_t kViewSearchAmount = 14;
inline constexpr std::int32_t kViewSearchCheckNumber = 15;
inline constexpr std::int32_t kViewSearchCategory = 16;
inline constexpr std::int32_t kViewSearchSplitDescription = 71;
inline constexpr std::int32_t kViewSearchSplitCategory = 72;

inline constexpr std::int32_t kViewResolvedOnly = 80;
inline constexpr std::int32_t kViewUnresolvedOnly = 81;
inline constexpr std::int32_t kViewResolvedAll = 82;

inline constexpr std::int32_t kViewTaxDeductibleOnly = 90;
inline constexpr std::int32_t kViewNotTaxDeductible = 91;
inline constexpr std::int32_t kViewTaxDeductibleAll = 92;

// Date ranges of the view filters; 30-33, 40-43 and 50-53 are this, last and
// to-date week, month, quarter and year.
inline constexpr std::int32_t kViewDateFirstEntryToToday = 20;
inline constexpr std::int32_t kViewDateToday = 21;
inline constexpr std::int32_t kViewDateYesterday = 22;
inline constexpr std::int32_t kViewDateThisWeek = 30;
inline constexpr std::int32_t kViewDateLastWeek = 40;
inline constexpr std::int32_t kViewDateWeekToDate = 50;
inline constexpr std::int32_t kViewDateAllEntries = 60;
inline constexpr std::int32_t kViewDateCustom = 61;

// What one view (register or reconcile) shows: a quick search, a resolved
// and a tax-deductible choice, and a date range.
struct ViewFilterSettings {
  std::int32_t filterType = 0;  // the searched field, kViewSearch...
  plist::Value filterData;      // the search text; nil reads as ""
  std::int32_t resolvedFilterType = kViewResolvedAll;
  std::int32_t taxDeductibleFilterType = kViewTaxDeductibleAll;
  std::int32_t dateFilterType = kViewDateAllEntries;
  DateNumber dateFilterStartDate = 0;  // kViewDateCustom only
  DateNumber dateFilterEndDate = 0;

  bool operator==(const ViewFilterSettings&) const = default;
};

// Options of the last OFX import. The swap options say which entry field
// each OFX field fills.
struct OFXImportSettings {
  bool zeroAmountsAsDeposits = true;
  std::int32_t swapName = 2;
  std::int32_t swapPayee = 1;
  std::int32_t swapMemo = 4;
  std::int32_t swapTransactionType = 3;
  std::int32_t swapReferenceNumber = 5;

  bool operator==(const OFXImportSettings&) const = default;
};

// Options of the last QIF import.
struct QIFImportSettings {
  std::int32_t encoding = 0;    // a platform encoding number; 0 for the default
  std::int32_t dateFormat = 0;  // an index into the host's list of date formats
  std::string decimalSeparator;
  std::string thousandsSeparator;
  bool zeroAmountsAsDeposits = true;
  bool allCategories = false;
  bool splitLineItems = true;
  std::int32_t swapToFrom = 1;
  std::int32_t swapCategory = 0;
  std::int32_t swapDescription = 2;

  bool operator==(const QIFImportSettings&) const = default;
};

// Options of the last comma- or tab-separated text import.
struct TextImportSettings {
  std::int32_t encoding = 0;
  // The role of each column; nullopt until the user makes a layout.
  std::optional<std::vector<std::int32_t>> dataLayout;
  bool skipFirstRow = false;
  std::int32_t dataFormat = 0;  // comma- or tab-separated
  std::int32_t dateFormat = 0;  // an index into the host's list of date formats
  std::string decimalSeparator;
  std::string thousandsSeparator;
  std::uint8_t zeroAmountsAsDeposits = 1;

  bool operator==(const TextImportSettings&) const = default;
};

// Options of the last text export.
struct TextExportSettings {
  std::int32_t exportType = -5;  // an odd stored default, kept as it is
  std::int32_t encoding = 0;

  bool operator==(const TextExportSettings&) const = default;
};

}  // namespace tarn
