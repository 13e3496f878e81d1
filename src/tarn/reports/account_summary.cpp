#include "tarn/reports/account_summary.h"

#include <utility>

#include "tarn/model/account_entry.h"
#include "tarn/platform/text.h"

namespace tarn {

namespace {

// The stored flag and number keys, in the order they are read.
void readInt(const plist::Value& options, std::string_view key, std::int32_t& field) {
  const plist::Value* value = options.find(key);
  if (value && value->isNumber()) field = value->intValue();
}

void readBool(const plist::Value& options, std::string_view key, bool& field) {
  const plist::Value* value = options.find(key);
  if (value && value->isNumber()) field = value->boolValue();
}

}  // namespace

TARNAccountSummary::TARNAccountSummary()
    : name_("Untitled Summary"),
      startDate_(CalendarDate::now().dateNumber()),
      endDate_(startDate_),
      filterData_(std::string()) {}

std::shared_ptr<TARNAccountSummary> TARNAccountSummary::initWithOptionsDictionary(
    const plist::Value& options, Entries entries) {
  auto summary = std::make_shared<TARNAccountSummary>();
  summary->setOptionsFromDictionary(options);
  summary->setEntries(std::move(entries));
  return summary;
}

void TARNAccountSummary::setName(std::optional<std::string> name) {
  if (name) name_ = std::move(*name);
}

void TARNAccountSummary::setOptionsFromDictionary(const plist::Value& options) {
  if (!options.isDictionary()) return;
  if (const plist::Value* name = options.find("name"); name && name->isString()) {
    name_ = name->stringValue();
  }
  readInt(options, "dateRangeStyle", dateRangeStyle_);
  readInt(options, "startDate", startDate_);
  readInt(options, "endDate", endDate_);
  readBool(options, "showDebits", showDebits_);
  readBool(options, "showDeposits", showDeposits_);
  readInt(options, "showResolved", showResolved_);
  readInt(options, "showTaxDeductible", showTaxDeductible_);
  readInt(options, "showChecks", showChecks_);
  readInt(options, "showStyle", showStyle_);
  readBool(options, "subtotalDescriptions", subtotalDescriptions_);
  readBool(options, "subtotalTypes", subtotalTypes_);
  readBool(options, "subtotalToFroms", subtotalToFroms_);
  readBool(options, "subtotalCategories", subtotalCategories_);
  readBool(options, "parentCategorySubtotalsIncludeSubcategorySubtotals",
           parentCategorySubtotalsIncludeSubcategorySubtotals_);
  readInt(options, "subtotalPeriodStyle", subtotalPeriodStyle_);
  readBool(options, "filter", filter_);
  readInt(options, "filterType", filterType_);
  if (const plist::Value* data = options.find("filterData")) filterData_ = *data;
}

plist::Value TARNAccountSummary::optionsAsDictionary() const {
  plist::Dictionary options;
  options.emplace("name", name_);
  options.emplace("dateRangeStyle", dateRangeStyle_);
  options.emplace("startDate", startDate_);
  options.emplace("endDate", endDate_);
  options.emplace("showStyle", showStyle_);
  options.emplace("showResolved", showResolved_);
  options.emplace("showTaxDeductible", showTaxDeductible_);
  options.emplace("showChecks", showChecks_);
  options.emplace("subtotalPeriodStyle", subtotalPeriodStyle_);
  options.emplace("filterType", filterType_);
  options.emplace("showDebits", showDebits_);
  options.emplace("showDeposits", showDeposits_);
  options.emplace("subtotalDescriptions", subtotalDescriptions_);
  options.emplace("subtotalTypes", subtotalTypes_);
  options.emplace("subtotalToFroms", subtotalToFroms_);
  options.emplace("subtotalCategories", subtotalCategories_);
  options.emplace("parentCategorySubtotalsIncludeSubcategorySubtotals",
                  parentCategorySubtotalsIncludeSubcategorySubtotals_);
  options.emplace("filter", filter_);
  if (!filterData_.isNil()) options.emplace("filterData", filterData_);
  return plist::Value(std::move(options));
}

int TARNAccountSummary::NameIsGreaterThan(const TARNAccountSummary& other) const {
  return CaseInsensitiveCompare(name_, other.name_);
}

}  // namespace tarn
