#include "tarn/reports/summary_accumulators.h"

#include <algorithm>

#include "tarn/account/account.h"
#include "tarn/account/accounts_controller.h"
#include "tarn/account/ledger_entries.h"
#include "tarn/model/account_entry.h"
#include "tarn/model/category.h"
#include "tarn/model/currency.h"
#include "tarn/model/entry_type.h"
#include "tarn/platform/text.h"

namespace tarn::summary_detail {

double ConvertedAmount(const TARNAccountEntry& entry, double amount, const PFCurrency* target) {
  const TARNAccount* account = entry.GetAccount();
  if (!account || !account->currency()) return amount;
  return account->currency()->convertAmount(amount, target);
}

// ---------------------------------------------------------------------------
// Category paths and type names
// ---------------------------------------------------------------------------

namespace {

std::vector<std::string> SplitFullName(const std::string& fullName) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  while (true) {
    const std::size_t colon = fullName.find(':', from);
    if (colon == std::string::npos) {
      parts.push_back(fullName.substr(from));
      return parts;
    }
    parts.push_back(fullName.substr(from, colon - from));
    from = colon + 1;
  }
}

// The account's own categories in pre-order, active ones first.
std::vector<std::shared_ptr<TARNAccountEntryCategory>> LocalCategories(const TARNAccount& account) {
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> all;
  for (const auto* list : {&account.categories(), &account.inactiveCategories()}) {
    for (const auto& category : *list) {
      if (!category) continue;
      all.push_back(category);
      auto descendants = category->allChildren();
      all.insert(all.end(), descendants.begin(), descendants.end());
    }
  }
  return all;
}

}  // namespace

void CategoryPaths::useListOf(const TARNAccountEntry& entry) {
  const TARNAccount* account = entry.GetAccount();
  TARNAccountsController* controller = account ? account->accountsController() : nullptr;
  const void* source = controller ? static_cast<const void*>(controller) : account;
  if (loaded_ && source == source_) return;
  loaded_ = true;
  source_ = source;
  ++generation_;
  parts_.clear();
  std::vector<std::shared_ptr<TARNAccountEntryCategory>> all;
  if (controller) {
    all = controller->allCategories();
  } else if (account) {
    all = LocalCategories(*account);
  }
  for (const auto& category : all) {
    if (!category) continue;
    // The first category with a number wins, as a search of the list would.
    if (parts_.contains(category->number())) continue;
    parts_.emplace(category->number(), SplitFullName(category->fullName()));
  }
}

const std::vector<std::string>& CategoryPaths::partsOf(std::int32_t number) const {
  auto found = parts_.find(number);
  return found != parts_.end() ? found->second : none_;
}

std::uint32_t NameTable::idOf(std::string_view name) {
  auto found = index_.find(name);
  if (found != index_.end()) return found->second;
  const auto id = static_cast<std::uint32_t>(names_.size());
  index_.emplace(names_.emplace_back(name), id);
  return id;
}

void NameTable::rank() {
  std::vector<std::uint32_t> order(names_.size());
  for (std::uint32_t id = 0; id < order.size(); ++id) order[id] = id;
  std::sort(order.begin(), order.end(),
            [this](std::uint32_t a, std::uint32_t b) { return names_[a] < names_[b]; });
  ranks_.assign(names_.size(), 0);
  for (std::uint32_t rank = 0; rank < order.size(); ++rank) ranks_[order[rank]] = rank;
}

std::vector<EntryNames> SummaryNames::number(
    std::span<const std::shared_ptr<TARNAccountEntry>> entries) {
  std::vector<EntryNames> numbers(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const TARNAccountEntry* entry = entries[i].get();
    if (!entry || entry->GetVoid()) continue;
    const TypeKey key{entry->GetAccount(), entry->GetType()};
    auto type = typeIds_.find(key);
    if (type == typeIds_.end()) {
      std::string name;
      if (key.account) {
        if (auto found = key.account->accountEntryTypeForNumber(key.number)) {
          name = found->GetName();
        }
      }
      type = typeIds_.emplace(key, types.idOf(name)).first;
    }
    numbers[i] = {type->second, descriptions.idOf(entry->GetDescription()),
                  toFroms.idOf(entry->GetToFrom())};
  }
  types.rank();
  descriptions.rank();
  toFroms.rank();
  return numbers;
}

// ---------------------------------------------------------------------------
// Keyed rows and the category tree
// ---------------------------------------------------------------------------

TARNSummaryRow& NamedRows::find(std::uint32_t id, bool& made) {
  if (id >= present_.size()) {
    present_.resize(std::max<std::size_t>(names_->size(), id + 1));
    rows_.resize(present_.size());
  }
  made = !present_[id];
  if (made) {
    present_[id] = 1;
    touched_.push_back(id);
  }
  return rows_[id];
}

