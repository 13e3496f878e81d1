// The sample household. Its randomness is a fixed generator (splitmix64)
// used through plain arithmetic, so the book is the same on every platform.
// Every draw is a statement of its own: the order in which a compiler
// evaluates a call's arguments is unspecified, and two draws in one call
// gave g++ and clang different books.

#include "tarn/book/sample_book.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "tarn/account/account.h"
#include "tarn/account/account_folder.h"
#include "tarn/book/book.h"
#include "tarn/book/book_entries.h"
#include "tarn/filters/filter.h"
#include "tarn/filters/filter_codes.h"
#include "tarn/filters/filter_condition_group.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/account_schedule.h"
#include "tarn/model/amounts.h"
#include "tarn/model/category.h"
#include "tarn/model/entry_type.h"
#include "tarn/model/schedule_recurrence.h"
#include "tarn/platform/calendar_date.h"

namespace tarn {

namespace {

using Type = TARNAccountEntryType;

// Padding entries between two progress reports.
constexpr std::int64_t kPaddingReportEvery = 8192;

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  // A whole number in [low, high].
  std::int64_t between(std::int64_t low, std::int64_t high) {
    return low + static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(high - low + 1));
  }
  // An amount in cents between two whole amounts.
  double money(double low, double high) {
    return between(static_cast<std::int64_t>(low * 100), static_cast<std::int64_t>(high * 100)) /
           100.0;
  }
  template <typename T, std::size_t N>
  const T& pick(const std::array<T, N>& items) {
    return items[next() % N];
  }

 private:
  std::uint64_t state_;
};

constexpr std::array<const char*, 5> kGrocers = {"Green Valley Market", "Corner Grocery",
                                                 "Fresh Fields", "Harvest Co-op", "Costco"};
constexpr std::array<const char*, 6> kRestaurants = {"Luigi's Trattoria", "Noodle Bar",
                                                     "The Bagel Shop",    "Blue Door Cafe",
                                                     "Taco Stand",        "Sushi Garden"};
constexpr std::array<const char*, 3> kStations = {"Shell", "Chevron", "Corner Gas"};
constexpr std::array<const char*, 4> kFun = {"Cinema Paradiso", "City Museum", "Bookworm Books",
                                             "Stream+ Subscription"};
constexpr std::array<const char*, 3> kCharities = {"Red Cross", "Food Bank", "Public Radio"};

constexpr std::array<const char*, 16> kCategories = {
    "Income:Salary",  "Income:Interest", "Housing:Rent", "Housing:Utilities", "Housing:Internet",
    "Food:Groceries", "Food:Dining",     "Auto:Fuel",    "Auto:Insurance",    "Health:Pharmacy",
    "Health:Fitness", "Entertainment",   "Gifts",        "Charity",           "Household",
    "Transfers"};

class Household {
 public:
  Household(TARNBook& book, const SampleBookOptions& options) : book_(book), random_(options.seed) {
    for (const char* path : kCategories) categories_[path] = book_.addCategoryPath(path)->number();
    checking_ = book_.addAccount("Checking");
    checking_->SetStartingBalance(2500.00);
    checking_->SetStartingCheckNumber(1001);
    savings_ = book_.addAccount("Savings");
    savings_->SetStartingBalance(10000.00);
    card_ = book_.addAccount("Credit Card");
  }

