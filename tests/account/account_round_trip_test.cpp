#include <gtest/gtest.h>

#include <string>

#include "account_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/account/account_resources.h"
#include "tarn/account/in_memory_accounts_controller.h"
#include "tarn/filters/filter.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/encodings.h"
#include "tarn/platform/plist_file.h"
#include "tarn/platform/user_defaults.h"
#include "tarn/reports/account_summary.h"

namespace tarn {
namespace {

using namespace testing;

TEST(AccountDefaults, NewAccount) {
  PinnedClock clock;
  TARNAccount account;
  EXPECT_EQ(account.textExport_Encoding(), static_cast<std::int32_t>(DefaultCStringEncoding()));
  EXPECT_EQ(account.GetQIFImportDecimalSeparator(), UserDefault("NSDecimalSeparator"));
  EXPECT_EQ(account.GetTextImportThousandsSeparator(), UserDefault("NSThousandsSeparator"));
  EXPECT_EQ(account.entryDateFilterStartDate(), PinnedClock::kToday);
  EXPECT_EQ(account.currency()->code(), "USD");
  EXPECT_EQ(account.currency()->lastUpdate(), PinnedClock::kToday);

  // Thirteen types sorted by name, "Transfer" twice (out and in).
  ASSERT_EQ(account.types().size(), 13u);
  for (std::size_t i = 1; i < account.types().size(); ++i)
    EXPECT_LE(account.types()[i - 1]->NameIsGreaterThan(*account.types()[i]), 0);
  EXPECT_EQ(account.accountEntryTypeForNumber(12)->GetName(), "Transfer");
  EXPECT_TRUE(account.accountEntryTypeForNumber(12)->GetIsDeposit());

  // Twelve summaries sorted by name, " Custom..." first and selected.
  const auto& summaries = account.accountSummaries();
  ASSERT_EQ(summaries.size(), 12u);
  EXPECT_EQ(account.selectedAccountSummary(), summaries.front());
  EXPECT_EQ(summaries[0]->name(), " Custom...");
  EXPECT_EQ(summaries[4]->name(), "Expenses, Month To Date");
  EXPECT_FALSE(summaries[4]->showDeposits());
  EXPECT_EQ(summaries[10]->name(), "Tax-Deductible, Last Year");
  EXPECT_EQ(summaries[10]->dateRangeStyle(), 7);

  // Two smart folders: during this year and during last year.
  ASSERT_EQ(account.smartFolders().size(), 2u);
  for (int i = 0; i < 2; ++i) {
    const auto& smart = *account.smartFolders()[i];
    EXPECT_EQ(smart.name(), i ? "Last Year" : "This Year");
    ASSERT_EQ(smart.conditionGroups().size(), 1u);
    ASSERT_EQ(smart.conditionGroups()[0]->conditions().size(), 1u);
    const auto& condition = *smart.conditionGroups()[0]->conditions()[0];
    EXPECT_EQ(std::vector<int>({condition.category(), condition.logic(), condition.qualifier()}),
              std::vector<int>({1, 1, 63 + i}));
    EXPECT_EQ(condition.data(), plist::Value(plist::Array{}));
  }
  // The default icons are the shipped TIFF images.
  ASSERT_TRUE(account.icon().has_value() && account.highResolutionIcon().has_value());
  EXPECT_EQ(std::string(account.icon()->begin(), account.icon()->begin() + 4),
            std::string("II*\0", 4));
  EXPECT_GT(account.highResolutionIcon()->size(), account.icon()->size());
}

TEST(AccountDefaults, MissingIconResourcesLeaveNoIcon) {
  PinnedClock clock;
  SetResourceDirectory("/nonexistent/tarn-resources");
  {
    CapturedLog log;
    TARNAccount first, second;
    EXPECT_FALSE(first.icon().has_value());
    EXPECT_FALSE(second.highResolutionIcon().has_value());
    EXPECT_EQ(log.lines().size(), 2u);  // one line per missing image, not per account
    EXPECT_EQ(first.asDictionary().find("icon"), nullptr);
    EXPECT_EQ(first.asDictionary().find("highResolutionIcon"), nullptr);
  }
  SetResourceDirectory(std::nullopt);
  EXPECT_TRUE(TARNAccount().icon().has_value());
}

// An account that uses every list and record of the format (the single
// numbers and texts are changed one by one below).
std::shared_ptr<TARNAccount> RichAccount(TARNAccountsController* controller) {
  auto account = std::make_shared<TARNAccount>();
  TARNAccount& a = *account;
  a.setAccountsController(controller);
  a.setIcon(TARNAccount::Image{'I', 'I', '*', 0, 9, 9});
  a.setCurrency(PFCurrency::initWithCode("EUR", "Euro", "€", false, ".", ",", 1.08, 20240501));

  auto check = AddCheck(a, 1, 1001, 20240101, -45.5);
  check->SetDescription("Groceries");
  check->SetType(TARNAccountEntryType::kTypeCheck);
  check->SetToFrom("Market");
  check->SetNotes("weekly");
  check->SetCleared(1);
  auto split = Add(a, 2, 20240203, -120.0, "Split bill");
  split->addSplitLineItemWithCategory(3, "food", "Shop", -70.0);
  split->addSplitLineItemWithCategory(4, "fuel", "Shop", -50.0);
  split->SetTaxDeductible(true);
  auto transfer = Add(a, 3, 20240310, 300.0, "From savings");
  transfer->SetIsLinked(true);
  transfer->SetLinkedAccount(7);
  transfer->SetLinkedEntry(55);
  transfer->SetLinkedExchangedAmount(280.0);
  Add(a, 4, 20240311, -9.99, "Void")->SetVoid(true);

  auto schedule = std::make_shared<TARNAccountSchedule>();
  schedule->SetNumber(1);
  schedule->SetDate(20240105);
  schedule->SetAmount(-800.0);
  schedule->SetIsDebit(true);
  schedule->SetDescription("Rent");
  schedule->SetRepeatIntervalType(3);
  schedule->SetRepeatUntilType(kRepeatUntilDate);
  schedule->SetRepeatUntil(20251231);
  schedule->AddCommittedDate(20240105);
  a.SetSchedules({schedule});

  TARNAccountEntryType retired;
  retired.SetName("Telegraph");
  retired.SetNumber(40);
  a.inactiveTypes().push_back(TARNAccountEntryType::initWithDictionary(retired.asDictionary()));
  a.setDefaultDebitType(a.accountEntryTypeForNumber(4));
  a.setDefaultDepositType(a.accountEntryTypeForNumber(10));
  a.SetPreferredDebitDescriptions(TARNAccount::Strings{"Rent", "Groceries"});
  a.SetPreferredFroms(TARNAccount::Strings{});

  auto summary = std::make_shared<TARNAccountSummary>();
  summary->setName("Fuel");
  a.addAccountSummary(summary);
  a.selectAccountSummary(summary);

  a.setReconcileFilterData(plist::Value(plist::Array{plist::Value(3)}));

  a.SetTextImportDataLayout(std::vector<std::int32_t>{2, 0, 5});

  auto smart = std::make_shared<TARNFilter>();
  smart->setName("Big");
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldAmount, 1, kAmountIsLessThan, plist::Value(-100.0));
  smart->addConditionGroup(group);
  a.addSmartFolder(smart);

  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setName("2023");
  a.addFolder(folder);
  a.setFolder(folder);
  Add(a, 5, 20231201, -12.0, "Old");
  Add(a, 6, 20231202, 30.0, "Older");
  a.setFolder(nullptr);
  return account;
}

TEST(AccountRoundTrip, SavedDictionaryLoadsBackToTheSameDictionary) {
  PinnedClock clock;
  InMemoryAccountsController controller(
      PFCurrency::initWithCode("USD", "US Dollar", "$", true, ",", ".", 1.0, PinnedClock::kToday));
  const plist::Value plain = TARNAccount().asDictionary();
  EXPECT_EQ(TARNAccount::initWithDictionary(plain, nullptr)->asDictionary(), plain);
  EXPECT_EQ(TARNAccount::initWithDictionary(plain, &controller)->asDictionary(), plain);
  // The stored US dollar was not among the host's currencies: it joined them.
  ASSERT_EQ(controller.currencies().size(), 1u);
  EXPECT_EQ(controller.currencies()[0]->code(), "USD");

  const plist::Value saved = RichAccount(&controller)->asDictionary();
  CapturedLog log;
  auto reloaded = TARNAccount::initWithDictionary(saved, &controller);
  EXPECT_EQ(reloaded->asDictionary(), saved);
  ASSERT_EQ(reloaded->GetEntries().size(), 4u);
  EXPECT_EQ(reloaded->GetEntries()[1]->splitLineItems().size(), 2u);
  EXPECT_EQ(reloaded->GetEntries()[0]->GetAccount(), reloaded.get());
  ASSERT_EQ(reloaded->folders().size(), 1u);
  EXPECT_EQ(reloaded->folders()[0]->entries().size(), 2u);
  EXPECT_EQ(reloaded->folders()[0]->entries()[0]->GetAccount(), reloaded.get());
  EXPECT_EQ(reloaded->GetSchedules()[0]->GetAccount(), reloaded.get());
  EXPECT_EQ(reloaded->selectedAccountSummary()->name(), "Fuel");
  EXPECT_EQ(reloaded->smartFolders().size(), 3u);
  EXPECT_EQ(reloaded->currency()->code(), "EUR");
  EXPECT_EQ(controller.currencies().size(), 2u);  // the euro joined the host's list
  for (const std::string& bytes : {plist::ToBinary(saved), plist::ToXml(saved)})
    EXPECT_EQ(TARNAccount::initWithDictionary(plist::Parse(bytes), &controller)->asDictionary(),
              saved);
}

// The same kind of value as `value`, but another one.
plist::Value Changed(const plist::Value& value) {
  if (value.isBoolean()) return !value.boolValue();
  if (value.isReal()) return value.doubleValue() + 1.5;
  if (value.isInteger()) return value.longValue() + 1;
  return value.stringValue() + "x";
}

TEST(AccountRoundTrip, EveryNumberAndTextOfAnAccountOrSummaryKeepsAChangedValue) {
  PinnedClock clock;
  const plist::Value account = TARNAccount().asDictionary();
  const plist::Value summary = TARNAccountSummary().optionsAsDictionary();
  int changed = 0;
  for (const plist::Value* defaults : {&account, &summary}) {
    for (const auto& [key, value] : defaults->dictionaryValue()) {
      if (!value.isNumber() && !value.isString()) continue;
      ++changed;
      plist::Value dictionary = *defaults;
      dictionary.set(key, Changed(value));
      CapturedLog quiet;
      EXPECT_EQ(defaults == &account
                    ? TARNAccount::initWithDictionary(dictionary, nullptr)->asDictionary()
                    : TARNAccountSummary::initWithOptionsDictionary(dictionary, {})
                          ->optionsAsDictionary(),
                dictionary)
          << key;
    }
  }
  EXPECT_EQ(changed, 75);
}

TEST(AccountSummaryOptions, KindsMissingKeysAndNames) {
  PinnedClock clock;
  TARNAccountSummary summary;
  EXPECT_EQ(summary.startDate(), PinnedClock::kToday);
  const plist::Value options = summary.optionsAsDictionary();
  EXPECT_EQ(options.dictionaryValue().size(), 19u);
  EXPECT_TRUE(options.find("showDebits")->isBoolean());
  EXPECT_TRUE(options.find("showChecks")->isInteger());
  // Missing keys and keys of another kind keep what the summary had.
  summary.setName("Fuel, this year");
  summary.setShowChecks(1);
  summary.setOptionsFromDictionary(plist::Value(plist::Dictionary{
      {"name", plist::Value(4)}, {"showChecks", plist::Value("0")}, {"filterType", 10}}));
  summary.setName(std::nullopt);
  EXPECT_EQ(summary.name(), "Fuel, this year");
  EXPECT_EQ(summary.showChecks(), 1);
  EXPECT_EQ(summary.filterType(), 10);

  TARNAccountSummary other;
  other.setName("FUEL, THIS YEAR");
  EXPECT_EQ(summary.NameIsGreaterThan(other), 0);  // case does not count
  other.setName("expenses");
  EXPECT_EQ(summary.NameIsGreaterThan(other), 1);
  EXPECT_EQ(summary.NameIsGreaterThan_Reversed(other), -1);
}

}  // namespace
}  // namespace tarn
