#include <gtest/gtest.h>

#include <cstdio>
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

using testing::CapturedLog;
using testing::MakeEntry;
using testing::PinnedClock;

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
  for (std::size_t i = 1; i < account.types().size(); ++i) {
    EXPECT_LE(account.types()[i - 1]->NameIsGreaterThan(*account.types()[i]), 0);
  }
  EXPECT_EQ(account.accountEntryTypeForNumber(12)->GetName(), "Transfer");
  EXPECT_TRUE(account.accountEntryTypeForNumber(12)->GetIsDeposit());

  // Twelve summaries sorted by name, " Custom..." first and selected.
  ASSERT_EQ(account.accountSummaries().size(), 12u);
  EXPECT_EQ(account.selectedAccountSummary(), account.accountSummaries().front());
  EXPECT_EQ(account.accountSummaries()[0]->name(), " Custom...");
  const auto& expenses = account.accountSummaries()[4];
  EXPECT_EQ(expenses->name(), "Expenses, Month To Date");
  EXPECT_FALSE(expenses->showDeposits());
  EXPECT_EQ(account.accountSummaries()[10]->name(), "Tax-Deductible, Last Year");
  EXPECT_EQ(account.accountSummaries()[10]->dateRangeStyle(), 7);

  // Two smart folders: during this year and during last year.
  ASSERT_EQ(account.smartFolders().size(), 2u);
  const char* names[] = {"This Year", "Last Year"};
  for (int i = 0; i < 2; ++i) {
    const auto& smart = *account.smartFolders()[i];
    EXPECT_EQ(smart.name(), names[i]);
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
    TARNAccount first;
    TARNAccount second;
    EXPECT_FALSE(first.icon().has_value());
    EXPECT_FALSE(second.highResolutionIcon().has_value());
    // One line per missing image, not one per account.
    EXPECT_EQ(log.lines().size(), 2u);
    const plist::Value saved = first.asDictionary();
    EXPECT_EQ(saved.find("icon"), nullptr);
    EXPECT_EQ(saved.find("highResolutionIcon"), nullptr);
  }
  SetResourceDirectory(std::nullopt);
  EXPECT_TRUE(TARNAccount().icon().has_value());
}