  void month(int year, int monthOfYear) {
    const int days = CalendarDate(year, monthOfYear, 1).daysInMonth();
    auto on = [&](int day) { return year * 10000 + monthOfYear * 100 + std::min(day, days); };

    // Checking: pay, rent, bills, groceries and the odd check.
    for (int day : {1, 15}) {
      add(*checking_, on(day), 1650.00, Type::kTypeDirectDeposit, "Income:Salary",
          "Acme Tools Inc.", "Salary");
    }
    add(*checking_, on(1), -1450.00, Type::kTypeOnlinePayment, "Housing:Rent",
        "Maple Street Properties", "Rent");
    add(*checking_, on(8), -random_.money(60, 160), Type::kTypeAutomaticDraft, "Housing:Utilities",
        "City Power & Light", "Electricity");
    add(*checking_, on(12), -59.99, Type::kTypeAutomaticDraft, "Housing:Internet", "FiberNet",
        "Internet");
    for (int week = 0; week < 4; ++week) {
      const char* grocer = random_.pick(kGrocers);
      const double amount = -random_.money(35, 180);
      auto entry = add(*checking_, on(3 + week * 7 + static_cast<int>(random_.between(0, 2))),
                       amount, Type::kTypeDebitCard, "Food:Groceries", grocer, "Groceries");
      // Warehouse runs are split between food and household things.
      if (std::string(grocer) == "Costco") {
        const double food = RoundValue(amount * 0.6);
        entry->addSplitLineItemWithCategory(categories_["Food:Groceries"], "Food", grocer, food);
        entry->addSplitLineItemWithCategory(categories_["Household"], "Supplies", grocer,
                                            RoundValue(amount - food));
      }
    }
    if (random_.between(0, 2) == 0) {
      const int day = static_cast<int>(random_.between(2, 27));
      const double amount = -static_cast<double>(random_.between(2, 10) * 10);
      const char* charity = random_.pick(kCharities);
      auto check =
          add(*checking_, on(day), amount, Type::kTypeCheck, "Charity", charity, "Donation");
      check->SetTaxDeductible(true);
    }
    if (monthOfYear % 4 == 0) {
      add(*checking_, on(20), -random_.money(40, 120), Type::kTypeCheck, "Gifts", "Grandma Rose",
          "Birthday present");
    }
    if (monthOfYear == 6) {
      // A check written wrong and voided.
      add(*checking_, on(9), -75.00, Type::kTypeCheck, "Household", "Handy Helpers",
          "Gutter cleaning")
          ->SetVoid(true);
    }
    if (monthOfYear % 6 == 1) {
      add(*checking_, on(25), -random_.money(380, 460), Type::kTypeOnlinePayment, "Auto:Insurance",
          "Safeway Insurance", "Car insurance");
    }

    // Savings: a transfer in from checking and the month's interest.
    transfer(*checking_, *savings_, on(16), 300.00, "Monthly savings");
    add(*savings_, on(days), RoundValue(savings_->GetBalance() * 0.0025 / 12), Type::kTypeDeposit,
        "Income:Interest", "Harbor Bank", "Interest");

    // Card: dining, fuel, fun and the gym; paid off from checking.
    double spent = 0;
    auto charge = [&](int day, double amount, const char* category, const char* payee,
                      const char* description) {
      add(*card_, on(day), -amount, Type::kTypeDebitCard, category, payee, description);
      spent += amount;
    };
    for (int i = 0, n = static_cast<int>(random_.between(3, 6)); i < n; ++i) {
      const int day = static_cast<int>(random_.between(1, 28));
      const double amount = random_.money(12, 85);
      charge(day, amount, "Food:Dining", random_.pick(kRestaurants), "Eating out");
    }
    for (int i = 0, n = static_cast<int>(random_.between(2, 3)); i < n; ++i) {
      const int day = static_cast<int>(random_.between(1, 28));
      const double amount = random_.money(30, 70);
      charge(day, amount, "Auto:Fuel", random_.pick(kStations), "Fuel");
    }
    {
      const int day = static_cast<int>(random_.between(1, 28));
      const double amount = random_.money(10, 60);
      charge(day, amount, "Entertainment", random_.pick(kFun), "Fun");
    }
    charge(5, 39.00, "Health:Fitness", "Iron Gym", "Gym membership");
    if (random_.between(0, 3) == 0) {
      const int day = static_cast<int>(random_.between(1, 28));
      charge(day, random_.money(8, 45), "Health:Pharmacy", "Main St Pharmacy", "Prescription");
    }
    transfer(*checking_, *card_, on(22), RoundValue(spent), "Card payment");
  }

