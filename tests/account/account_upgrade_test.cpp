#include "tarn/account/account_upgrade.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "account_test_support.h"

namespace tarn {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;
using testing::CapturedLog;
using Upgrade = AccountDictionaryUpgrade;
using Numbers = std::vector<std::int64_t>;
using Lines = std::vector<std::string>;

constexpr std::int64_t k15March2007 = 1173916800;  // seconds since 1970, midnight
const std::string kInit = " in -[TARNAccount initWithDictionary:]";

// Old preferences handed to the version-2 step, restored on leaving the scope.
class PreferencesScope {
 public:
  explicit PreferencesScope(Value preferences)
      : previous_(Upgrade::SetPreferencesLoader([preferences] { return preferences; })) {}
  ~PreferencesScope() { Upgrade::SetPreferencesLoader(std::move(previous_)); }

 private:
  Upgrade::PreferencesLoader previous_;
};

Value entry(std::int64_t number, std::int32_t flags = 0) {
  return Dictionary{{"number", number}, {"entryFlags", flags}};
}

Numbers numbersOf(const Value& account) {
  Numbers numbers;
  for (const Value& e : account.find("entries")->arrayValue())
    numbers.push_back(e.find("number")->longValue());
  return numbers;
}

const Value& entryAt(const Value& account, std::size_t index) {
  return account.find("entries")->arrayValue().at(index);
}

TEST(AccountUpgrade, VersionZeroAbsentOrCurrentTouchesOnlyVersionAndNumber) {
  for (Value notAnAccount : {Value(), Value(Array{Value(1)})}) {
    const Value before = notAnAccount;
    EXPECT_EQ(Upgrade::UpdateAccountDictionary(notAnAccount), nullptr);
    EXPECT_EQ(notAnAccount, before);
  }
  // Version 0 (or none) only gets its number and version; 8 and later fall
  // through every step, and a later version is brought back to 8.
  const Value entries = Array{entry(5), entry(5)};
  const std::pair<Value, Value> cases[] = {
      {Value(), Dictionary{{"entries", entries}, {"version", 8}, {"number", -1}}},
      {0, Dictionary{{"entries", entries}, {"version", 8}, {"number", -1}}},
      {8, Dictionary{{"entries", entries}, {"version", 8}}},
      {9, Dictionary{{"entries", entries}, {"version", 8}}}};
  for (const auto& [version, expected] : cases) {
    Value account = Dictionary{{"entries", entries}};
    if (!version.isNil()) account.set("version", version);
    EXPECT_EQ(Upgrade::UpdateAccountDictionary(account), &account);
    EXPECT_EQ(account, expected);
  }
}

TEST(AccountUpgrade, EntryNumbersOfVersionOneBecomeUnique) {
  // Fresh numbers start above the highest number of all; a missing number reads as 0.
  const std::vector<std::pair<Array, Numbers>> cases = {
      {{entry(5), entry(3), entry(5)}, {5, 3, 6}},
      {{entry(2), entry(2), entry(2), entry(1), entry(9)}, {2, 10, 11, 1, 9}},
      {{entry(0), Value(Dictionary{}), entry(-1), entry(-1)}, {0, 1, -1, 2}}};
  for (const auto& [entries, expected] : cases) {
    Value account = Dictionary{{"entries", entries}};
    Upgrade::makeEntryNumbersUnique(account);
    EXPECT_EQ(numbersOf(account), expected);
  }
}

TEST(AccountUpgrade, SharedNonTransferNumbersAreRenumberedFromVersionThree) {
  struct Case {
    std::optional<int> numberCount;
    Array entries;
    Numbers numbers;
    int numberCountAfter;
  };
  const Case cases[] = {
      // The first 7 is examined while its partner still carries 7, the second
      // when nobody else does.
      {10, {entry(7), entry(3), entry(7)}, {12, 3, 7}, 12},
      // A transfer counts as a partner but keeps its own number.
      {std::nullopt, {entry(5), entry(5, 4), entry(5), entry(5)}, {9, 5, 11, 12}, 12},
      {2, {entry(1), entry(4)}, {1, 4}, 5}};
  for (const Case& c : cases) {
    Value account = Dictionary{{"entries", c.entries}};
    if (c.numberCount) account.set("numberCount", *c.numberCount);
    Upgrade::renumberSharedNonTransferNumbers(account);
    EXPECT_EQ(numbersOf(account), c.numbers);
    EXPECT_EQ(*account.find("numberCount"), Value(c.numberCountAfter));
  }
}

TEST(AccountUpgrade, StepsLogMissingOrMalformedEntriesAndGoOn) {
  CapturedLog log;
  Value account = Dictionary{{"startingBalance", 1.005}};
  Upgrade::makeEntryNumbersUnique(account);
  Upgrade::roundAmountsToCents(account);
  account.set("entries", "not an array");
  Upgrade::renumberSharedNonTransferNumbers(account);
  Upgrade::convertSecondsToDateNumbers(account);
  const std::string missing = "Account does not have entries" + kInit;
  const std::string wrong = "Account entries are in the wrong format" + kInit;
  EXPECT_EQ(log.lines(), (Lines{missing, missing, wrong, wrong}));
  EXPECT_EQ(*account.find("startingBalance"), Value(1.01));
  EXPECT_EQ(account.find("numberCount"), nullptr);
}

TEST(AccountUpgrade, VersionTwoTakesTypesFromOldPreferencesAndBuildsFlags) {
  const Value types = Array{Value(Dictionary{{"name", "Check"}, {"number", 4}})};
  const Value inactive = Array{Value(Dictionary{{"name", "Telex"}, {"number", 20}})};
  {
    PreferencesScope preferences(Dictionary{{"types", types}, {"inactiveTypes", inactive}});
    CapturedLog log;
    Value account = Dictionary{
        {"name", "Savings"},
        {"types", Array{}},
        {"entries", Array{Value(Dictionary{{"number", 42}, {"isDebit", true}, {"isCheck", true}}),
                          Value(Dictionary{{"number", 7}, {"isDebit", false}, {"isCheck", true}}),
                          Value(Dictionary{{"number", 9}, {"isDebit", 1}}),
                          Value(Dictionary{{"number", -3}}), Value("not an entry")}}};
    Upgrade::importTypesFromOldPreferences(account);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(*account.find("types"), types);
    EXPECT_EQ(*account.find("inactiveTypes"), inactive);
    std::vector<std::int32_t> flags;
    for (std::size_t i = 0; i < 4; ++i)
      flags.push_back(entryAt(account, i).find("entryFlags")->intValue());
    EXPECT_EQ(flags, (std::vector<std::int32_t>{17, 18, 1, 2}));
    EXPECT_EQ(*account.find("numberCount"), Value(42));
  }
  PreferencesScope preferences(Dictionary{{"types", types}});
  CapturedLog log;
  Value account = Dictionary{{"name", "Savings"}, {"inactiveTypes", inactive}};
  Upgrade::importTypesFromOldPreferences(account);
  account.set("entries", Dictionary{});
  Upgrade::importTypesFromOldPreferences(account);
  const std::string noInactive =
      "No inactiveTypes found while upgrading account Savings.  This could cause inconsistent "
      "behavior.";
  const std::string where = " in TARNAccount:UpdateAccountDictionary:FromVersion";
  EXPECT_EQ(log.lines(), (Lines{noInactive, "Account does not have entries" + where, noInactive,
                                "Account entries are in the wrong format" + where}));
  // What the account had is kept when the preferences have nothing to give.
  EXPECT_EQ(*account.find("inactiveTypes"), inactive);
  EXPECT_EQ(*account.find("numberCount"), Value(0));
}

// A temporary home directory for the tests that read the real preferences file.
struct HomeScope {
  const char* saved = std::getenv("HOME");
  std::optional<std::string> previous = saved ? std::optional<std::string>(saved) : std::nullopt;
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("tarn-upgrade-home-" + std::to_string(::getpid()));
  HomeScope() {
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
    setenv("HOME", path.c_str(), 1);
  }
  ~HomeScope() {
    previous ? setenv("HOME", previous->c_str(), 1) : unsetenv("HOME");
    std::filesystem::remove_all(path);
  }
};

TEST(AccountUpgrade, OldPreferencesFileUnderTheHomeDirectory) {
  HomeScope home;
  const std::string path = Upgrade::OldPreferencesPath();
  EXPECT_EQ(path, (home.path / "Library/Preferences/Brisal/Pennyfold Preferences").string());
  {  // Missing: the reason is logged, then the step goes on as with empty preferences.
    CapturedLog log;
    Value account =
        Dictionary{{"name", "Card"}, {"entries", Array{Value(Dictionary{{"isDebit", true}})}}};
    Upgrade::importTypesFromOldPreferences(account);
    ASSERT_EQ(log.lines().size(), 2u);
    const std::string reason =
        "Old preferences could not be read while upgrading account Card: " + path + ": ";
    EXPECT_EQ(log.lines()[0].rfind(reason, 0), 0u) << log.lines()[0];
    EXPECT_EQ(log.lines()[1],
              "No inactiveTypes found while upgrading account Card.  This could cause inconsistent "
              "behavior.");
    EXPECT_EQ(*entryAt(account, 0).find("entryFlags"), Value(1));
    EXPECT_EQ(account.find("types"), nullptr);
  }
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path) << R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
  <key>types</key><array><dict><key>name</key><string>ATM</string><key>number</key><integer>0</integer></dict></array>
  <key>inactiveTypes</key><array/>
</dict></plist>
)";
  CapturedLog log;
  Value account = Dictionary{{"name", "Card"}, {"entries", Array{}}};
  Upgrade::importTypesFromOldPreferences(account);
  ASSERT_TRUE(log.lines().empty()) << log.lines().front();
  EXPECT_EQ(*account.find("types"),
            Value(Array{Value(Dictionary{{"name", "ATM"}, {"number", 0}})}));
  EXPECT_EQ(*account.find("inactiveTypes"), Value(Array{}));
}

