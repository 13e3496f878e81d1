// Helpers of the account tests: a pinned clock, captured log lines, entries and accounts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace tarn::testing {

// Pins today (15 June 2024 unless told) for the life of the object.
class PinnedClock {
 public:
  explicit PinnedClock(CalendarDate now = CalendarDate(2024, 6, 15, 10, 30, 0)) {
    CalendarDate::overrideNow(now);
  }
  ~PinnedClock() { CalendarDate::overrideNow(std::nullopt); }
  static constexpr DateNumber kToday = 20240615;
};

// Collects every log line written while it lives.
class CapturedLog {
 public:
  CapturedLog() {
    previous_ = SetLogSink([this](std::string_view line) { lines_.emplace_back(line); });
  }
  ~CapturedLog() { SetLogSink(previous_); }
  const std::vector<std::string>& lines() const { return lines_; }
  std::size_t count(std::string_view line) const {
    return std::count(lines_.begin(), lines_.end(), line);
  }
  void clear() { lines_.clear(); }

 private:
  LogSink previous_;
  std::vector<std::string> lines_;
};

// A deposit when the amount is positive, else a debit.
inline std::shared_ptr<TARNAccountEntry> MakeEntry(std::int32_t number, DateNumber date,
                                                   double amount, std::string description = "",
                                                   std::string toFrom = "") {
  auto entry = std::make_shared<TARNAccountEntry>();
  entry->SetNumber(number);
  entry->SetDate(date);
  entry->SetAmount(amount);
  entry->SetIsDebit(amount <= 0);
  entry->SetIsDeposit(amount > 0);
  entry->SetDescription(std::move(description));
  entry->SetToFrom(std::move(toFrom));
  return entry;
}

// Adds to the register, or to the selected folder.
inline std::shared_ptr<TARNAccountEntry> Add(TARNAccount& account, std::int32_t number,
                                             DateNumber date, double amount,
                                             std::string description = "",
                                             std::string toFrom = "") {
  auto entry = MakeEntry(number, date, amount, std::move(description), std::move(toFrom));
  account.AddEntry(entry);
  return entry;
}

inline std::shared_ptr<TARNAccountEntry> AddCheck(TARNAccount& account, std::int32_t number,
                                                  std::int32_t checkNumber,
                                                  DateNumber date = 20240101,
                                                  double amount = -10.0) {
  auto entry = Add(account, number, date, amount);
  entry->SetIsCheck(true);
  entry->SetCheckNumber(checkNumber);
  return entry;
}

inline std::vector<std::int32_t> Numbers(const TARNAccount::Entries& entries) {
  std::vector<std::int32_t> numbers;
  for (const auto& entry : entries) numbers.push_back(entry->GetNumber());
  return numbers;
}

// The parts of the text between separators, empty ones included.
inline std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + 1)
    parts.push_back(text.substr(start, end - start));
  parts.push_back(text.substr(start));
  return parts;
}

// A category with its children.
inline std::shared_ptr<TARNAccountEntryCategory> MakeCategory(
    std::string name, std::int32_t number,
    std::vector<std::shared_ptr<TARNAccountEntryCategory>> children = {}) {
  auto category = std::make_shared<TARNAccountEntryCategory>();
  category->setName(std::move(name));
  category->setNumber(number);
  for (auto& child : children) category->addChild(std::move(child));
  return category;
}

inline std::shared_ptr<TARNAccountEntryType> MakeType(std::string name, std::int32_t number,
                                                      bool deposit, bool check = false) {
  auto type = std::make_shared<TARNAccountEntryType>();
  type->SetName(std::move(name));
  type->SetNumber(number);
  type->SetIsDeposit(deposit);
  type->SetIsCheck(check);
  return type;
}

// A new account whose empty password has signed it in.
inline std::shared_ptr<TARNAccount> SignedInAccount() {
  auto account = std::make_shared<TARNAccount>();
  account->SetPassword(std::string());
  return account;
}

}  // namespace tarn::testing
