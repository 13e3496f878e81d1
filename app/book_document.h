// The open book of a window: the book itself, the file it came from, its
// undo stack, and whether it holds changes not yet saved. Every change to
// the book goes through a command on the stack; what a command does to the
// book is a library operation (entries; an account's added entries with its
// types, schedules and the book's categories; account settings; or the
// book's whole contents, captured before and after).
#pragma once

#include <QObject>
#include <QString>
#include <QUndoCommand>
#include <QUndoStack>

#include <cstdint>
#include <memory>
#include <optional>

#include "tarn/book/book_changes.h"

namespace tarn {
class TARNBook;
}

class BookDocument : public QObject {
  Q_OBJECT

 public:
  explicit BookDocument(std::unique_ptr<tarn::TARNBook> book, QObject* parent = nullptr);
  ~BookDocument() override;

  tarn::TARNBook& book() { return *book_; }
  QUndoStack* undoStack() { return &undoStack_; }
  bool isModified() const { return !undoStack_.isClean() || viewChanged_; }
  // The remembered view settings (filters, statement balance typed in)
  // changed: saved with the book, not undone.
  void markViewChanged();
  void markSaved();

  // Pushes a change already made to the book.
  void pushEntries(const QString& text, tarn::EntriesChange change, std::int32_t account);
  // `notified` is the account the windows hear of (-1: any), as for
  // notifyChanged.
  void pushAccountChange(const QString& text, tarn::AccountChange change, std::int32_t notified);
  void pushSettings(const QString& text, std::int32_t account, tarn::AccountSettings before,
                    tarn::AccountSettings after);
  void pushContents(const QString& text, tarn::BookContents before, tarn::BookContents after);
  void pushSummaries(const QString& text, std::int32_t account, tarn::AccountSummaries before,
                     tarn::AccountSummaries after);

  // Tells the windows that the book changed; `account` is the account mainly
  // concerned (-1: any, or the accounts themselves).
  void notifyChanged(std::int32_t account);

 signals:
  void changed(std::int32_t account);
  void modifiedChanged(bool modified);

 private:
  std::unique_ptr<tarn::TARNBook> book_;
  QUndoStack undoStack_;
  bool viewChanged_ = false;
};
