// Pieces shared by the QIF and tab-delimited exports of an account: the
// entries to export in register order, amounts and numbers written straight
// into the output, and per-export memories of date texts and category and
// type names, so that a long register costs one formatting per distinct date
// and one look-up per distinct category. All of them borrow the account.
// Internal to the account module.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {

class TARNAccountEntry;
struct TARNExportOptions;

// The register entries, or those the options' filter keeps, sorted by date,
// then checks by check number ahead of other entries, then entry number.
std::vector<TARNAccountEntry*> EntriesToExport(const TARNAccount& account,
                                               const TARNExportOptions& options);

// Appends the amount as "%.2f" writes it: two decimals, "." as the decimal
// point, a leading minus, no grouping.
inline void AppendAmount(std::string& out, double amount) {
  char buffer[64];
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, amount, std::chars_format::fixed, 2);
  out.append(buffer, result.ptr);
}

inline void AppendInteger(std::string& out, std::int32_t value) {
  char buffer[16];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

// Date numbers in one calendar format. The entries come sorted by date, so
// remembering the last date formatted saves nearly every formatting.
class ExportDateText {
 public:
  explicit ExportDateText(std::string format) : format_(std::move(format)) {}

  std::string_view operator()(DateNumber date) {
    if (!valid_ || date != date_) {
      text_ = CalendarDate::dateWithDateNumber(date).descriptionWithCalendarFormat(format_);
      date_ = date;
      valid_ = true;
    }
    return text_;
  }
  std::string today() const { return CalendarDate::now().descriptionWithCalendarFormat(format_); }

 private:
  std::string format_;
  std::string text_;
  DateNumber date_ = 0;
  bool valid_ = false;
};

// Names of the categories of an export, found through the accounts
// controller once per category number; empty for a category it does not
// know (and for every category when the account has no controller).
class ExportCategoryNames {
 public:
  explicit ExportCategoryNames(const TARNAccount& account) : account_(account) {}

  // "Parent:Child".
  const std::string& fullName(std::int32_t number) { return names(number).full; }
  // The category's own name.
  const std::string& name(std::int32_t number) { return names(number).own; }

 private:
  struct Names {
    std::string full;
    std::string own;
  };
  const Names& names(std::int32_t number);

  const TARNAccount& account_;
  std::unordered_map<std::int32_t, Names> names_;
};

// Type names by type number, empty for an unknown type.
class ExportTypeNames {
 public:
  explicit ExportTypeNames(const TARNAccount& account) : account_(account) {}
  const std::string& name(std::int32_t number);

 private:
  const TARNAccount& account_;
  std::unordered_map<std::int32_t, std::string> names_;
};

}  // namespace tarn
