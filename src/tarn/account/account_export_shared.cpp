#include "tarn/account/account_export_shared.h"

#include "tarn/account/accounts_controller.h"
#include "tarn/account/export_options.h"
#include "tarn/account/register_order.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"

namespace tarn {

std::vector<TARNAccountEntry*> EntriesToExport(const TARNAccount& account,
                                               const TARNExportOptions& options) {
  std::vector<RegisterOrderKey> order;
  if (options.exportFilter) {
    order = SortedInRegisterOrder(options.exportFilter->filterEntries(account.GetEntries()));
  } else {
    order = SortedInRegisterOrder(account.GetEntries());
  }
  std::vector<TARNAccountEntry*> entries;
  entries.reserve(order.size());
  for (const RegisterOrderKey& key : order) entries.push_back(key.entry);
  return entries;
}

const ExportCategoryNames::Names& ExportCategoryNames::names(std::int32_t number) {
  auto [it, added] = names_.try_emplace(number);
  if (added) {
    TARNAccountsController* controller = account_.accountsController();
    if (const auto category = controller ? controller->categoryWithNumber(number) : nullptr) {
      it->second.full = category->fullName();
      it->second.own = category->name();
    }
  }
  return it->second;
}

const std::string& ExportTypeNames::name(std::int32_t number) {
  auto [it, added] = names_.try_emplace(number);
  if (added) {
    if (const auto type = account_.accountEntryTypeForNumber(number)) it->second = type->GetName();
  }
  return it->second;
}

}  // namespace tarn