// The two numbering steps written the slow, literal way, to check the fast ones against.
Numbers uniqueNumbersByListSearch(Numbers numbers) {
  std::int64_t maximum = 0;
  Numbers seen;
  std::vector<std::size_t> duplicates;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (numbers[i] <= maximum && std::find(seen.begin(), seen.end(), numbers[i]) != seen.end()) {
      duplicates.push_back(i);
    } else {
      seen.push_back(numbers[i]);
      maximum = std::max(maximum, numbers[i]);
    }
  }
  for (std::size_t i : duplicates) numbers[i] = ++maximum;
  return numbers;
}

Numbers renumberByPairwiseComparison(Numbers numbers, const std::vector<bool>& transfer,
                                     std::int64_t numberCount) {
  std::int64_t next = numberCount;
  for (std::int64_t number : numbers) next = std::max(next, number);
  ++next;
  for (std::size_t a = 0; a < numbers.size(); ++a) {
    if (transfer[a]) continue;
    const std::int64_t before = numbers[a];
    for (std::size_t b = 0; b < numbers.size(); ++b) {
      if (b != a && numbers[b] == before) numbers[a] = ++next;
    }
  }
  numbers.push_back(next);  // numberCount last
  return numbers;
}

TEST(AccountUpgrade, NumberingStepsAgreeWithPairwiseComparisonOnRandomData) {
  std::mt19937 random(20070315);
  for (int trial = 0; trial < 100; ++trial) {
    const std::size_t count = random() % 60;
    Numbers numbers;
    std::vector<bool> transfer;
    Array entries;
    for (std::size_t i = 0; i < count; ++i) {
      numbers.push_back(static_cast<std::int64_t>(random() % 25) - 3);  // many repeats, some <= 0
      transfer.push_back(random() % 4 == 0);
      entries.push_back(entry(numbers.back(), transfer.back() ? 4 | 16 : 1));
    }
    const std::int64_t numberCount = random() % 30;
    Value account = Dictionary{{"entries", entries}};
    Upgrade::makeEntryNumbersUnique(account);
    ASSERT_EQ(numbersOf(account), uniqueNumbersByListSearch(numbers)) << "trial " << trial;
    account = Dictionary{{"numberCount", numberCount}, {"entries", entries}};
    Upgrade::renumberSharedNonTransferNumbers(account);
    Numbers fast = numbersOf(account);
    fast.push_back(account.find("numberCount")->longValue());
    ASSERT_EQ(fast, renumberByPairwiseComparison(numbers, transfer, numberCount))
        << "trial " << trial;
  }
}

