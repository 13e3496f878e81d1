// The import review of 10,000 statement entries against an account of
// 100,000 entries: with bank identifiers (OFX, 100,000 remembered, a third
// of the statement known), and without (QIF and text, every entry matched by
// amount, date and payee, a third of them against existing entries); and the
// matcher alone.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/book/import_review.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/log.h"

namespace {

using namespace tarn;

const char* const kPayees[] = {
    "Corner Grocer", "Shell Oil",   "Acme Rent", "Acme Payroll", "City Water", "Cafe Luna",
    "Books & More",  "Pharmacy 42", "",          "Hardware Co",  "Gym",        "Phone Company"};

DateNumber DateOfDay(int day) {
  return CalendarDate(2020, 1, 1).dateByAddingYears(0, 0, day, 0, 0, 0).dateNumber();
}

// A book whose one account holds `count` entries over about five years, and
// whose remembered identifiers are "E0" ... for every one of them.
struct Fixture {
  TARNBook book;
  std::shared_ptr<TARNAccount> account;
  plist::Array withIdentifiers, withoutIdentifiers;

  Fixture(std::size_t existing, std::size_t imported) {
    SetLogSink([](std::string_view) {});
    account = book.addAccount("Checking");
    std::mt19937 random(11);
    std::vector<std::tuple<double, DateNumber, std::string>> kept;
    for (std::size_t i = 0; i < existing; ++i) {
      auto entry = std::make_shared<TARNAccountEntry>();
      const double amount = -static_cast<double>(random() % 20000) / 100.0;
      const DateNumber date = DateOfDay(static_cast<int>(random() % 1800));
      const std::string payee = kPayees[random() % std::size(kPayees)];
      entry->SetAmount(amount);
      entry->SetDate(date);
      entry->SetToFrom(payee);
      entry->SetNumber(account->NextAvailableNumber());
      account->AddEntry(entry);
      book.rememberImportedIdentifier(account->GetNumber(), "E" + std::to_string(i));
      kept.emplace_back(amount, date, payee);
    }
    for (std::size_t i = 0; i < imported; ++i) {
      plist::Dictionary entry;
      double amount = -static_cast<double>(random() % 20000) / 100.0;
      DateNumber date = DateOfDay(1790 + static_cast<int>(random() % 40));
      std::string payee = kPayees[random() % std::size(kPayees)];
      std::string fitID = "N" + std::to_string(i);
      if (i % 3 == 0 && !kept.empty()) {
        const std::size_t k = random() % kept.size();
        std::tie(amount, date, payee) = kept[k];
        fitID = "E" + std::to_string(k);
      }
      entry["amount"] = plist::Value(amount);
      entry["date"] = plist::Value(static_cast<std::int64_t>(date));
      entry["isDeposit"] = plist::Value(false);
      entry["toFrom"] = plist::Value(payee);
      entry["type"] = plist::Value(i % 2 ? "DEBIT" : "POS");
      entry["category"] = plist::Value(i % 5 ? "Food:Groceries" : "Auto:Fuel");
      withoutIdentifiers.push_back(plist::Value(entry));
      entry["fitID"] = plist::Value(fitID);
      withIdentifiers.push_back(plist::Value(std::move(entry)));
    }
  }
};

Fixture& Shared() {
  static Fixture fixture(100000, 10000);
  return fixture;
}

void review(benchmark::State& state, bool identifiers) {
  Fixture& fixture = Shared();
  const plist::Array& entries = identifiers ? fixture.withIdentifiers : fixture.withoutIdentifiers;
  std::size_t duplicates = 0;
  for (auto _ : state) {
    TARNImportReview review(fixture.book, *fixture.account, ImportFormat::OFX, {});
    review.addEntries(entries);
    duplicates = review.duplicateCount();
    benchmark::DoNotOptimize(review.items().data());
  }
  state.counters["duplicates"] = static_cast<double>(duplicates);
}

void BM_ReviewOFX10kAgainst100k(benchmark::State& state) {
  review(state, true);
}
void BM_ReviewNoIdentifiers10kAgainst100k(benchmark::State& state) {
  review(state, false);
}

// The matcher alone, every imported entry without an identifier.
void BM_MatchDuplicates(benchmark::State& state) {
  std::mt19937 random(5);
  const auto keys = [&](std::size_t count) {
    std::vector<DuplicateKey> out(count);
    for (auto& key : out) {
      key = {static_cast<std::int64_t>(random() % 20000),
             static_cast<std::int64_t>(18000 + random() % 1800),
             kPayees[random() % std::size(kPayees)]};
    }
    return out;
  };
  const auto existing = keys(static_cast<std::size_t>(state.range(0)));
  const auto imported = keys(static_cast<std::size_t>(state.range(0)) / 10);
  for (auto _ : state) benchmark::DoNotOptimize(MatchDuplicates(imported, existing).data());
}

BENCHMARK(BM_ReviewOFX10kAgainst100k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReviewNoIdentifiers10kAgainst100k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MatchDuplicates)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
