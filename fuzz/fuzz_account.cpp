// An account loaded from an arbitrary property list, as a host loads one:
// upgrade, load with an accounts controller, then the operations a window
// runs at once (balances, running balances, check numbering, the register and
// reconcile views with and without a folder or smart folder) and saving.
// Reading may fail only with tarn::FileError; loading never fails; saving
// gives a dictionary that the binary writer stores, and a second load and
// save of it gives the same dictionary again.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fuzz_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/account_upgrade.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/error.h"
#include "tarn/platform/log.h"
#include "tarn/platform/plist_file.h"

using tarn::FileError;
using tarn::TARNAccount;
using tarn::fuzz::Require;
namespace plist = tarn::plist;

namespace {

// Old preferences for the version-2 step: the two default types that old
// files used most, and no inactive types (which that step logs).
plist::Value OldPreferences() {
  plist::Array types;
  for (const auto& type : TARNAccount::defaultTypes()) {
    if (types.size() < 2) types.push_back(type->asDictionary());
  }
  return plist::Dictionary{{"types", std::move(types)}};
}

// A controller with one shared currency and a small category tree, so that
// currency and category look-ups find something. Its currency is the one a
// new account makes: an account saved with its own default currency loads
// the controller's of the same code, and must save the same again.
std::unique_ptr<tarn::InMemoryAccountsController> MakeController() {
  static const plist::Value kDefaultCurrency = TARNAccount().currency()->asDictionary();
  auto controller = std::make_unique<tarn::InMemoryAccountsController>(
      tarn::PFCurrency::initWithDictionary(kDefaultCurrency));
  controller->currencies().push_back(controller->currency());
  auto food = tarn::TARNAccountEntryCategory::initWithDictionary(plist::Dictionary{
      {"name", "Food"},
      {"number", 1},
      {"children", plist::Array{plist::Dictionary{{"name", "Dining"}, {"number", 2}}}}});
  controller->categories().push_back(food);
  return controller;
}

void RunViews(TARNAccount& account) {
  const auto entries = account.entryFilteredEntries();
  const auto reconciled = account.reconcileFilteredEntries();
  Require(entries.size() <= account.GetAllEntries().size(), "register view grew");
  Require(reconciled.size() <= account.GetAllEntries().size(), "reconcile view grew");
}

std::string Difference(const plist::Value& a, const plist::Value& b) {
  std::string where;
  if (tarn::fuzz::SameValue(a, b, tarn::fuzz::DateRule::Exact, where)) return {};
  return where;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  tarn::SetLogSink([](std::string_view) {});
  tarn::CalendarDate::overrideNow(tarn::CalendarDate(2024, 6, 15, 10, 30, 0));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  plist::Value dictionary;
  try {
    dictionary = plist::Parse(std::string_view(reinterpret_cast<const char*>(data), size), "input");
  } catch (const FileError&) {
    return 0;
  }

  // The old preferences file is missing for odd-sized inputs, present otherwise.
  const bool preferencesPresent = size % 2 == 0;
  tarn::AccountDictionaryUpgrade::SetPreferencesLoader([preferencesPresent]() -> plist::Value {
    if (!preferencesPresent) throw FileError("Pennyfold Preferences", "cannot open");
    return OldPreferences();
  });
  if (TARNAccount::UpdateAccountDictionary(dictionary) == nullptr) {
    Require(!dictionary.isDictionary(), "upgrade refused a dictionary");
  }

  auto controller = MakeController();
  auto account = TARNAccount::initWithDictionary(dictionary, controller.get());
  Require(account != nullptr, "loading failed");
  account->Authenticate(account->GetPassword());

  account->GetBalance();
  account->GetTodaysBalance();
  account->GetResolvedBalance();
  account->GetUnresolvedBalance();
  account->GetRunningBalanceBeforeDate(20240101);
  account->GetRunningBalanceThroughDate(20240615);
  account->CacheRunningBalances();
  const auto all = account->GetAllEntries();
  if (!all.empty()) {
    account->GetRunningBalanceAtEntry(all.front().get());
    account->NextAvailableCheckNumberAfterEntry(all.back().get());
  }
  account->NextAvailableCheckNumber();

  RunViews(*account);
  if (!account->smartFolders().empty()) {
    account->setSmartFolder(account->smartFolders().back());
    // A smart folder's "any" group that runs out of conditions fails as an
    // index out of range: the one failure the filters let escape, on purpose.
    try {
      RunViews(*account);
    } catch (const std::out_of_range&) {
    }
  }
  if (!account->folders().empty()) {
    account->setFolder(account->folders().front());
    RunViews(*account);
  }

  const plist::Value saved = account->asDictionary();
  plist::ToBinary(saved);

  // Saving is stable: what was saved loads and saves to the same dictionary.
  auto again = TARNAccount::initWithDictionary(saved, controller.get());
  const std::string where = Difference(saved, again->asDictionary());
  if (!where.empty()) tarn::fuzz::Fail("a second load and save differs at " + where);
  return 0;
}
