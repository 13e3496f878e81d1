// A book file from arbitrary bytes, opened as the tarn program opens one: a
// book of any number of accounts, or a bare account dictionary of any format
// version, XML or binary. Opening may fail only with tarn::FileError. What
// opens is then used as a command would use it (balances, running balances,
// the register and reconcile views, each account's summaries) and saved; the
// saved file opens again and saves to the same property list.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fuzz_support.h"
#include "tarn/account/account.h"
#include "tarn/book/book.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/error.h"
#include "tarn/platform/log.h"
#include "tarn/platform/plist_file.h"
#include "tarn/reports/account_summary.h"
#include "tarn/reports/summary_periods.h"

using tarn::FileError;
using tarn::TARNAccount;
using tarn::TARNBook;
using tarn::fuzz::Require;
namespace plist = tarn::plist;

namespace {

// Files of this process: the input, and the book saved from it.
std::string gInputPath;
std::string gSavedPath;

void WriteBytes(const std::string& path, const std::uint8_t* data, std::size_t size) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  Require(file != nullptr, "cannot write the input file");
  if (size > 0) Require(std::fwrite(data, 1, size, file) == size, "short write of the input");
  std::fclose(file);
}

// A summary's periods over its stored range, at most `limit`; summaries whose
// range would cut into more (a daily summary over centuries) are left out,
// as their cost says nothing about their correctness.
bool FewPeriods(tarn::TARNAccountSummary& summary, std::size_t limit) {
  summary.updateDateRange();
  const auto start = tarn::CalendarDate::dateWithDateNumber(summary.startDate());
  const auto end = tarn::CalendarDate::dateWithDateNumber(summary.endDate());
  if (end < start) return true;
  const int years = end.yearOfCommonEra() - start.yearOfCommonEra();
  switch (summary.subtotalPeriodStyle()) {
    case tarn::kSummaryPeriodDay:
      return years < 2;
    case tarn::kSummaryPeriodWeek:
      return years < 20;
    default:
      return static_cast<std::size_t>(years) * 12 < limit;
  }
}

void UseAccount(TARNAccount& account) {
  account.Authenticate(account.GetPassword());
  account.GetBalance();
  account.GetResolvedBalance();
  account.GetUnresolvedBalance();
  account.GetTodaysBalance();
  account.CacheRunningBalances();
  const auto all = account.GetAllEntries();
  Require(account.entryFilteredEntries().size() <= all.size(), "register view grew");
  Require(account.reconcileFilteredEntries().size() <= all.size(), "reconcile view grew");
  for (const auto& summary : account.accountSummaries()) {
    summary->setEntries(all);
    summary->setAccounts({&account});
    if (!FewPeriods(*summary, 2000)) continue;
    const auto result = summary->ComputeResult();
    Require(static_cast<std::size_t>(result->totals.entryCount) <= 2 * all.size(),
            "a summary counted more entries than there are (twice, for both-sided ones)");
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  tarn::SetLogSink([](std::string_view) {});
  tarn::CalendarDate::overrideNow(tarn::CalendarDate(2024, 6, 15, 10, 30, 0));
  const char* folder = std::getenv("TMPDIR");
  const std::string base =
      std::string(folder && *folder ? folder : "/tmp") + "/fuzz_book." + std::to_string(::getpid());
  gInputPath = base + ".input";
  gSavedPath = base + ".saved";
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  WriteBytes(gInputPath, data, size);
  std::unique_ptr<TARNBook> book;
  try {
    book = TARNBook::open(gInputPath);
  } catch (const FileError&) {
    return 0;
  }
  Require(book != nullptr, "open gave no book and no error");
  for (const auto& account : book->accounts()) {
    // A smart folder's "any" group that runs out of conditions fails as an
    // index out of range: the one failure the filters let escape, on purpose.
    try {
      UseAccount(*account);
    } catch (const std::out_of_range&) {
    }
  }

  // What was opened saves, the saved file opens, and it saves the same again.
  ::unlink(gSavedPath.c_str());
  book->saveAs(gSavedPath);
  auto again = TARNBook::open(gSavedPath);
  Require(again->openedBareAccount() == book->openedBareAccount(), "a bare account became a book");
  Require(again->accounts().size() == book->accounts().size(), "accounts lost in a save");
  const plist::Value first = plist::ReadFile(gSavedPath);
  again->saveAs(gSavedPath, true);
  const plist::Value second = plist::ReadFile(gSavedPath);
  std::string where;
  if (!tarn::fuzz::SameValue(first, second, tarn::fuzz::DateRule::Exact, where)) {
    tarn::fuzz::Fail("a second open and save differs at " + where);
  }
  ::unlink(TARNBook::BackupPath(gSavedPath).c_str());
  return 0;
}