void NamedRows::add(std::uint32_t id, double amount, bool debit) {
  bool made = false;
  TARNSummaryRow& row = find(id, made);
  if (made) {
    row = TARNSummaryRow{amount, std::nullopt, std::nullopt};
    (debit ? row.debits : row.deposits) = amount;
    return;
  }
  row.amount += amount;
  std::optional<double>& side = debit ? row.debits : row.deposits;
  side = side ? *side + amount : amount;
}

void NamedRows::merge(std::uint32_t id, const TARNSummaryRow& other) {
  bool made = false;
  TARNSummaryRow& row = find(id, made);
  if (made) {
    row = other;
    return;
  }
  row.amount += other.amount;
  if (other.debits) row.debits = row.debits ? *row.debits + *other.debits : *other.debits;
  if (other.deposits) {
    row.deposits = row.deposits ? *row.deposits + *other.deposits : *other.deposits;
  }
}

void NamedRows::mergeInto(NamedRows& other) const {
  for (std::uint32_t id : touched_) other.merge(id, rows_[id]);
}

std::vector<TARNSummaryNamedRow> NamedRows::take() {
  std::sort(touched_.begin(), touched_.end(), [this](std::uint32_t a, std::uint32_t b) {
    return names_->rankOf(a) < names_->rankOf(b);
  });
  std::vector<TARNSummaryNamedRow> rows;
  rows.reserve(touched_.size());
  for (std::uint32_t id : touched_) {
    rows.push_back({names_->nameOf(id), rows_[id]});
    present_[id] = 0;
  }
  touched_.clear();
  return rows;
}

std::uint32_t CategoryTree::child(std::uint32_t parent, std::string_view name) {
  std::vector<std::uint32_t>& level = parent == kTop ? top_ : nodes_[parent].children;
  for (std::uint32_t node : level) {
    if (CaseInsensitiveEqual(nodes_[node].name, name)) return node;
  }
  const auto node = static_cast<std::uint32_t>(nodes_.size());
  nodes_.push_back({std::string(name), TARNSummaryRow{}, {}});
  // nodes_ may have moved: find the level again.
  (parent == kTop ? top_ : nodes_[parent].children).push_back(node);
  return node;
}

TARNSummaryCategoryRow CategoryTree::build(std::uint32_t node) {
  TARNSummaryCategoryRow row{std::move(nodes_[node].name), nodes_[node].row, {}};
  row.children.reserve(nodes_[node].children.size());
  for (std::uint32_t child : nodes_[node].children) row.children.push_back(build(child));
  return row;
}

std::vector<TARNSummaryCategoryRow> CategoryTree::take() {
  std::vector<TARNSummaryCategoryRow> rows;
  rows.reserve(top_.size());
  for (std::uint32_t node : top_) rows.push_back(build(node));
  clear();
  return rows;
}

void CategoryTree::clear() {
  nodes_.clear();
  top_.clear();
}

// ---------------------------------------------------------------------------
// One period
// ---------------------------------------------------------------------------

void PeriodAccumulator::start(const TARNAccountEntry* first, double startBalance) {
  ++period_;
  running_ = startBalance;
  if (first) paths_.useListOf(*first);
}

void PeriodAccumulator::addToRow(TARNSummaryRow& row, double amount, bool debit) {
  row.amount += amount;
  std::optional<double>& side = debit ? row.debits : row.deposits;
  side = side ? *side + amount : amount;
}

void PeriodAccumulator::fileCategory(std::int32_t number, double amount, bool debit) {
  Filed& filed = filed_[number];
  if (filed.period != period_ || filed.generation != paths_.generation()) {
    filed.period = period_;
    filed.generation = paths_.generation();
    filed.nodes.clear();
    std::uint32_t node = CategoryTree::kTop;
    for (const std::string& part : paths_.partsOf(number)) {
      node = categories_.child(node, part);
      filed.nodes.push_back(node);
    }
  }
  if (parentsInclude_) {
    for (std::uint32_t node : filed.nodes) addToRow(categories_.row(node), amount, debit);
  } else {
    addToRow(categories_.row(filed.nodes.back()), amount, debit);
  }
}

