#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "account/ledger_test_support.h"
#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/model/account_entry.h"

namespace tarn {
namespace {

using testing_support::Add;
using testing_support::Check;
using testing_support::Kind;
using testing_support::MakeEntry;
using testing_support::SignedInAccount;

std::vector<std::int32_t> Numbers(const TARNAccount::Entries& entries) {
  std::vector<std::int32_t> numbers;
  for (const auto& entry : entries) numbers.push_back(entry->GetNumber());
  return numbers;
}

TEST(LedgerSorting, ColumnsWithTiesBrokenByEntryNumber) {
  auto account = SignedInAccount();
  Add(*account, {.number = 4, .date = 20240102, .amount = -5.0, .description = "rent"});
  Add(*account, {.number = 2, .date = 20240101, .amount = -5.0, .description = "Rent"});
  Add(*account, {.number = 9,
                 .date = 20240101,
                 .amount = 7.0,
                 .kind = Kind::Deposit,
                 .description = "apples",
                 .cleared = true});
  Check(*account, 1, 300, 20240102, -1.0);
  Check(*account, 3, 200, 20240102, -2.0);

  using V = std::vector<std::int32_t>;
  account->SortBy(1, false);  // date, then checks by number, then entry number
  EXPECT_EQ(Numbers(account->GetEntries()), (V{2, 9, 3, 1, 4}));
  account->SortBy(1, true);
  EXPECT_EQ(Numbers(account->GetEntries()), (V{4, 1, 3, 9, 2}));
  account->SortBy(3, false);  // "rent" and "Rent" tie: entry number decides
  EXPECT_EQ(Numbers(account->GetEntries()), (V{1, 3, 9, 2, 4}));
  account->SortBy(3, true);
  EXPECT_EQ(Numbers(account->GetEntries()), (V{4, 2, 9, 3, 1}));
  account->SortBy(4, false);  // the two -5.00 tie
  EXPECT_EQ(Numbers(account->GetEntries()), (V{2, 4, 3, 1, 9}));
  account->SortBy(0, false);  // checks first
  EXPECT_EQ(Numbers(account->GetEntries()), (V{3, 1, 2, 4, 9}));
  account->SortBy(5, true);  // resolved first
  EXPECT_EQ(Numbers(account->GetEntries()).front(), 9);
  account->SortBy(99, true);  // no such column: entry number only
  EXPECT_EQ(Numbers(account->GetEntries()), (V{1, 2, 3, 4, 9}));

  // With a folder selected, the folder is sorted and the register kept.
  auto folder = std::make_shared<TARNAccountFolder>();
  folder->setEntries(
      {MakeEntry({.number = 8, .date = 20230101}), MakeEntry({.number = 6, .date = 20220101})});
  account->addFolder(folder);
  account->setFolder(folder);
  account->SortBy(1, false);
  EXPECT_EQ(Numbers(folder->entries()), (V{6, 8}));
  EXPECT_EQ(Numbers(account->GetEntries()), (V{1, 2, 3, 4, 9}));
}

TEST(LedgerSorting, ColumnsAgreeWithTheEntryComparatorsOnARandomRegister) {
  auto account = SignedInAccount();
  std::mt19937 random(11);
  const char* const texts[] = {"apple", "Apple", "Äpfel", "äPFEL", "b", "", "Straße", "STRASSE"};
  for (std::int32_t number = 0; number < 300; ++number) {
    const bool check = random() % 2 == 0;
    // Some entry numbers repeat, as in a damaged file: list order breaks the tie.
    const std::int32_t entryNumber = number % 50 == 7 ? 7 : number;
    Add(*account, {.number = entryNumber,
                   .date = 20240101 + static_cast<DateNumber>(random() % 4),
                   .kind = check ? Kind::Check : Kind::Debit,
                   .checkNumber = static_cast<std::int32_t>(random() % 50) - (check ? 0 : 60),
                   .description = texts[random() % 8],
                   .toFrom = texts[random() % 8]});
  }
  using Comparator = int (TARNAccountEntry::*)(const TARNAccountEntry&) const;
  const std::pair<int, Comparator> columns[] = {
      {0, &TARNAccountEntry::CheckNumberIsGreaterThan},
      {1, &TARNAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan},
      {3, &TARNAccountEntry::DescriptionIsGreaterThan},
      {6, &TARNAccountEntry::ToFromIsGreaterThan},
      {4, &TARNAccountEntry::AmountIsGreaterThan}};
  for (const auto& [column, compare] : columns) {
    for (const bool descending : {false, true}) {
      // What the comparators give: by entry number, then stably by the column.
      TARNAccount::Entries expected = account->GetEntries();
      std::stable_sort(expected.begin(), expected.end(),
                       [](const auto& a, const auto& b) { return a->NumberIsGreaterThan(*b) < 0; });
      std::stable_sort(expected.begin(), expected.end(), [&](const auto& a, const auto& b) {
        const int order = ((*a).*compare)(*b);
        return descending ? order > 0 : order < 0;
      });
      account->SortBy(column, descending);
      EXPECT_EQ(account->GetEntries(), expected) << "column " << column << " " << descending;
    }
  }
}

TEST(LedgerSorting, AccountsCompareByNameNumberAndBalance) {
  auto a = SignedInAccount();
  auto b = SignedInAccount();
  a->SetName(std::string("checking"));
  b->SetName(std::string("Savings"));
  a->SetNumber(2);
  b->SetNumber(1);
  a->SetStartingBalance(10.0);
  b->SetStartingBalance(3.0);
  EXPECT_EQ(a->NameIsGreaterThan(*b), -1);
  EXPECT_EQ(a->NameIsGreaterThan_Reversed(*b), 1);
  b->SetName(std::string("CHECKING"));
  EXPECT_EQ(a->NameIsGreaterThan(*b), 0);
  EXPECT_EQ(a->NumberIsGreaterThan(*b), 1);
  EXPECT_EQ(b->NumberIsGreaterThan(*a), -1);
  EXPECT_EQ(a->BalanceIsGreaterThan(*b), 1);
  EXPECT_EQ(a->BalanceIsGreaterThan_Reversed(*b), -1);
  b->SetStartingBalance(10.0);
  EXPECT_EQ(a->BalanceIsGreaterThan(*b), 0);
  // A signed-out account's balance reads 0.
  auto locked = std::make_shared<TARNAccount>();
  locked->SetPassword(std::string("x"));
  locked->SetStartingBalance(-5.0);
  EXPECT_EQ(locked->BalanceIsGreaterThan(*a), -1);
  EXPECT_EQ(locked->BalanceIsGreaterThan(*SignedInAccount()), 0);
}

TEST(LedgerPassword, SigningInAndOut) {
  auto account = std::make_shared<TARNAccount>();
  EXPECT_FALSE(account->IsAuthenticated());
  EXPECT_FALSE(account->HasPassword());

  account->SetPassword(std::string("Secret"));
  EXPECT_TRUE(account->HasPassword());
  EXPECT_FALSE(account->IsAuthenticated());
  EXPECT_FALSE(account->Authenticate(std::string("secret")));  // case matters
  EXPECT_FALSE(account->Authenticate(std::nullopt));
  EXPECT_TRUE(account->Authenticate(std::string("Secret")));
  // A wrong password after the right one leaves the account open.
  EXPECT_TRUE(account->Authenticate(std::string("wrong")));
  EXPECT_TRUE(account->IsAuthenticated());
  // Only nil closes it again.
  EXPECT_FALSE(account->Authenticate(std::nullopt));
  EXPECT_FALSE(account->IsAuthenticated());

  // nullopt does not change the password; the empty password opens at once.
  account->SetPassword(std::nullopt);
  EXPECT_EQ(account->GetPassword(), "Secret");
  account->SetPassword(std::string());
  EXPECT_FALSE(account->HasPassword());
  EXPECT_TRUE(account->IsAuthenticated());
  EXPECT_TRUE(account->Authenticate(std::string("anything")));
}

}  // namespace
}  // namespace tarn