  // Extra everyday purchases, spread evenly over [first, last].
  void padding(std::int64_t count, DateNumber first, DateNumber last,
               const TARNBookProgressHandler& progress) {
    const CalendarDate start = CalendarDate::dateWithDateNumber(first);
    const std::int64_t span =
        CalendarDate::dateWithDateNumber(last).daysSince1970() - start.daysSince1970() + 1;
    const auto total = static_cast<std::uint64_t>(count);
    for (std::int64_t i = 0; i < count; ++i) {
      if (i % kPaddingReportEvery == 0) {
        ReportProgress(progress, "Making entries", "entries", static_cast<std::uint64_t>(i), total);
      }
      const DateNumber date =
          start.dateByAddingYears(0, 0, static_cast<int>(i * span / count)).dateNumber();
      if (i % 3 == 0) {
        const double amount = -random_.money(3, 40);
        add(*checking_, date, amount, Type::kTypeDebitCard, "Food:Groceries",
            random_.pick(kGrocers), "Snacks");
      } else {
        const double amount = -random_.money(3, 40);
        add(*card_, date, amount, Type::kTypeDebitCard, "Food:Dining", random_.pick(kRestaurants),
            "Coffee");
      }
    }
    ReportProgress(progress, "Making entries", "entries", total, total);
  }

  void schedules(DateNumber first, DateNumber last) {
    schedule(*checking_, first, -1450.00, Type::kTypeOnlinePayment, "Housing:Rent",
             "Maple Street Properties", "Rent", last);
    schedule(*checking_, first + 14, 1650.00, Type::kTypeDirectDeposit, "Income:Salary",
             "Acme Tools Inc.", "Salary", last);
    schedule(*card_, first + 4, -39.00, Type::kTypeDebitCard, "Health:Fitness", "Iron Gym",
             "Gym membership", last);
  }

  void folderAndSmartFolders() {
    // Two business lunches set aside for reimbursement: they live in the
    // folder, not in the register.
    auto folder = std::make_shared<TARNAccountFolder>();
    folder->setName("Reimbursable");
    card_->addFolder(folder);
    card_->setFolder(folder);
    // Dated inside the register's span, which the register views filter by.
    const DateNumber month = lastDate_ / 100 * 100;
    add(*card_, month + 10, -64.20, Type::kTypeDebitCard, "Food:Dining", "Luigi's Trattoria",
        "Client lunch");
    add(*card_, month + 20, -48.75, Type::kTypeDebitCard, "Food:Dining", "Blue Door Cafe",
        "Client lunch");
    card_->setFolder(nullptr);

    for (auto* account : {checking_.get(), card_.get()}) {
      auto deductible = std::make_shared<TARNFilter>();
      deductible->setName("Tax Deductible");
      auto group = std::make_shared<TARNFilterConditionGroup>();
      group->addConditionWithCategory(kFieldTaxDeductible, kConditionKeepMatches, kFlagIs, true);
      deductible->addConditionGroup(group);
      account->addSmartFolder(deductible);

      auto dining = std::make_shared<TARNFilter>();
      dining->setName("Food");
      auto foodGroup = std::make_shared<TARNFilterConditionGroup>();
      foodGroup->addConditionWithCategory(kFieldCategory, kConditionKeepMatches, kTextContains,
                                          "Food");
      dining->addConditionGroup(foodGroup);
      account->addSmartFolder(dining);
    }
  }

  void clearOlderThan(DateNumber date) {
    for (const auto& account : book_.accounts()) {
      for (const auto& entry : account->GetAllEntries()) {
        if (entry->GetDate() < date) entry->SetCleared(1);
      }
      account->setStatementBalance(account->GetRunningBalanceBeforeDate(date));
    }
  }

  std::int64_t entryCount() const { return count_; }

 private:
  void fill(TARNAccountEntry& entry, DateNumber date, double amount, std::int32_t type,
            const char* category, const std::string& toFrom, const char* description) const {
    entry.SetDate(date);
    entry.SetAmount(amount);
    if (amount < 0) {
      entry.SetIsDebit(true);
    } else {
      entry.SetIsDeposit(true);
    }
    entry.SetType(type);
    entry.SetCategory(categories_.at(category));
    entry.SetToFrom(toFrom);
    entry.SetDescription(description);
  }

