#include "tarn/filters/prepared_condition.h"

#include <charconv>

#include "tarn/account/account.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/filters/amount_text.h"
#include "tarn/filters/filter_codes.h"
#include "tarn/filters/filter_condition.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/number_text.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {
namespace {

using Outcome = NameMatchCache::Outcome;

// A date condition's number: numbers give their integer value, and so do
// texts (as the platform reads a leading integer); anything else reads 0.
std::int32_t integerOf(const plist::Value& value) {
  if (value.isString()) return LeadingInteger(value.stringValue());
  return value.intValue();
}

// Removes every occurrence of `separator`, searched left to right.
void removeOccurrences(std::string& text, std::string_view separator) {
  if (separator.empty()) return;
  std::string kept;
  kept.reserve(text.size());
  std::size_t from = 0;
  for (std::size_t found = text.find(separator); found != std::string::npos;
       found = text.find(separator, from)) {
    kept.append(text, from, found - from);
    from = found + separator.size();
  }
  kept.append(text, from, std::string::npos);
  text = std::move(kept);
}

bool isTextField(std::int32_t field) {
  switch (field) {
    case kFieldDescription:
    case kFieldType:
    case kFieldToFrom:
    case kFieldCategory:
    case kFieldCheckNumberText:
    case kFieldAmountText:
    case kFieldSplitCategory:
    case kFieldSplitDescription:
    case kFieldNotes:
    case kFieldAnything:
      return true;
    default:
      return false;
  }
}

bool isFlagField(std::int32_t field) {
  return field == kFieldCheck || field == kFieldResolved || field == kFieldTaxDeductible ||
         field == kFieldVoid;
}

}  // namespace

PreparedCondition::PreparedCondition(const TARNFilterCondition& condition, std::int32_t field)
    : field_(field), qualifier_(condition.qualifier()), keepMatches_(condition.logic() != 0) {
  const plist::Value& data = condition.data();

  if (isTextField(field)) {
    if (!data.isString() || data.stringValue().empty()) return;
    restricts_ = true;
    if (field != kFieldAmountText) {
      text_ = TextConditionMatcher(data.stringValue(), qualifier_);
      textMatchesEmpty_ = text_.matches("");
      return;
    }
    // The user may type the amount with grouping ("1,000"); the amount's
    // text has none, so the separator is taken out of the search text.
    std::string needle = data.stringValue();
    removeOccurrences(needle, UserDefault("NSThousandsSeparator"));
    // A search text left empty is found in no amount's text (and equals none):
    // leave the test without a matcher.
    if (!needle.empty()) text_ = TextConditionMatcher(needle, qualifier_);
    decimalSeparator_ = UserDefault("NSDecimalSeparator");
    return;
  }

  if (isFlagField(field)) {
    if (!data.isNumber()) return;
    restricts_ = true;
    flagValue_ = data.boolValue();
    flagQualifierIs_ = qualifier_ == kFlagIs;
    return;
  }

  if (field == kFieldAmount) {
    if (!data.isNumber()) return;
    restricts_ = true;
    amount_ = data.doubleValue();
    return;
  }

  if (field == kFieldDate) {
    std::int32_t a = 0;
    std::int32_t b = 0;
    if (data.isArray()) {
      const plist::Array& numbers = data.arrayValue();
      if (!numbers.empty()) a = integerOf(numbers[0]);
      if (numbers.size() > 1) b = integerOf(numbers[1]);
    } else if (data.isNumber() || data.isString()) {
      a = integerOf(data);
    } else {
      return;
    }
    restricts_ = true;
    const CalendarDate now = CalendarDate::now();
    const CalendarDate today(now.yearOfCommonEra(), now.monthOfYear(), now.dayOfMonth());
    dates_ = ResolveDateConditionRange(qualifier_, a, b, today);
  }
}

int PreparedCondition::cost() const {
  switch (field_) {
    case kFieldDate:
    case kFieldAmount:
    case kFieldCheck:
    case kFieldResolved:
    case kFieldTaxDeductible:
    case kFieldVoid:
      return 0;
    case kFieldDescription:
    case kFieldToFrom:
    case kFieldNotes:
    case kFieldCheckNumberText:
    case kFieldType:
    case kFieldCategory:
      return 1;
    case kFieldAmountText:
    case kFieldSplitCategory:
    case kFieldSplitDescription:
      return 2;
    default:  // anything: five texts
      return 3;
  }
}

bool PreparedCondition::amountMatches(double amount) const {
  switch (qualifier_) {
    case kAmountIsEqualTo:
      return amount_ - kAmountTolerance < amount && amount < amount_ + kAmountTolerance;
    case kAmountIsGreaterThan:
      return amount > amount_ + kAmountTolerance;
    case kAmountIsLessThan:
      return amount < amount_ - kAmountTolerance;
    default:
      return false;
  }
}