// An account that uses every part of the format.
std::shared_ptr<TARNAccount> RichAccount(TARNAccountsController* controller) {
  auto account = std::make_shared<TARNAccount>();
  account->setAccountsController(controller);
  account->SetName("Household checking");
  account->SetNumber(4);
  account->setIcon(TARNAccount::Image{'I', 'I', '*', 0, 9, 9});
  account->setCurrency(
      PFCurrency::initWithCode("EUR", "Euro", "€", false, ".", ",", 1.08, 20240501));
  account->SetStartingCheckNumber(1001);
  account->SetStartingBalance(1250.75);
  account->setStatementBalance(980.5);
  account->SetPassword("s3cret");

  auto check = MakeEntry(1, 20240101, -45.5, "Groceries");
  check->SetIsCheck(true);
  check->SetCheckNumber(1001);
  check->SetType(TARNAccountEntryType::kTypeCheck);
  check->SetToFrom("Market");
  check->SetNotes("weekly");
  check->SetCleared(1);
  account->AddEntry(check);
  auto split = MakeEntry(2, 20240203, -120.0, "Split bill");
  split->addSplitLineItemWithCategory(3, "food", "Shop", -70.0);
  split->addSplitLineItemWithCategory(4, "fuel", "Shop", -50.0);
  split->SetTaxDeductible(true);
  account->AddEntry(split);
  auto transfer = MakeEntry(3, 20240310, 300.0, "From savings");
  transfer->SetIsLinked(true);
  transfer->SetLinkedAccount(7);
  transfer->SetLinkedEntry(55);
  transfer->SetLinkedExchangedAmount(280.0);
  account->AddEntry(transfer);
  auto voided = MakeEntry(4, 20240311, -9.99, "Void");
  voided->SetVoid(true);
  account->AddEntry(voided);
  account->SetNumberCount(6);

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
  account->SetSchedules({schedule});

  TARNAccountEntryType retired;
  retired.SetName("Telegraph");
  retired.SetNumber(40);
  account->inactiveTypes().push_back(
      TARNAccountEntryType::initWithDictionary(retired.asDictionary()));
  account->setDefaultDebitType(account->accountEntryTypeForNumber(4));
  account->setDefaultDepositType(account->accountEntryTypeForNumber(10));
  account->SetPreference_Descriptions_Style(2);
  account->SetPreference_ToFrom_SomeSelection(20);
  account->SetPreferredDebitDescriptions(TARNAccount::Strings{"Rent", "Groceries"});
  account->SetPreferredFroms(TARNAccount::Strings{});

  auto summary = std::make_shared<TARNAccountSummary>();
  summary->setName("Fuel");
  summary->setFilter(true);
  summary->setFilterType(2);
  summary->setFilterData(plist::Value("fuel"));
  account->addAccountSummary(summary);
  account->selectAccountSummary(summary);

  account->setEntryFilterType(kViewSearchToFrom);
  account->setEntryFilterData(plist::Value("Market"));
  account->setEntryResolvedFilterType(kViewResolvedOnly);
  account->setEntryDateFilterType(kViewDateCustom);
  account->setEntryDateFilterStartDate(20240101);
  account->setEntryDateFilterEndDate(20240131);
  account->setReconcileTaxDeductibleFilterType(kViewNotTaxDeductible);
  account->setReconcileFilterData(plist::Value(plist::Array{plist::Value(3)}));

  account->SetOFXImportZeroAmountsAsDeposits(false);
  account->SetQIFImportEncoding(12);
  account->SetQIFImportDecimalSeparator(",");
  account->SetQIFImportAllCategories(true);
  account->SetTextImportDataLayout(std::vector<std::int32_t>{2, 0, 5});
  account->SetTextImportSkipFirstRow(true);
  account->SetTextImportZeroAmountsAsDeposits(0);
  account->setTextExport_ExportType(1);
  account->setLastFromAccount(3);
  account->setLastToAccount(1);

  auto smart = std::make_shared<TARNFilter>();
  smart->setName("Big");
  auto group = std::make_shared<TARNFilterConditionGroup>();
  group->addConditionWithCategory(kFieldAmount, 1, kAmountIsLessThan, plist::Value(-100.0));
  smart->addConditionGroup(group);
  account->addSmartFolder(smart);

  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setName("2023");
  account->addFolder(folder);
  account->setFolder(folder);
  account->AddEntry(MakeEntry(5, 20231201, -12.0, "Old"));
  account->AddEntry(MakeEntry(6, 20231202, 30.0, "Older"));
  account->setFolder(nullptr);
  return account;
}

TEST(AccountRoundTrip, SavedDictionaryLoadsBackToTheSameDictionary) {
  PinnedClock clock;
  InMemoryAccountsController controller(
      PFCurrency::initWithCode("USD", "US Dollar", "$", true, ",", ".", 1.0, PinnedClock::kToday));
  // A default account, with and without a controller.
  const plist::Value plain = TARNAccount().asDictionary();
  EXPECT_EQ(TARNAccount::initWithDictionary(plain, nullptr)->asDictionary(), plain);
  EXPECT_EQ(TARNAccount::initWithDictionary(plain, &controller)->asDictionary(), plain);

  // The stored US dollar was not among the host's currencies: it joined them.
  ASSERT_EQ(controller.currencies().size(), 1u);
  EXPECT_EQ(controller.currencies()[0]->code(), "USD");

  auto rich = RichAccount(&controller);
  const plist::Value saved = rich->asDictionary();
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
  EXPECT_EQ(reloaded->defaultDebitType()->GetNumber(), 4);
  EXPECT_EQ(reloaded->smartFolders().size(), 3u);
  EXPECT_EQ(reloaded->currency()->code(), "EUR");
  EXPECT_EQ(controller.currencies().size(), 2u);  // the euro joined the host's list

  // The same through both file formats.
  for (auto format : {plist::Format::Binary, plist::Format::Xml}) {
    const std::string bytes =
        format == plist::Format::Binary ? plist::ToBinary(saved) : plist::ToXml(saved);
    auto fromFile = TARNAccount::initWithDictionary(plist::Parse(bytes), &controller);
    EXPECT_EQ(fromFile->asDictionary(), saved);
  }
}

}  // namespace
}  // namespace tarn
