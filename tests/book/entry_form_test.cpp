// Recording the entry form (checks, splits, transfers between currencies)
// and going back and forth over what each change did to the book.

#include "tarn/book/entry_form.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "book/book_test_support.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/book_changes.h"
#include "tarn/book/book_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace tarn {
namespace {

class EntryFormTest : public testing::QuietDayTest {
 protected:
  void SetUp() override {
    checking_ = book_.addAccount("Checking");
    savings_ = book_.addAccount("Savings");
    book_.addCategoryPath("Food:Groceries");
    book_.addCategoryPath("Home:Rent");
  }

  EntryForm Form(double amount, bool deposit = false) {
    EntryForm form = NewEntryForm(*checking_, 20261110);
    form.deposit = deposit;
    if (deposit) form.type = "Deposit";
    form.amount = amount;
    return form;
  }

  TARNBook book_;
  std::shared_ptr<TARNAccount> checking_, savings_;
};

TEST_F(EntryFormTest, ChecksTakeTheNextFreeNumberUnlessOneIsGiven) {
  checking_->SetStartingCheckNumber(101);
  EntryForm form = Form(40);
  form.type = "Check";
  auto first = RecordEntryForm(book_, *checking_, nullptr, form);
  EXPECT_TRUE(first->IsCheck());
  EXPECT_EQ(first->GetCheckNumber(), 101);
  EXPECT_DOUBLE_EQ(first->GetAmount(), -40.0);
  auto second = RecordEntryForm(book_, *checking_, nullptr, form);
  EXPECT_EQ(second->GetCheckNumber(), 102);
  form.checkNumber = 250;
  EXPECT_EQ(RecordEntryForm(book_, *checking_, nullptr, form)->GetCheckNumber(), 250);
  EXPECT_NE(first->GetNumber(), second->GetNumber());

  // A check edited into a card payment stops being a check.
  EntryForm edit = EntryFormFromEntry(book_, *checking_, *first);
  EXPECT_EQ(edit.checkNumber, 101);
  edit.type = "Debit Card";
  RecordEntryForm(book_, *checking_, first, edit);
  EXPECT_FALSE(first->IsCheck());
  EXPECT_EQ(checking_->GetEntries().size(), 3u);
}

TEST_F(EntryFormTest, SplitsSetTheAmountAndReadBackIntoTheForm) {
  EntryForm form = Form(0);
  form.splits = {{"Food:Groceries", "milk", 12.345}, {"Home:Rent", "", 500}};
  auto entry = RecordEntryForm(book_, *checking_, nullptr, form);
  ASSERT_EQ(entry->splitLineItems().size(), 2u);
  EXPECT_DOUBLE_EQ(entry->GetAmount(), -512.35);
  EXPECT_EQ(EntryCategoryText(*checking_, *entry), "Split");
  const EntryForm back = EntryFormFromEntry(book_, *checking_, *entry);
  ASSERT_EQ(back.splits.size(), 2u);
  EXPECT_EQ(back.splits[0].category, "Food:Groceries");
  EXPECT_EQ(back.splits[0].description, "milk");
  EXPECT_DOUBLE_EQ(back.splits[1].amount, 500);
  EXPECT_FALSE(back.deposit);

  // Problems are refused before anything changes.
  form.splits[1].category = "Nowhere";
  EXPECT_THROW(RecordEntryForm(book_, *checking_, nullptr, form), std::invalid_argument);
  form.splits.clear();
  form.transferAccount = checking_->GetNumber();
  EXPECT_THROW(RecordEntryForm(book_, *checking_, nullptr, form), std::invalid_argument);
  form.transferAccount = savings_->GetNumber();
  form.splits = {{"Home:Rent", "", 1}};
  EXPECT_THROW(RecordEntryForm(book_, *checking_, nullptr, form), std::invalid_argument);
  EXPECT_EQ(checking_->GetEntries().size(), 1u);
  EXPECT_TRUE(savings_->GetEntries().empty());
}

TEST_F(EntryFormTest, TransfersBetweenCurrenciesKeepBothHalvesInStep) {
  auto euro = PFCurrency::initWithCode("EUR", "Euro", "€", false, ".", ",", 0.5, 20261101);
  book_.addCurrency(euro);
  savings_->setCurrency(euro);
  EntryForm form = Form(100);
  form.transferAccount = savings_->GetNumber();
  form.exchangedAmount = 90;
  auto entry = RecordEntryForm(book_, *checking_, nullptr, form);
  auto mirror = LinkedEntry(book_, *entry);
  ASSERT_TRUE(mirror);
  EXPECT_DOUBLE_EQ(entry->GetAmount(), -100);
  EXPECT_DOUBLE_EQ(mirror->GetAmount(), 90);

  // Editing the amount and the exchanged amount moves the other half.
  EntryForm edit = EntryFormFromEntry(book_, *checking_, *entry);
  EXPECT_EQ(edit.transferAccount, savings_->GetNumber());
  EXPECT_EQ(edit.exchangedAmount, 90);
  edit.amount = 120;
  edit.exchangedAmount = 110;
  edit.date = 20261112;
  RecordEntryForm(book_, *checking_, entry, edit);
  EXPECT_DOUBLE_EQ(mirror->GetAmount(), 110);
  EXPECT_EQ(mirror->GetDate(), 20261112);

  // Dropping the transfer removes the other half.
  edit.transferAccount = -1;
  RecordEntryForm(book_, *checking_, entry, edit);
  EXPECT_FALSE(entry->IsLinked());
  EXPECT_TRUE(savings_->GetEntries().empty());
}

TEST_F(EntryFormTest, UndoAndRedoOfATransferAddEditVoidAndRemove) {
  auto rent = RecordEntryForm(book_, *checking_, nullptr, Form(700));
  auto salary = RecordEntryForm(book_, *checking_, nullptr, Form(2000, true));
  const std::int32_t rentNumber = rent->GetNumber();

  std::optional<EntriesChange> added;
  EntryForm form = Form(250);
  form.transferAccount = savings_->GetNumber();
  auto transfer = RecordEntryForm(book_, *checking_, nullptr, form, &added);
  ASSERT_TRUE(added);
  EXPECT_EQ(checking_->GetEntries().size(), 3u);
  EXPECT_EQ(savings_->GetEntries().size(), 1u);
  added->undo(book_);
  EXPECT_EQ(checking_->GetEntries().size(), 2u);
  EXPECT_TRUE(savings_->GetEntries().empty());
  added->redo(book_);
  ASSERT_EQ(savings_->GetEntries().size(), 1u);
  transfer = checking_->GetEntries().back();
  auto mirror = LinkedEntry(book_, *transfer);
  ASSERT_TRUE(mirror) << "redo brings back both halves, still linked";
  EXPECT_DOUBLE_EQ(mirror->GetAmount(), 250);

  // An edit of the first entry goes back to its old amount and its place.
  std::optional<EntriesChange> edited;
  EntryForm edit = EntryFormFromEntry(book_, *checking_, *rent);
  edit.amount = 725;
  edit.description = "November rent";
  RecordEntryForm(book_, *checking_, rent, edit, &edited);
  edited->undo(book_);
  ASSERT_EQ(checking_->GetEntries().front()->GetNumber(), rentNumber);
  EXPECT_DOUBLE_EQ(checking_->GetEntries().front()->GetAmount(), -700);
  EXPECT_EQ(checking_->GetEntries().front()->GetDescription(), "");
  edited->redo(book_);
  EXPECT_DOUBLE_EQ(checking_->GetEntries().front()->GetAmount(), -725);
  EXPECT_DOUBLE_EQ(checking_->GetBalance(), -725 + 2000 - 250);

  // Void reaches the other half; undo brings both back.
  std::optional<EntriesChange> voided;
  SetEntryVoid(book_, *checking_, transfer, true, &voided);
  EXPECT_TRUE(LinkedEntry(book_, *transfer)->GetVoid());
  EXPECT_DOUBLE_EQ(savings_->GetBalance(), 0);
  voided->undo(book_);
  EXPECT_DOUBLE_EQ(savings_->GetBalance(), 250);
  EXPECT_DOUBLE_EQ(checking_->GetBalance(), -725 + 2000 - 250);

  // Removing the middle entry and undoing puts it back in the middle.
  salary = checking_->GetEntries()[1];
  std::optional<EntriesChange> removed;
  RemoveEntry(book_, *checking_, salary, &removed);
  EXPECT_EQ(checking_->GetEntries().size(), 2u);
  removed->undo(book_);
  ASSERT_EQ(checking_->GetEntries().size(), 3u);
  EXPECT_DOUBLE_EQ(checking_->GetEntries()[1]->GetAmount(), 2000);
  EXPECT_EQ(checking_->GetEntries()[1]->GetAccount(), checking_.get());
}

TEST_F(EntryFormTest, AccountSettingsAndWholeBookStatesGoBack) {
  const AccountSettings before = CaptureAccountSettings(*checking_);
  AccountSettings settings = before;
  settings.name = "savings";
  EXPECT_THROW(ApplyAccountSettings(book_, *checking_, settings), std::invalid_argument);
  settings.name = "Joint";
  settings.currencyCode = "XYZ";
  EXPECT_THROW(ApplyAccountSettings(book_, *checking_, settings), std::invalid_argument);
  EXPECT_EQ(checking_->GetName(), "Checking");
  settings.currencyCode = before.currencyCode;
  settings.startingBalance = 50;
  settings.password = "secret";
  settings.statementBalance = 12.5;
  ApplyAccountSettings(book_, *checking_, settings);
  EXPECT_EQ(CaptureAccountSettings(*checking_), settings);
  EXPECT_TRUE(checking_->IsAuthenticated());
  EXPECT_DOUBLE_EQ(checking_->GetBalance(), 50);

  // A category removal undone by the book's whole state; the open account
  // with a password stays open.
  RecordEntryForm(book_, *checking_, nullptr, [&] {
    EntryForm form = Form(10);
    form.category = "Food:Groceries";
    return form;
  }());
  const BookContents saved(book_);
  book_.removeCategory(book_.categoryWithFullName("Food"), nullptr);
  EXPECT_FALSE(book_.categoryWithFullName("Food:Groceries"));
  saved.restore(book_);
  auto account = book_.accountWithName("Joint");
  ASSERT_TRUE(account);
  EXPECT_TRUE(account->IsAuthenticated());
  EXPECT_EQ(EntryCategoryText(*account, *account->GetEntries().front()), "Food:Groceries");
  EXPECT_EQ(account->accountsController(), &book_);
}

TEST_F(EntryFormTest, RemovingAnAccountUnlinksTheHalvesLeftBehindAndUndoBringsItBack) {
  EntryForm form = Form(80);
  form.transferAccount = savings_->GetNumber();
  auto transfer = RecordEntryForm(book_, *checking_, nullptr, form);
  RecordEntryForm(book_, *checking_, nullptr, Form(5));
  const BookContents before(book_);
  EXPECT_EQ(book_.removeAccount(savings_), 1u);
  EXPECT_FALSE(book_.accountWithName("Savings"));
  EXPECT_FALSE(transfer->IsLinked());
  EXPECT_FALSE(LinkedEntry(book_, *transfer));
  EXPECT_DOUBLE_EQ(checking_->GetBalance(), -85);
  EXPECT_EQ(book_.removeAccount(savings_), 0u) << "not in the book any more";

  before.restore(book_);
  auto savings = book_.accountWithName("Savings");
  auto checking = book_.accountWithName("Checking");
  ASSERT_TRUE(savings && checking);
  auto mirror = LinkedEntry(book_, *checking->GetEntries().front());
  ASSERT_TRUE(mirror);
  EXPECT_EQ(mirror->GetAccount(), savings.get());
  EXPECT_DOUBLE_EQ(savings->GetBalance(), 80);
}

}  // namespace
}  // namespace tarn