TEST(AccountUpgrade, MoneyIsRoundedToCentsFromVersionFour) {
  Value account = Dictionary{
      {"startingBalance", 10.125},
      {"entries",
       Array{Value(Dictionary{
                 {"amount", 2.675},
                 {"split", Dictionary{{"amounts", Array{Value(1.005), Value("x"), Value(3)}}}}}),
             Value(Dictionary{{"amount", -0.004}})}}};
  Upgrade::roundAmountsToCents(account);
  EXPECT_EQ(*account.find("startingBalance"), Value(10.13));
  EXPECT_EQ(*entryAt(account, 0).find("amount"), Value(2.68));
  EXPECT_EQ(*entryAt(account, 0).find("split")->find("amounts"),
            Value(Array{Value(1.01), Value("x"), Value(3.0)}));
  EXPECT_EQ(entryAt(account, 1).find("amount")->doubleValue(), 0.0);
  Value textBalance = Dictionary{{"startingBalance", "12.345"}, {"entries", Array{}}};
  Upgrade::roundAmountsToCents(textBalance);
  EXPECT_EQ(*textBalance.find("startingBalance"), Value("12.345"));
}

TEST(AccountUpgrade, SecondsBecomeDateNumbersFromVersionSix) {
  Value account = Dictionary{
      {"entries", Array{Value(Dictionary{{"date", k15March2007 + 86399}}),
                        Value(Dictionary{{"date", 0.0}}), Value(Dictionary{})}},
      {"schedules",
       Array{
           Value(Dictionary{
               {"date", k15March2007},
               {"repeatUntilType", 3},
               {"repeatUntil", k15March2007 + 86400},
               {"committedDates", Array{Value(k15March2007), Value(k15March2007 + 86400)}}}),
           Value(Dictionary{{"date", k15March2007}, {"repeatUntilType", 2}, {"repeatUntil", 3}})}},
      {"accountSummaries", Array{Value(Dictionary{{"startDate", k15March2007},
                                                  {"endDate", k15March2007 + 3 * 86400}})}}};
  Upgrade::convertSecondsToDateNumbers(account);
  EXPECT_EQ(*entryAt(account, 0).find("date"), Value(20070315));
  EXPECT_EQ(*entryAt(account, 1).find("date"), Value(19700101));
  EXPECT_EQ(entryAt(account, 2).find("date"), nullptr);
  const Array& schedules = account.find("schedules")->arrayValue();
  EXPECT_EQ(*schedules[0].find("date"), Value(20070315));
  // The until value is converted only when it is itself 3, whatever the until type says.
  EXPECT_EQ(*schedules[0].find("repeatUntil"), Value(k15March2007 + 86400));
  EXPECT_EQ(*schedules[0].find("committedDates"), Value(Array{Value(20070315), Value(20070316)}));
  EXPECT_EQ(*schedules[1].find("repeatUntil"), Value(19700101));
  const Value& summary = account.find("accountSummaries")->arrayValue()[0];
  EXPECT_EQ(*summary.find("startDate"), Value(20070315));
  EXPECT_EQ(*summary.find("endDate"), Value(20070318));

  CapturedLog log;
  Value malformed = Dictionary{{"entries", Array{}}, {"schedules", 1}, {"accountSummaries", "x"}};
  Upgrade::convertSecondsToDateNumbers(malformed);
  Upgrade::convertTransfersAndSplits(malformed);
  EXPECT_EQ(log.lines(), (Lines{"Account schedules are in the wrong format" + kInit,
                                "Account Summaries are in the wrong format" + kInit,
                                "Schedules are in the wrong format" + kInit}));
}

