#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "account/ledger_test_support.h"
#include "tarn/account/account.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/entry_type.h"

namespace tarn {
namespace {

using testing_support::Add;
using testing_support::Kind;
using testing_support::SignedInAccount;
using Strings = TARNAccount::Strings;

TEST(LedgerSuggestions, AllListsAreDistinctCaseInsensitivelyAndSorted) {
  auto account = SignedInAccount();
  Add(*account, {.number = 1, .description = "groceries", .toFrom = "Corner Shop"});
  Add(*account, {.number = 2, .description = "Rent", .toFrom = "landlord"});
  Add(*account, {.number = 3, .description = "GROCERIES", .toFrom = ""});
  Add(*account, {.number = 4, .description = "", .toFrom = "corner shop"});
  Add(*account, {.number = 5, .description = "Straße", .toFrom = "Äpfel"});
  Add(*account, {.number = 6, .description = "STRASSE", .toFrom = "äPFEL"});
  Add(*account,
      {.number = 7, .kind = Kind::Deposit, .description = "Salary", .toFrom = "Employer"});
  Add(*account, {.number = 8, .kind = Kind::Deposit, .description = "rent", .toFrom = "Tenant"});

  // The first spelling met is the one kept; empty texts never appear.
  EXPECT_EQ(account->DebitDescriptions_All(), (Strings{"groceries", "Rent", "Straße"}));
  EXPECT_EQ(account->Tos_All(), (Strings{"Corner Shop", "landlord", "Äpfel"}));
  EXPECT_EQ(account->DepositDescriptions_All(), (Strings{"rent", "Salary"}));
  EXPECT_EQ(account->Froms_All(), (Strings{"Employer", "Tenant"}));
}

TEST(LedgerSuggestions, SomeListsAreNewestFirstAndStopOneAfterTheCount) {
  auto account = SignedInAccount();
  // Entered out of list order: entry numbers say which is newest.
  Add(*account, {.number = 3, .description = "three"});
  Add(*account, {.number = 1, .description = "one"});
  Add(*account, {.number = 5, .description = "five"});
  Add(*account, {.number = 4, .description = "FIVE"});  // a repeat does not count
  Add(*account, {.number = 2, .description = "two"});
  Add(*account, {.number = 6, .description = "six"});

  EXPECT_EQ(account->DebitDescriptions_Some(2), (Strings{"six", "five", "three"}));
  EXPECT_EQ(account->DebitDescriptions_Some(0), (Strings{"six"}));
  EXPECT_EQ(account->DebitDescriptions_Some(4), (Strings{"six", "five", "three", "two", "one"}));
  EXPECT_EQ(account->DebitDescriptions_Some(50), (Strings{"six", "five", "three", "two", "one"}));
  EXPECT_TRUE(account->DepositDescriptions_Some(50).empty());

  // Fifty-one out of sixty distinct payees with the default count.
  auto many = SignedInAccount();
  for (int i = 0; i < 60; ++i) {
    Add(*many, {.number = i, .kind = Kind::Deposit, .toFrom = "payer " + std::to_string(i)});
  }
  const Strings froms = many->Froms_Some(50);
  ASSERT_EQ(froms.size(), 51u);
  EXPECT_EQ(froms.front(), "payer 59");
  EXPECT_EQ(froms.back(), "payer 9");
  EXPECT_EQ(many->GetPreferredFroms(), froms);  // style 1 with 50 by default
}

TEST(LedgerSuggestions, NothingWhileSignedOut) {
  auto account = std::make_shared<TARNAccount>();
  account->SetPassword(std::string("pw"));
  Add(*account, {.number = 1, .description = "Rent", .toFrom = "Landlord"});
  Add(*account, {.number = 2, .kind = Kind::Deposit, .description = "Pay", .toFrom = "Boss"});
  account->SetPreferredTos(Strings{"Mine"});
  EXPECT_TRUE(account->DebitDescriptions_All().empty());
  EXPECT_TRUE(account->DepositDescriptions_All().empty());
  EXPECT_TRUE(account->Tos_All().empty());
  EXPECT_TRUE(account->Froms_All().empty());
  const Strings some = account->Tos_Some(20);
  EXPECT_TRUE(some.empty());
  EXPECT_GE(some.capacity(), 20u);
  EXPECT_TRUE(account->Froms_Some(5).empty());
  // The user's own list is not hidden.
  EXPECT_EQ(account->Tos_Specific(), Strings{"Mine"});

  account->Authenticate(std::string("pw"));
  EXPECT_EQ(account->Tos_All(), Strings{"Landlord"});
  EXPECT_EQ(account->Froms_Some(5), Strings{"Boss"});
}

TEST(LedgerSuggestions, PreferredListsFollowTheStyle) {
  auto account = SignedInAccount();
  Add(*account, {.number = 1, .description = "b", .toFrom = "y"});
  Add(*account, {.number = 2, .description = "a", .toFrom = "x"});
  Add(*account, {.number = 3, .description = "c", .toFrom = "z"});
  account->SetPreferredDebitDescriptions(Strings{"mine"});
  account->SetPreference_Descriptions_SomeSelection(1);

  account->SetPreference_Descriptions_Style(0);
  EXPECT_EQ(account->GetPreferredDebitDescriptions(), (Strings{"a", "b", "c"}));
  account->SetPreference_Descriptions_Style(1);
  EXPECT_EQ(account->GetPreferredDebitDescriptions(), (Strings{"c", "a"}));
  account->SetPreference_Descriptions_Style(2);
  EXPECT_EQ(account->GetPreferredDebitDescriptions(), Strings{"mine"});
  EXPECT_EQ(account->GetPreferredDepositDescriptions(), std::nullopt);  // none stored
  account->SetPreference_Descriptions_Style(3);
  EXPECT_EQ(account->GetPreferredDebitDescriptions(), std::nullopt);

  // The party lists have their own style.
  account->SetPreference_ToFrom_Style(0);
  EXPECT_EQ(account->GetPreferredTos(), (Strings{"x", "y", "z"}));
  EXPECT_EQ(account->GetPreferredFroms(), Strings{});
}

std::shared_ptr<TARNAccountEntryType> MakeType(const std::string& name, std::int32_t number,
                                               bool deposit) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetName(name);
  type->SetNumber(number);
  type->SetIsDeposit(deposit);
  return type;
}

TEST(LedgerSuggestions, ImportsFromAnotherAccount) {
  auto mine = SignedInAccount();
  auto theirs = std::make_shared<TARNAccount>();
  theirs->SetPassword(std::string("pw"));
  mine->types() = {MakeType("ATM", 0, false), MakeType("Deposit", 4, true)};
  theirs->types() = {MakeType("atm", 0, false), MakeType("Wire", 1, false),
                     MakeType("Deposit", 2, true), MakeType("ATM", 3, true)};
  mine->SetPreferredDebitDescriptions(Strings{"Rent"});
  theirs->SetPreferredDebitDescriptions(Strings{"rent", "Food", "food"});
  theirs->SetPreferredDepositDescriptions(Strings{"Pay"});
  theirs->SetPreferredTos(Strings{"Shop"});
  mine->SetPreferredFroms(Strings{"Boss"});

  // Nothing from an account that is signed out (or from none).
  mine->importTypesFromAccount(theirs.get());
  mine->importDescriptionsFromAccount(theirs.get());
  mine->importToFromsFromAccount(nullptr);
  EXPECT_EQ(mine->types().size(), 2u);
  EXPECT_EQ(mine->preferredDebitDescriptions(), Strings{"Rent"});

  theirs->Authenticate(std::string("pw"));
  mine->importTypesFromAccount(theirs.get());
  // "atm" matches "ATM" of the same direction; a deposit "ATM" is new here.
  ASSERT_EQ(mine->types().size(), 4u);
  EXPECT_EQ(mine->types()[0]->GetName(), "ATM");
  EXPECT_FALSE(mine->types()[0]->GetIsDeposit());
  EXPECT_EQ(mine->types()[1]->GetName(), "ATM");
  EXPECT_TRUE(mine->types()[1]->GetIsDeposit());
  EXPECT_EQ(mine->types()[1]->GetNumber(), 6);  // after Wire took 5
  EXPECT_EQ(mine->types()[2]->GetName(), "Deposit");
  EXPECT_EQ(mine->types()[3]->GetName(), "Wire");
  EXPECT_EQ(mine->types()[3]->GetNumber(), 5);
  EXPECT_NE(mine->types()[3], theirs->types()[1]);  // a copy, not the other's record

  mine->importDescriptionsFromAccount(theirs.get());
  mine->importToFromsFromAccount(theirs.get());
  EXPECT_EQ(mine->preferredDebitDescriptions(), (Strings{"Rent", "Food"}));
  EXPECT_EQ(mine->preferredDepositDescriptions(), Strings{"Pay"});
  EXPECT_EQ(mine->preferredTos(), Strings{"Shop"});
  EXPECT_EQ(mine->preferredFroms(), Strings{"Boss"});
}

}  // namespace
}  // namespace tarn
