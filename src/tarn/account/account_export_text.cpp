// The account as a tab-delimited table: a header row, the starting balance,
// then one row per exported entry with its running balance.

#include <string>
#include <string_view>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/account_export_shared.h"
#include "tarn/account/export_options.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/localized.h"
#include "tarn/platform/user_defaults.h"

namespace tarn {

namespace {

constexpr std::string_view kHeaderRow =
    "Date\tType\tDescription\tTo/From\tCategory\tResolved\tTax-Deductible\tAmount\tKind\tCheck "
    "#\tID\tBalance\n";

std::string_view YesNo(bool yes) {
  return yes ? "Yes" : "No";
}

}  // namespace

std::string TARNAccount::asTabDelimitedStringWithOptions(const TARNExportOptions* options) const {
  const TARNExportOptions defaults;
  const TARNExportOptions& chosen = options ? *options : defaults;
  const std::vector<TARNAccountEntry*> entries = EntriesToExport(*this, chosen);

  std::string out;
  out.reserve(256 + entries.size() * 96);
  ExportDateText dateText(UserDefault("NSShortDateFormatString"));
  out.append(kHeaderRow);

  if (!chosen.exportFilter) {
    const auto first = GetFirstEntry();
    out.append(first ? std::string(dateText(first->GetDate())) : dateText.today());
    out.append("\t\t");
    out.append(Localized("Starting Balance"));
    out.append("\t\t\tYes\t\t");
    AppendAmount(out, startingBalance_);
    out.append("\t\t\t\t");
    AppendAmount(out, startingBalance_);
    out.append("\t\n");
  }

  // Unlike the balances, the running balance of the table counts void
  // entries: it adds up exactly the amounts shown above it.
  double running = startingBalance_;
  ExportTypeNames types(*this);
  ExportCategoryNames categories(*this);
  for (const TARNAccountEntry* entry : entries) {
    const double amount = entry->GetAmount();
    running += amount;
    out.append(dateText(entry->GetDate()));
    out.push_back('\t');
    out.append(types.name(entry->GetType()));
    out.push_back('\t');
    out.append(entry->GetDescription());
    out.push_back('\t');
    out.append(entry->GetToFrom());
    out.push_back('\t');
    out.append(categories.fullName(entry->GetCategory()));
    out.push_back('\t');
    out.append(YesNo(entry->GetCleared() != 0));
    out.push_back('\t');
    out.append(YesNo(entry->GetTaxDeductible()));
    out.push_back('\t');
    AppendAmount(out, amount);
    out.push_back('\t');
    out.append(entry->IsDebit() ? "Debit" : entry->IsDeposit() ? "Deposit" : "");
    out.push_back('\t');
    if (entry->GetCheckNumber() >= 0) AppendInteger(out, entry->GetCheckNumber());
    out.push_back('\t');
    AppendInteger(out, entry->GetNumber());
    out.push_back('\t');
    AppendAmount(out, running);
    out.push_back('\n');
  }
  return out;
}

}  // namespace tarn
