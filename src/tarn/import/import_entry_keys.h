// The keys of an import entry dictionary, the form in which every importer
// hands an entry to the host. Importers append them in this (ascending)
// order, so each dictionary is built without comparisons.
#pragma once

#include <string_view>

namespace tarn {

inline constexpr std::string_view kImportAmountKey = "amount";
inline constexpr std::string_view kImportCategoryKey = "category";
inline constexpr std::string_view kImportClearedKey = "cleared";
inline constexpr std::string_view kImportDateKey = "date";
inline constexpr std::string_view kImportDescriptionKey = "description";
inline constexpr std::string_view kImportIsDepositKey = "isDeposit";
inline constexpr std::string_view kImportNegativeAmountKey = "negativeAmount";
inline constexpr std::string_view kImportNumberKey = "number";
inline constexpr std::string_view kImportPositiveAmountKey = "positiveAmount";
inline constexpr std::string_view kImportSplitsKey = "splits";
inline constexpr std::string_view kImportTaxDeductibleKey = "taxDeductible";
inline constexpr std::string_view kImportToFromKey = "toFrom";
inline constexpr std::string_view kImportTypeKey = "type";

}  // namespace tarn