void PeriodAccumulator::add(const TARNAccountEntry& entry, const EntryNames& names) {
  if (entry.GetVoid()) return;
  const double amount = ConvertedAmount(entry, entry.GetAmount(), target_);
  totals_.total += amount;
  if (entry.IsDeposit()) {
    totals_.depositsTotal += amount;
  } else if (entry.IsDebit()) {
    totals_.debitsTotal += amount;
  }
  (entry.GetCleared() ? totals_.resolvedTotal : totals_.unresolvedTotal) += amount;
  (entry.GetTaxDeductible() ? totals_.taxDeductibleTotal : totals_.taxableTotal) += amount;
  ++totals_.entryCount;
  running_ += amount;

  const bool debit = entry.IsDebit();
  types_.add(names.type, amount, debit);
  descriptions_.add(names.description, amount, debit);
  toFroms_.add(names.toFrom, amount, debit);

  const auto& items = entry.splitLineItems();
  if (items.empty()) {
    fileCategory(entry.GetCategory(), amount, debit);
    return;
  }
  for (const auto& item : items) {
    if (!item) continue;
    fileCategory(item->category(), ConvertedAmount(entry, item->amount(), target_), debit);
  }
}

void PeriodAccumulator::finish(TARNSummaryPeriod& period, RangeAccumulator* range) {
  if (range) {
    types_.mergeInto(range->types_);
    descriptions_.mergeInto(range->descriptions_);
    toFroms_.mergeInto(range->toFroms_);
  }
  period.totals = totals_;
  period.runningTotal = running_;
  period.subtotals.types = types_.take();
  period.subtotals.descriptions = descriptions_.take();
  period.subtotals.toFroms = toFroms_.take();
  period.subtotals.categories = categories_.take();
  totals_ = TARNSummaryTotals{};
  running_ = 0.0;
  if (range) range->add(period);
}

// ---------------------------------------------------------------------------
// The whole range
// ---------------------------------------------------------------------------

void RangeAccumulator::mergeCategories(const std::vector<TARNSummaryCategoryRow>& rows,
                                       std::uint32_t parent) {
  for (const TARNSummaryCategoryRow& row : rows) {
    const std::uint32_t node = categories_.child(parent, row.subtotalName);
    TARNSummaryRow& overall = categories_.row(node);
    const double amount = row.row.amount;
    overall.amount += amount;
    // By the sign of the period row's amount, not by its own debits and deposits.
    std::optional<double>& side = amount >= 0 ? overall.deposits : overall.debits;
    side = side ? *side + amount : amount;
    mergeCategories(row.children, node);
  }
}

void RangeAccumulator::add(const TARNSummaryPeriod& period) {
  const TARNSummaryTotals& t = period.totals;
  totals_.entryCount += t.entryCount;
  totals_.total += t.total;
  totals_.debitsTotal += t.debitsTotal;
  totals_.depositsTotal += t.depositsTotal;
  totals_.resolvedTotal += t.resolvedTotal;
  totals_.unresolvedTotal += t.unresolvedTotal;
  totals_.taxableTotal += t.taxableTotal;
  totals_.taxDeductibleTotal += t.taxDeductibleTotal;
  mergeCategories(period.subtotals.categories, CategoryTree::kTop);
}

void RangeAccumulator::finish(TARNSummaryResult& result) {
  result.totals = totals_;
  result.subtotals.types = types_.take();
  result.subtotals.descriptions = descriptions_.take();
  result.subtotals.toFroms = toFroms_.take();
  result.subtotals.categories = categories_.take();
}

// ---------------------------------------------------------------------------
// Balances at the period bounds
// ---------------------------------------------------------------------------

BalanceTable::BalanceTable(const std::vector<TARNAccount*>& accounts, const PFCurrency* target,
                           std::vector<DateNumber> dates)
    : dates_(std::move(dates)), balances_(dates_.size(), 0.0) {
  std::sort(dates_.begin(), dates_.end());
  dates_.erase(std::unique(dates_.begin(), dates_.end()), dates_.end());
  balances_.assign(dates_.size(), 0.0);
  // sums[k]: the entries dated from dates_[k - 1] up to the day before dates_[k].
  std::vector<double> sums(dates_.size() + 1);
  for (const TARNAccount* account : accounts) {
    if (!account) continue;
    std::fill(sums.begin(), sums.end(), 0.0);
    ForEachLedgerEntry(*account, [&](const std::shared_ptr<TARNAccountEntry>& entry) {
      if (entry->GetVoid()) return;
      const auto slot = std::upper_bound(dates_.begin(), dates_.end(), entry->GetDate());
      sums[static_cast<std::size_t>(slot - dates_.begin())] += entry->GetAmount();
    });
    const PFCurrency* from = account->currency().get();
    double balance = account->GetStartingBalance();
    for (std::size_t k = 0; k < dates_.size(); ++k) {
      balance += sums[k];
      balances_[k] += from ? from->convertAmount(balance, target) : balance;
    }
  }
}

double BalanceTable::before(DateNumber date) const {
  const auto found = std::lower_bound(dates_.begin(), dates_.end(), date);
  if (found == dates_.end() || *found != date) return 0.0;
  return balances_[static_cast<std::size_t>(found - dates_.begin())];
}

}  // namespace tarn::summary_detail