NameMatchCache::Outcome PreparedCondition::typeOutcome(const TARNAccountEntry& entry) {
  TARNAccount* account = entry.GetAccount();
  return types_.lookup(account, entry.GetType(), [&] {
    const auto type = account ? account->accountEntryTypeForNumber(entry.GetType()) : nullptr;
    if (!type) return Outcome::Unresolved;
    return text_.matches(type->GetName()) ? Outcome::Match : Outcome::NoMatch;
  });
}

NameMatchCache::Outcome PreparedCondition::categoryOutcome(const TARNAccountEntry& entry) {
  TARNAccount* account = entry.GetAccount();
  return categories_.lookup(account, entry.GetCategory(), [&] {
    const auto category =
        account ? account->accountEntryCategoryForNumber(entry.GetCategory()) : nullptr;
    if (!category) return Outcome::Unresolved;
    return text_.matches(category->fullName()) ? Outcome::Match : Outcome::NoMatch;
  });
}

bool PreparedCondition::keepsByName(Outcome outcome) const {
  // An entry whose type or category does not resolve is dropped whatever the
  // logic: "is not exactly Food" does not keep entries without a category.
  return outcome != Outcome::Unresolved && byLogic(outcome == Outcome::Match);
}

bool PreparedCondition::matchesOrEmpty(Outcome outcome) const {
  return outcome == Outcome::Unresolved ? textMatchesEmpty_ : outcome == Outcome::Match;
}

bool PreparedCondition::keepsBySplitCategory(const TARNAccountEntry& entry) {
  TARNAccount* account = entry.GetAccount();
  TARNAccountsController* controller = account ? account->accountsController() : nullptr;
  for (const auto& item : entry.splitLineItems()) {
    if (!item) continue;
    const Outcome outcome = splitCategories_.lookup(controller, item->category(), [&] {
      const auto category = controller ? controller->categoryWithNumber(item->category()) : nullptr;
      if (!category) return Outcome::Unresolved;
      return text_.matches(category->name()) ? Outcome::Match : Outcome::NoMatch;
    });
    // A line whose category is unknown is passed over.
    if (outcome == Outcome::Unresolved) continue;
    if (byLogic(outcome == Outcome::Match)) return true;
  }
  return false;
}

bool PreparedCondition::keepsBySplitDescription(const TARNAccountEntry& entry) const {
  for (const auto& item : entry.splitLineItems()) {
    if (item && byLogic(text_.matches(item->description()))) return true;
  }
  return false;
}

bool PreparedCondition::keeps(const TARNAccountEntry& entry) {
  switch (field_) {
    case kFieldDescription:
      return byLogic(text_.matches(entry.GetDescription()));
    case kFieldDate:
      return byLogic(dates_.matches(entry.GetDate()));
    case kFieldAmount:
      return byLogic(amountMatches(entry.GetAmount()));
    case kFieldType:
      return keepsByName(typeOutcome(entry));
    case kFieldCheck:
      return byLogic(flagMatches(entry.IsCheck()));
    case kFieldToFrom:
      return byLogic(text_.matches(entry.GetToFrom()));
    case kFieldResolved:
      return byLogic(flagMatches(entry.GetCleared() != 0));
    case kFieldTaxDeductible:
      return byLogic(flagMatches(entry.GetTaxDeductible()));
    case kFieldCategory:
      return keepsByName(categoryOutcome(entry));
    case kFieldVoid:
      return byLogic(flagMatches(entry.GetVoid()));
    case kFieldCheckNumberText: {
      // An entry without a check number (-1) reads "0".
      const std::int32_t checkNumber = entry.GetCheckNumber() == -1 ? 0 : entry.GetCheckNumber();
      char number[16];
      const auto written = std::to_chars(number, number + sizeof number, checkNumber);
      return byLogic(
          text_.matches(std::string_view(number, static_cast<std::size_t>(written.ptr - number))));
    }
    case kFieldAmountText:
      FormatAmountText(entry.GetAmount(), decimalSeparator_, scratch_);
      return byLogic(text_.matches(scratch_));
    case kFieldSplitCategory:
      return keepsBySplitCategory(entry);
    case kFieldSplitDescription:
      return keepsBySplitDescription(entry);
    case kFieldNotes:
      return byLogic(text_.matches(entry.GetNotes()));
    case kFieldAnything:
      // Any of the five texts; unknown type and category read as empty names.
      // Their outcomes come from the run's table, so they are tried before
      // the entry's own texts (the order cannot change the answer).
      return byLogic(matchesOrEmpty(typeOutcome(entry)) || matchesOrEmpty(categoryOutcome(entry)) ||
                     text_.matches(entry.GetDescription()) || text_.matches(entry.GetToFrom()) ||
                     text_.matches(entry.GetNotes()));
    default:
      return true;
  }
}

}  // namespace tarn