Value oldSplit(Array descriptions, Array toFroms, Array amounts) {
  return Dictionary{{"descriptions", std::move(descriptions)},
                    {"toFrom", std::move(toFroms)},
                    {"amounts", std::move(amounts)}};
}

TEST(AccountUpgrade, TransfersBecomeLinksAndSplitsLineItemsFromVersionSeven) {
  const Array tenEmpty(10, Value(""));
  Array amounts(10, Value(0.0));
  amounts[0] = 10.0;
  amounts[2] = 5.0;
  Array descriptions = tenEmpty;
  descriptions[4] = "Stamps";  // a described slot stays even without an amount
  Value account = Dictionary{
      {"entries",
       Array{Value(Dictionary{{"entryFlags", 1}, {"split", oldSplit(tenEmpty, tenEmpty, amounts)}}),
             Value(Dictionary{{"entryFlags", 4 | 8 | 2},
                              {"type", 9},
                              {"transferEntry", 31},
                              {"transferAccount", 2},
                              {"split", oldSplit(descriptions, {Value("Shop")}, {Value(-7.5)})}}),
             Value(Dictionary{{"entryFlags", 4 | 1 | 16}, {"type", 12}}),
             Value(Dictionary{{"split", oldSplit(tenEmpty, tenEmpty, amounts)}})}},
      {"schedules", Array{Value(Dictionary{{"entryFlags", 4},
                                           {"transferEntry", 31},
                                           {"transferAccount", 2},
                                           {"split", oldSplit({}, {}, {Value(-3.0)})}})}}};
  Upgrade::convertTransfersAndSplits(account);

  EXPECT_EQ(
      *entryAt(account, 0).find("splitLineItems"),
      Value(Array{Value(Dictionary{{"amount", -10.0}}), Value(Dictionary{{"amount", -5.0}})}));
  const Value& out = entryAt(account, 1);
  EXPECT_EQ(*out.find("entryFlags"), Value(4 | 8 | 1));
  EXPECT_EQ(*out.find("linkedEntry"), Value(31));
  EXPECT_EQ(*out.find("linkedAccount"), Value(2));
  EXPECT_EQ(*out.find("type"), Value(-1));
  EXPECT_EQ(*out.find("splitLineItems"),
            Value(Array{Value(Dictionary{{"toFrom", "Shop"}, {"amount", -7.5}}),
                        Value(Dictionary{{"description", "Stamps"}})}));
  const Value& in = entryAt(account, 2);
  EXPECT_EQ(*in.find("entryFlags"), Value(4 | 2 | 16));
  EXPECT_EQ(in.find("linkedEntry"), nullptr);
  EXPECT_EQ(*in.find("type"), Value(-1));
  EXPECT_EQ(entryAt(account, 3).find("splitLineItems"), nullptr);  // no flags: untouched

  const Value& schedule = account.find("schedules")->arrayValue()[0];
  EXPECT_EQ(*schedule.find("entryFlags"), Value(4 | 2));
  EXPECT_EQ(schedule.find("linkedEntry"), nullptr);
  EXPECT_EQ(*schedule.find("linkedAccount"), Value(2));
  EXPECT_EQ(*schedule.find("splitLineItems"), Value(Array{Value(Dictionary{{"amount", -3.0}})}));
}

