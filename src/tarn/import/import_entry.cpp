#include "tarn/import/import_entry.h"

#include <charconv>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/localized.h"
#include "tarn/platform/text.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

template <class T>
int CompareValues(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

std::string ActualTypeName(const TARNAccountEntry& entry) {
  const auto* imported = dynamic_cast<const TARNImportEntry*>(&entry);
  return imported && imported->GetActualType() ? imported->GetActualType()->GetName() : "";
}

std::string ActualCategoryName(const TARNAccountEntry& entry) {
  const auto* imported = dynamic_cast<const TARNImportEntry*>(&entry);
  return imported && imported->GetActualCategory() ? imported->GetActualCategory()->fullName() : "";
}

int CompareDateThenNumber(const TARNAccountEntry& a, const TARNAccountEntry& b) {
  if (int order = CompareValues(a.GetDate(), b.GetDate())) return order;
  return CompareValues(a.GetNumber(), b.GetNumber());
}

void AppendSentence(std::string& text, std::string_view label, std::string_view value) {
  text += Localized(label);
  text += ":  ";
  text += value;
  text += " .  ";
}

}  // namespace

std::shared_ptr<TARNImportEntry> TARNImportEntry::initWithDictionary(
    const plist::Value& dictionary) {
  auto entry = std::make_shared<TARNImportEntry>();
  entry->loadFromDictionary(dictionary);
  return entry;
}

void TARNImportEntry::SetActualType(std::shared_ptr<TARNAccountEntryType> type) {
  actualType_ = std::move(type);
  SetType(actualType_ ? actualType_->GetNumber() : -1);
}

void TARNImportEntry::SetActualCategory(std::shared_ptr<TARNAccountEntryCategory> category) {
  actualCategory_ = std::move(category);
  SetCategory(actualCategory_ ? actualCategory_->number() : -1);
}

std::string TARNImportEntry::asSpeakableString() const {
  std::string text = CalendarDate::dateWithDateNumber(GetDate()).descriptionWithCalendarFormat(
      UserDefault("NSShortDateFormatString"));
  text += ".  ";
  // Six decimals, as the review has always read amounts aloud.
  char buffer[400];
  const auto written =
      std::to_chars(buffer, buffer + sizeof buffer, GetAmount(), std::chars_format::fixed, 6);
  const std::string_view amount(buffer, written.ptr - buffer);
  if (IsDebit()) {
    AppendSentence(text, "Debit in the Amount of", amount);
  } else if (IsDeposit()) {
    AppendSentence(text, "Deposit in the Amount of", amount);
  }
  if (actualType_) AppendSentence(text, "Type", actualType_->GetName());
  if (IsCheck()) AppendSentence(text, "Check Number", std::to_string(GetCheckNumber()));
  if (!GetToFrom().empty()) {
    if (IsDebit()) {
      AppendSentence(text, "To", GetToFrom());
    } else if (IsDeposit()) {
      AppendSentence(text, "From", GetToFrom());
    }
  }
  if (!GetDescription().empty()) AppendSentence(text, "Description", GetDescription());
  text += Localized(GetCleared() ? "Resolved" : "Unresolved");
  text += " .  ";
  return text;
}

int TARNImportEntry::TypePrimaryDateSecondaryIsGreaterThan(const TARNAccountEntry& other) const {
  if (int order = CaseInsensitiveCompare(ActualTypeName(*this), ActualTypeName(other))) {
    return order;
  }
  return CompareDateThenNumber(*this, other);
}

int TARNImportEntry::TypePrimaryDateSecondaryIsGreaterThan_Reversed(
    const TARNAccountEntry& other) const {
  return -TypePrimaryDateSecondaryIsGreaterThan(other);
}

int TARNImportEntry::CategoryPrimaryDateSecondaryIsGreaterThan(
    const TARNAccountEntry& other) const {
  if (int order = CaseInsensitiveCompare(ActualCategoryName(*this), ActualCategoryName(other))) {
    return order;
  }
  return CompareDateThenNumber(*this, other);
}

int TARNImportEntry::CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(
    const TARNAccountEntry& other) const {
  return -CategoryPrimaryDateSecondaryIsGreaterThan(other);
}

int TARNImportEntry::ImportIsGreaterThan(const TARNImportEntry& other) const {
  if (int order = CompareValues<signed char>(import_, other.import_)) return order;
  return CompareValues(GetNumber(), other.GetNumber());
}

int TARNImportEntry::ImportIsGreaterThan_Reversed(const TARNImportEntry& other) const {
  return -ImportIsGreaterThan(other);
}

}  // namespace tarn
