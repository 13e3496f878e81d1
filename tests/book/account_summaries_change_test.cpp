// Saving summary options into an account and taking the change back: what
// a host's undo stack keeps for the summary window's Save and Save as New.

#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <optional>
#include <string>

#include "tarn/account/account.h"
#include "tarn/book/book_changes.h"
#include "tarn/reports/account_summary.h"

namespace tarn {
namespace {

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

TEST(AccountSummariesChangeTest, SavesOverOrAsNewAndRestoresOptionsAndSelection) {
  TARNAccount account;
  auto& list = account.accountSummaries();
  ASSERT_GE(list.size(), 3u);
  account.selectAccountSummaryAtIndex(2);
  const AccountSummaries before = CaptureAccountSummaries(account);
  EXPECT_EQ(before.selected, 2);
  ASSERT_EQ(before.options.size(), list.size());

  // Over the summary at place 1: its options change, its place and the
  // other summaries stay.
  TARNAccountSummary changed = *list[1];
  changed.setSubtotalPeriodStyle(kSummaryPeriodQuarter);
  changed.setFilter(true);
  changed.setFilterData(plist::Value("rent"));
  EXPECT_EQ(SaveAccountSummary(account, changed.optionsAsDictionary(), 1), 1u);
  EXPECT_EQ(list.size(), before.options.size());
  EXPECT_EQ(list[1]->subtotalPeriodStyle(), kSummaryPeriodQuarter);
  EXPECT_EQ(list[1]->filterData(), plist::Value("rent"));
  EXPECT_EQ(list[0]->optionsAsDictionary(), before.options[0]);

  // As new (no place, or a place past the end): appended, and a name the
  // account already has, in any letter case, gets a number.
  TARNAccountSummary copy = *list[1];
  copy.setName(list[1]->name());
  EXPECT_EQ(SaveAccountSummary(account, copy.optionsAsDictionary(), std::nullopt),
            before.options.size());
  EXPECT_EQ(list.back()->name(), list[1]->name() + " 2");
  copy.setName(Upper(list[1]->name()));
  EXPECT_EQ(SaveAccountSummary(account, copy.optionsAsDictionary(), list.size() + 5),
            before.options.size() + 1);
  EXPECT_EQ(list.back()->name(), Upper(list[1]->name()) + " 3");
  copy.setName(std::string("Rent by Quarter"));
  SaveAccountSummary(account, copy.optionsAsDictionary(), std::nullopt);
  EXPECT_EQ(list.back()->name(), "Rent by Quarter");

  // Restoring the state before gives back every summary's options, in
  // order, and the selected one; restoring the state after, the saves.
  const AccountSummaries after = CaptureAccountSummaries(account);
  RestoreAccountSummaries(account, before);
  EXPECT_EQ(CaptureAccountSummaries(account), before);
  EXPECT_EQ(account.selectedAccountSummary(), list[2]);
  RestoreAccountSummaries(account, after);
  EXPECT_EQ(CaptureAccountSummaries(account), after);
  EXPECT_EQ(list.back()->name(), "Rent by Quarter");
}

}  // namespace
}  // namespace tarn