  std::shared_ptr<TARNAccountEntry> add(TARNAccount& account, DateNumber date, double amount,
                                        std::int32_t type, const char* category,
                                        const std::string& toFrom, const char* description) {
    auto entry = std::make_shared<TARNAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    fill(*entry, date, amount, type, category, toFrom, description);
    if (type == Type::kTypeCheck) {
      entry->SetIsCheck(true);
      entry->SetCheckNumber(account.NextAvailableCheckNumber());
    }
    account.AddEntry(entry);
    lastDate_ = std::max(lastDate_, date);
    ++count_;
    return entry;
  }

  void transfer(TARNAccount& from, TARNAccount& to, DateNumber date, double amount,
                const char* description) {
    auto entry =
        add(from, date, -amount, Type::kTypeTransferOut, "Transfers", to.GetName(), description);
    LinkTransfer(book_, from, entry, to, std::nullopt);
    ++count_;
  }

  void schedule(TARNAccount& account, DateNumber first, double amount, std::int32_t type,
                const char* category, const char* toFrom, const char* description,
                DateNumber committedThrough) {
    auto schedule = std::make_shared<TARNAccountSchedule>();
    schedule->SetNumber(account.NextAvailableScheduleNumber());
    fill(*schedule, first, amount, type, category, toFrom, description);
    schedule->SetRepeatIntervalType(kRepeatMonthly);
    schedule->SetRepeatInterval(1);
    schedule->SetRepeatUntilType(kRepeatUntilForever);
    schedule->SetUsePrecedingFriday(false);
    // Every occurrence the generated months already hold counts as entered.
    for (CalendarDate date = CalendarDate::dateWithDateNumber(first);
         date.dateNumber() <= committedThrough; date = date.dateByAddingYears(0, 1, 0)) {
      schedule->AddCommittedDate(date.dateNumber());
    }
    account.AddSchedule(schedule);
  }

  TARNBook& book_;
  Random random_;
  std::shared_ptr<TARNAccount> checking_;
  std::shared_ptr<TARNAccount> savings_;
  std::shared_ptr<TARNAccount> card_;
  std::map<std::string, std::int32_t> categories_;
  DateNumber lastDate_ = 0;
  std::int64_t count_ = 0;
};

}  // namespace

std::unique_ptr<TARNBook> MakeSampleBook(const SampleBookOptions& options) {
  const DateNumber today = options.today ? options.today : CalendarDate::now().dateNumber();
  auto book = std::make_unique<TARNBook>();
  SampleBookOptions resolved = options;
  resolved.today = today;
  Household household(*book, resolved);

  const CalendarDate thisMonth(today / 10000, today / 100 % 100, 1);
  const int months = std::max(1, options.years * 12);
  const CalendarDate start = thisMonth.dateByAddingYears(0, -months, 0);
  for (int i = 0; i < months; ++i) {
    ReportProgress(options.progress, "Making the household's months", "months",
                   static_cast<std::uint64_t>(i), static_cast<std::uint64_t>(months));
    const CalendarDate month = start.dateByAddingYears(0, i, 0);
    household.month(month.yearOfCommonEra(), month.monthOfYear());
  }
  ReportProgress(options.progress, "Making the household's months", "months",
                 static_cast<std::uint64_t>(months), static_cast<std::uint64_t>(months));
  const DateNumber first = start.dateNumber();
  const DateNumber last = thisMonth.dateByAddingYears(0, 0, -1).dateNumber();
  household.folderAndSmartFolders();
  const std::int64_t natural = household.entryCount();
  if (options.entries > natural)
    household.padding(options.entries - natural, first, last, options.progress);
  household.schedules(first, last);
  household.clearOlderThan(thisMonth.dateByAddingYears(0, -1, 0).dateNumber());
  return book;
}

}  // namespace tarn