TEST(AccountUpgrade, EachVersionEntersTheCascadeAtItsOwnStep) {
  PreferencesScope preferences(Dictionary{{"types", Array{}}, {"inactiveTypes", Array{}}});
  // Duplicate numbers (steps 1 and 3), old debit flags (2), an unrounded
  // amount (4), a date in seconds (5), an old split (6).
  auto old = [](std::int64_t number) {
    return Value(Dictionary{{"number", number},
                            {"isDebit", true},
                            {"entryFlags", 2},
                            {"amount", 1.005},
                            {"date", k15March2007},
                            {"split", Dictionary{{"amounts", Array{Value(4.0)}}}}});
  };
  struct Expected {
    std::int32_t version;
    Numbers numbers;
    std::optional<std::int64_t> numberCount;
    std::int32_t flags;
    double amount;
    std::int64_t date;
    bool lineItems;
  };
  const std::vector<Expected> table = {
      {1, {5, 3, 6}, 7, 1, 1.01, 20070315, true},  // step 2 counts 6, step 3 one above
      {2, {7, 3, 5}, 7, 1, 1.01, 20070315, true},  // step 2 counts 5, step 3 renumbers the first 5
      {3, {7, 3, 5}, 7, 2, 1.01, 20070315, true},
      {4, {5, 3, 5}, std::nullopt, 2, 1.01, 20070315, true},
      {6, {5, 3, 5}, std::nullopt, 2, 1.005, 20070315, true},
      {7, {5, 3, 5}, std::nullopt, 2, 1.005, k15March2007, true},
      {8, {5, 3, 5}, std::nullopt, 2, 1.005, k15March2007, false},
  };
  for (const Expected& expected : table) {
    SCOPED_TRACE("version " + std::to_string(expected.version));
    Value account = Dictionary{{"version", expected.version},
                               {"name", "Probe"},
                               {"entries", Array{old(5), old(3), old(5)}}};
    ASSERT_EQ(Upgrade::UpdateAccountDictionary(account), &account);
    EXPECT_EQ(*account.find("version"), Value(8));
    EXPECT_EQ(numbersOf(account), expected.numbers);
    const Value* numberCount = account.find("numberCount");
    EXPECT_EQ(numberCount ? std::optional(numberCount->longValue()) : std::nullopt,
              expected.numberCount);
    const Value& first = entryAt(account, 0);
    EXPECT_EQ(first.find("entryFlags")->intValue(), expected.flags);
    EXPECT_EQ(first.find("amount")->doubleValue(), expected.amount);
    EXPECT_EQ(first.find("date")->longValue(), expected.date);
    EXPECT_EQ(first.find("splitLineItems") != nullptr, expected.lineItems);
  }
}

}  // namespace
}  // namespace tarn
