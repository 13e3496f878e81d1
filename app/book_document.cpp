// The undo commands over the book's library operations.

#include "book_document.h"

#include <utility>

#include "tarn/account/account.h"
#include "tarn/book/book.h"

namespace {

// A command is pushed after its change has been made, so its first redo
// does nothing.
class BookCommand : public QUndoCommand {
 public:
  BookCommand(BookDocument* document, const QString& text, std::int32_t account)
      : QUndoCommand(text), document_(document), account_(account) {}

  void undo() override {
    revert();
    document_->notifyChanged(account_);
  }
  void redo() override {
    if (first_) {
      first_ = false;
      return;
    }
    apply();
    document_->notifyChanged(account_);
  }

 protected:
  virtual void revert() = 0;
  virtual void apply() = 0;
  BookDocument* document_;
  std::int32_t account_;

 private:
  bool first_ = true;
};

// A change that undoes and redoes itself on the book (entries, or an
// account's entries with its types, schedules and the book's categories).
template <typename Change>
class ChangeCommand : public BookCommand {
 public:
  ChangeCommand(BookDocument* document, const QString& text, Change change, std::int32_t account)
      : BookCommand(document, text, account), change_(std::move(change)) {}

 protected:
  void revert() override { change_.undo(document_->book()); }
  void apply() override { change_.redo(document_->book()); }

 private:
  Change change_;
};

using EntriesCommand = ChangeCommand<tarn::EntriesChange>;
using AccountChangeCommand = ChangeCommand<tarn::AccountChange>;

// A change to one account kept as the two states of one kind of record
// (its settings, its saved summaries); `Put` puts a state back.
template <typename State, void (*Put)(tarn::TARNBook&, tarn::TARNAccount&, const State&)>
class AccountStateCommand : public BookCommand {
 public:
  AccountStateCommand(BookDocument* document, const QString& text, std::int32_t account,
                      State before, State after)
      : BookCommand(document, text, account),
        before_(std::move(before)),
        after_(std::move(after)) {}

 protected:
  void revert() override { set(before_); }
  void apply() override { set(after_); }

 private:
  void set(const State& state) {
    if (auto account = document_->book().accountWithNumber(account_)) {
      Put(document_->book(), *account, state);
    }
  }
  State before_, after_;
};

void PutSummaries(tarn::TARNBook&, tarn::TARNAccount& account,
                  const tarn::AccountSummaries& summaries) {
  tarn::RestoreAccountSummaries(account, summaries);
}

using SettingsCommand = AccountStateCommand<tarn::AccountSettings, tarn::ApplyAccountSettings>;
using SummariesCommand = AccountStateCommand<tarn::AccountSummaries, PutSummaries>;

class ContentsCommand : public BookCommand {
 public:
  ContentsCommand(BookDocument* document, const QString& text, tarn::BookContents before,
                  tarn::BookContents after)
      : BookCommand(document, text, -1), before_(std::move(before)), after_(std::move(after)) {}

 protected:
  void revert() override { before_.restore(document_->book()); }
  void apply() override { after_.restore(document_->book()); }

 private:
  tarn::BookContents before_, after_;
};

}  // namespace

BookDocument::BookDocument(std::unique_ptr<tarn::TARNBook> book, QObject* parent)
    : QObject(parent), book_(std::move(book)) {
  connect(&undoStack_, &QUndoStack::cleanChanged, this,
          [this] { emit modifiedChanged(isModified()); });
}

BookDocument::~BookDocument() {
  // Commands refer to the book; let them go first.
  undoStack_.clear();
}

void BookDocument::markViewChanged() {
  if (viewChanged_) return;
  viewChanged_ = true;
  emit modifiedChanged(isModified());
}

void BookDocument::markSaved() {
  viewChanged_ = false;
  undoStack_.setClean();
  emit modifiedChanged(false);
}

void BookDocument::pushEntries(const QString& text, tarn::EntriesChange change,
                               std::int32_t account) {
  undoStack_.push(new EntriesCommand(this, text, std::move(change), account));
  notifyChanged(account);
}

void BookDocument::pushAccountChange(const QString& text, tarn::AccountChange change,
                                     std::int32_t notified) {
  undoStack_.push(new AccountChangeCommand(this, text, std::move(change), notified));
  notifyChanged(notified);
}

void BookDocument::pushSettings(const QString& text, std::int32_t account,
                                tarn::AccountSettings before, tarn::AccountSettings after) {
  undoStack_.push(new SettingsCommand(this, text, account, std::move(before), std::move(after)));
  notifyChanged(account);
}

void BookDocument::pushContents(const QString& text, tarn::BookContents before,
                                tarn::BookContents after) {
  undoStack_.push(new ContentsCommand(this, text, std::move(before), std::move(after)));
  notifyChanged(-1);
}

void BookDocument::pushSummaries(const QString& text, std::int32_t account,
                                 tarn::AccountSummaries before, tarn::AccountSummaries after) {
  undoStack_.push(new SummariesCommand(this, text, account, std::move(before), std::move(after)));
  notifyChanged(account);
}

void BookDocument::notifyChanged(std::int32_t account) {
  emit changed(account);
  emit modifiedChanged(isModified());
}
