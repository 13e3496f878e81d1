#include "tarn/reports/account_summary.h"

#include <utility>

#include "tarn/model/account_entry.h"
#include "tarn/platform/text.h"

namespace tarn {

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
  plist::ReadNumber(options, "dateRangeStyle", dateRangeStyle_);
  plist::ReadNumber(options, "startDate", startDate_);
  plist::ReadNumber(options, "endDate", endDate_);
  plist::ReadFlag(options, "showDebits", showDebits_);
  plist::ReadFlag(options, "showDeposits", showDeposits_);
  plist::ReadNumber(options, "showResolved", showResolved_);
  plist::ReadNumber(options, "showTaxDeductible", showTaxDeductible_);
  plist::ReadNumber(options, "showChecks", showChecks_);
  plist::ReadNumber(options, "showStyle", showStyle_);
  plist::ReadFlag(options, "subtotalDescriptions", subtotalDescriptions_);
  plist::ReadFlag(options, "subtotalTypes", subtotalTypes_);
  plist::ReadFlag(options, "subtotalToFroms", subtotalToFroms_);
  plist::ReadFlag(options, "subtotalCategories", subtotalCategories_);
  plist::ReadFlag(options, "parentCategorySubtotalsIncludeSubcategorySubtotals",
                  parentCategorySubtotalsIncludeSubcategorySubtotals_);
  plist::ReadNumber(options, "subtotalPeriodStyle", subtotalPeriodStyle_);
  plist::ReadFlag(options, "filter", filter_);
  plist::ReadNumber(options, "filterType", filterType_);
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
