// Reading the statements of a loaded OFX tree into account and entry
// dictionaries.
#include "tarn/import/ofx_import.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <functional>
#include <new>
#include <unordered_map>

#include "tarn/account/account_settings.h"
#include "tarn/import/import_text_rules.h"
#include "tarn/platform/localized.h"
#include "tarn/platform/number_text.h"

namespace tarn {

// The distinct pairs of type name and direction, in the order first met.
class EntryTypeList {
 public:
  void add(std::string_view name, bool isDeposit) {
    // Looked up by the name as it stands; a key is made only for a new name.
    auto found = seen_.find(name);
    if (found == seen_.end()) found = seen_.emplace(name, 0).first;
    std::uint8_t& seen = found->second;
    const std::uint8_t bit = isDeposit ? 2 : 1;
    if (seen & bit) return;
    seen |= bit;
    plist::Dictionary pair;
    pair.appendSorted("isDeposit", isDeposit);
    pair.appendSorted("name", name);
    types_.push_back(std::move(pair));
  }
  plist::Array array() { return std::move(types_); }

 private:
  struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const {
      return std::hash<std::string_view>{}(name);
    }
  };
  std::unordered_map<std::string, std::uint8_t, NameHash, std::equal_to<>> seen_;
  plist::Array types_;
};

// Where a statement of each kind keeps its account number and transactions.
struct OFXStatementKind {
  std::string_view accountPath, listName, transactionName;
  bool loan;
};

namespace {

constexpr OFXStatementKind kBank{"BANKACCTFROM/ACCTID", "BANKTRANLIST", "STMTTRN", false};
constexpr OFXStatementKind kCard{"CCACCTFROM/ACCTID", "BANKTRANLIST", "STMTTRN", false};
constexpr OFXStatementKind kLoan{"LOANACCTFROM/LOANACCTID", "LOANTRANLIST", "LOANSTMTTRN", true};

// The first child element of each name that a transaction reads, found in
// one pass over its children.
struct TransactionFields {
  XMLNode type, dateUser, datePosted, amount, fitID, checkNumber, refNumber, memo, payee, name,
      extendedName, loanAmount;

  TransactionFields(XMLNode transaction, std::string_view typeName) {
    for (XMLNode child = transaction.firstChild(); child; child = child.nextSibling()) {
      if (child.type() != XMLNodeType::Element) continue;
      const std::string_view name = child.string();
      XMLNode* slot = nullptr;
      if (name == typeName) {
        slot = &type;
      } else if (name == "DTUSER") {
        slot = &dateUser;
      } else if (name == "DTPOSTED") {
        slot = &datePosted;
      } else if (name == "TRNAMT") {
        slot = &amount;
      } else if (name == "FITID") {
        slot = &fitID;
      } else if (name == "CHECKNUM") {
        slot = &checkNumber;
      } else if (name == "REFNUM") {
        slot = &refNumber;
      } else if (name == "MEMO") {
        slot = &memo;
      } else if (name == "PAYEE") {
        slot = &payee;
      } else if (name == "NAME") {
        slot = &this->name;
      } else if (name == "EXTDNAME") {
        slot = &extendedName;
      } else if (name == "LOANTRNAMT") {
        slot = &loanAmount;
      }
      if (slot && !*slot) *slot = child;
    }
  }
};

// The text of an element that holds exactly one child, a text; nullopt for
// any other element or none.
std::optional<std::string_view> simpleText(XMLNode element) {
  if (!element || !element.isSimpleText()) return std::nullopt;
  return element.firstChild().string();
}

// The values of one entry by key, a later value replacing an earlier one,
// made into a dictionary at the end in key order: one allocation, no shifting.
class EntryFields {
 public:
  // In the keys' sorted order.
  enum Key {
    kAmount,
    kCategory,
    kCleared,
    kDate,
    kDescription,
    kFitID,
    kIsDeposit,
    kNotes,
    kNumber,
    kSplits,
    kToFrom,
    kType,
    kKeyCount
  };

  EntryFields() = default;
  EntryFields(const EntryFields&) = delete;
  EntryFields& operator=(const EntryFields&) = delete;
  ~EntryFields() {
    for (int key = 0; key < kKeyCount; ++key) {
      if (present_ & (1u << key)) slot(key).~Value();
    }
  }

  // Builds the key's value in its slot; a later value replaces an earlier one.
  template <class... Args>
  void put(Key key, Args&&... args) {
    const std::uint32_t bit = 1u << key;
    if (present_ & bit) {
      slot(key).~Value();
      present_ &= ~bit;
    }
    new (&storage_[key]) plist::Value(std::forward<Args>(args)...);
    present_ |= bit;
  }

  // To where a swap option sends the text; nowhere for values outside the table.
  void putSwapped(std::int32_t option, std::string_view text) {
    if (option == kOFXSwapNumber) return put(kNumber, LeadingInteger(text));
    if (const int key = textKey(option); key >= 0) put(static_cast<Key>(key), text);
  }
  void putSwapped(std::int32_t option, std::string&& text) {
    if (option == kOFXSwapNumber) return put(kNumber, LeadingInteger(text));
    if (const int key = textKey(option); key >= 0) {
      put(static_cast<Key>(key), std::move(text));
    }
  }

  void addTypeTo(EntryTypeList& types) const {
    if ((present_ & (1u << kType)) && slot(kType).isString()) {
      types.add(slot(kType).stringValue(),
                (present_ & (1u << kIsDeposit)) && slot(kIsDeposit).boolValue());
    }
  }

  // Moves the values out, in key order; the fields are empty afterwards.
  plist::Value dictionary() {
    static constexpr std::string_view kNames[kKeyCount] = {
        "amount",    "category", "cleared", "date",   "description", "fitID",
        "isDeposit", "notes",    "number",  "splits", "toFrom",      "type"};
    plist::Dictionary entry;
    entry.reserve(static_cast<std::size_t>(std::popcount(present_)));
    for (int key = 0; key < kKeyCount; ++key) {
      if (present_ & (1u << key)) {
        entry.appendSorted(kNames[key], std::move(slot(key)));
        slot(key).~Value();
        present_ &= ~(1u << key);
      }
    }
    return entry;
  }

 private:
  static int textKey(std::int32_t option) {
    switch (option) {
      case kOFXSwapCategory:
        return kCategory;
      case kOFXSwapToFrom:
        return kToFrom;
      case kOFXSwapDescription:
        return kDescription;
      case kOFXSwapType:
        return kType;
      case kOFXSwapNotes:
        return kNotes;
      default:
        return -1;
    }
  }

  plist::Value& slot(int key) {
    return *std::launder(reinterpret_cast<plist::Value*>(storage_[key]));
  }
  const plist::Value& slot(int key) const {
    return *std::launder(reinterpret_cast<const plist::Value*>(storage_[key]));
  }

  // Raw slots: a value is built only for the keys an entry has.
  alignas(plist::Value) std::byte storage_[kKeyCount][sizeof(plist::Value)];
  std::uint32_t present_ = 0;
};

std::string_view characterOfEntity(std::string_view name) {
  if (name == "amp") return "&";
  if (name == "lt") return "<";
  if (name == "gt") return ">";
  if (name == "quot") return "\"";
  if (name == "apos") return "'";
  return {};
}

}  // namespace

TARNOFXImport::TARNOFXImport() = default;

void TARNOFXImport::setXMLTree(std::unique_ptr<OFXXMLTree> tree) {
  tree_ = std::move(tree);
  tolerant_ = false;
}

void TARNOFXImport::SetDecimalSeparator(std::optional<std::string> separator) {
  if (separator) decimalSeparator_ = std::move(*separator);
}

void TARNOFXImport::SetThousandsSeparator(std::optional<std::string> separator) {
  if (separator) thousandsSeparator_ = std::move(*separator);
}

void TARNOFXImport::SetOptions(const OFXImportSettings& settings) {
  importZeroAmountsAsDeposits_ = settings.zeroAmountsAsDeposits;
  swapOptions_Name_ = settings.swapName;
  swapOptions_Payee_ = settings.swapPayee;
  swapOptions_Memo_ = settings.swapMemo;
  swapOptions_Type_ = settings.swapTransactionType;
  swapOptions_RefNum_ = settings.swapReferenceNumber;
}

std::string TARNOFXImport::TweakAmountString(std::string_view text) const {
  return tarn::TweakAmountString(text, decimalSeparator_, thousandsSeparator_);
}

DateComponents TARNOFXImport::DateStringComponents(std::string_view text) const {
  return tarn::DateStringComponents(text, dateFormatString_);
}

std::optional<double> PlainAmountValue(std::string_view text) {
  static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  std::size_t i = 0;
  const bool negative = !text.empty() && text.front() == '-';
  if (negative) i = 1;
  std::uint64_t mantissa = 0;
  int digits = 0;
  int decimals = -1;  // digits after the point; -1 before it
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      if (++digits > 15) return std::nullopt;
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(c - '0');
      if (decimals >= 0) ++decimals;
    } else if (c == '.' && decimals < 0) {
      decimals = 0;
    } else {
      return std::nullopt;
    }
  }
  if (digits == 0) return std::nullopt;
  // Both operands are exact, so the quotient is the correctly rounded value.
  const double value = static_cast<double>(mantissa) / kPowersOfTen[decimals < 0 ? 0 : decimals];
  return negative ? -value : value;
}

double TARNOFXImport::amountOfText(std::string_view text) const {
  // The clean-up changes plain text only through a separator that can occur
  // in it: one made of digits, "-" or ".", other than a decimal "." (which
  // it writes back as itself).
  constexpr std::string_view kPlainCharacters = "-.0123456789";
  const bool separatorsKeepPlainText =
      (decimalSeparator_ == "." ||
       decimalSeparator_.find_first_of(kPlainCharacters) == std::string::npos) &&
      thousandsSeparator_.find_first_of(kPlainCharacters) == std::string::npos;
  if (separatorsKeepPlainText) {
    if (const std::optional<double> value = PlainAmountValue(text)) return *value;
  }
  return LeadingDecimalNumber(TweakAmountString(text));
}

DateNumber TARNOFXImport::DateStringToDateNumber(std::string_view text) const {
  DateNumber number = 0;
  int digits = 0;
  for (char c : text) {
    if (c < '0' || c > '9') continue;
    number = number * 10 + (c - '0');
    if (++digits == 8) return number;
  }
  return CalendarDate::now().dateNumber();
}

std::string TARNOFXImport::joinedText(XMLNode element, bool keepAmpersands) const {
  std::string text;
  for (XMLNode child = element.firstChild(); child; child = child.nextSibling()) {
    if (child.type() == XMLNodeType::Text) {
      text.append(child.string());
    } else if (child.type() == XMLNodeType::EntityReference) {
      if (tolerant_) {
        text.append(characterOfEntity(child.string()));
      } else if (keepAmpersands && child.string() == "amp") {
        text.push_back('&');
      }
    }
  }
  return text;
}

plist::Value TARNOFXImport::parse() const {
  // The types are gathered while the entries are made: the same pairs in the
  // same order as EntryTypesInAccounts finds them, without a second walk.
  EntryTypeList typeList;
  plist::Array accounts = accountsCollectingTypes(&typeList);
  plist::Array types = typeList.array();
  plist::Dictionary result;
  result.appendSorted("accounts", std::move(accounts));
  result.appendSorted("types", std::move(types));
  return result;
}

plist::Array TARNOFXImport::Accounts() const {
  return accountsCollectingTypes(nullptr);
}

plist::Array TARNOFXImport::accountsCollectingTypes(EntryTypeList* types) const {
  plist::Array accounts;
  if (!tree_) return accounts;
  const XMLNode ofx = BKXMLTreeAtPath(tree_->document(), "/OFX");
  if (!ofx) return accounts;
  for (XMLNode child = ofx.firstChild(); child; child = child.nextSibling()) {
    if (child.type() != XMLNodeType::Element) continue;
    const std::string_view name = child.string();
    plist::Value account;
    if (name == "BANKMSGSRSV1") {
      account = statementToAccount(BKXMLTreeAtPath(child, "STMTTRNRS/STMTRS"), kBank, types);
    } else if (name == "CREDITCARDMSGSRSV1") {
      account = statementToAccount(BKXMLTreeAtPath(child, "CCSTMTTRNRS/CCSTMTRS"), kCard, types);
    } else if (name == "LOANMSGSRSV1") {
      account =
          statementToAccount(BKXMLTreeAtPath(child, "LOANSTMTTRNRS/LOANSTMTRS"), kLoan, types);
    }
    if (!account.isNil()) accounts.push_back(std::move(account));
  }
  return accounts;
}

plist::Value TARNOFXImport::BankStatementAggregateToAccount(XMLNode statement) const {
  return statementToAccount(statement, kBank, nullptr);
}

plist::Value TARNOFXImport::CreditCardStatementAggregateToAccount(XMLNode statement) const {
  return statementToAccount(statement, kCard, nullptr);
}

plist::Value TARNOFXImport::LoanStatementAggregateToAccount(XMLNode statement) const {
  return statementToAccount(statement, kLoan, nullptr);
}

plist::Value TARNOFXImport::statementToAccount(XMLNode statement, const OFXStatementKind& kind,
                                               EntryTypeList* types) const {
  if (!statement) return {};
  plist::Dictionary account;
  if (const auto accountID = simpleText(BKXMLTreeAtPath(statement, kind.accountPath))) {
    account.insert_or_assign("accountID", plist::Value(*accountID));
  }
  if (const auto currency = simpleText(BKXMLTreeAtPath(statement, "CURDEF"))) {
    account.insert_or_assign("currency", plist::Value(*currency));
  }
  plist::Array entries;
  const XMLNode list = BKXMLTreeAtPath(statement, kind.listName);
  if (list) {
    std::size_t count = 0;
    for (XMLNode child = list.firstChild(); child; child = child.nextSibling()) ++count;
    entries.reserve(count);
    for (XMLNode child = list.firstChild(); child; child = child.nextSibling()) {
      if (child.type() != XMLNodeType::Element || child.string() != kind.transactionName) {
        continue;
      }
      entries.push_back(transactionToEntry(child, kind.loan, types));
    }
  }
  account.insert_or_assign("entries", std::move(entries));
  return account;
}

plist::Value TARNOFXImport::BankTransactionAggregateToEntry(XMLNode transaction) const {
  if (!transaction) return {};
  return transactionToEntry(transaction, false, nullptr);
}

plist::Value TARNOFXImport::LoanTransactionAggregateToEntry(XMLNode transaction) const {
  if (!transaction) return {};
  return transactionToEntry(transaction, true, nullptr);
}

plist::Value TARNOFXImport::transactionToEntry(XMLNode transaction, bool loan,
                                               EntryTypeList* types) const {
  const TransactionFields fields(transaction, loan ? "LOANTRNTYPE" : "TRNTYPE");
  EntryFields entry;
  if (swapOptions_Type_ != kOFXSwapNotRead) {
    if (const auto type = simpleText(fields.type)) entry.putSwapped(swapOptions_Type_, *type);
  }
  // DTUSER wins when present, even when it cannot be read.
  if (const auto date = simpleText(fields.dateUser ? fields.dateUser : fields.datePosted)) {
    entry.put(EntryFields::kDate, DateStringToDateNumber(*date));
  }
  entry.put(EntryFields::kCleared, static_cast<bool>(fields.datePosted));
  if (const auto text = simpleText(fields.amount)) {
    const double amount = amountOfText(*text);
    entry.put(EntryFields::kAmount, amount);
    entry.put(EntryFields::kIsDeposit, amount == 0.0 ? importZeroAmountsAsDeposits_ : amount > 0.0);
  }
  if (loan) entry.put(EntryFields::kSplits, loanSplits(fields.loanAmount));
  if (const auto fitID = simpleText(fields.fitID)) entry.put(EntryFields::kFitID, *fitID);
  if (const auto number = simpleText(fields.checkNumber)) {
    entry.put(EntryFields::kNumber, LeadingInteger(*number));
  }
  if (swapOptions_RefNum_ != kOFXSwapNotRead) {
    if (const auto reference = simpleText(fields.refNumber)) {
      entry.putSwapped(swapOptions_RefNum_, *reference);
    }
  }
  // An element of one text child (the usual case) is its text as it stands.
  const auto putText = [&](std::int32_t option, XMLNode element, bool keepAmpersands) {
    if (element.isSimpleText()) {
      entry.putSwapped(option, element.firstChild().string());
    } else {
      entry.putSwapped(option, joinedText(element, keepAmpersands));
    }
  };
  if (swapOptions_Memo_ != kOFXSwapNotRead && fields.memo) {
    putText(swapOptions_Memo_, fields.memo, true);
  }
  if (swapOptions_Payee_ != kOFXSwapNotRead) {
    if (const XMLNode payeeName = BKXMLTreeAtPath(fields.payee, "NAME")) {
      putText(swapOptions_Payee_, payeeName, false);
    }
  }
  if (swapOptions_Name_ != kOFXSwapNotRead) {
    if (const XMLNode name = fields.extendedName ? fields.extendedName : fields.name) {
      putText(swapOptions_Name_, name, false);
    }
  }
  if (types) entry.addTypeTo(*types);
  return entry.dictionary();
}

plist::Array TARNOFXImport::loanSplits(XMLNode loanAmount) const {
  plist::Array splits;
  if (!loanAmount) return splits;
  // A part counts when it is an element holding exactly one child.
  const auto part = [&](XMLNode parent, std::string_view path) -> std::optional<double> {
    const XMLNode element = BKXMLTreeAtPath(parent, path);
    if (!element) return std::nullopt;
    const XMLNode child = element.firstChild();
    if (!child || child.nextSibling()) return std::nullopt;
    return amountOfText(child.type() == XMLNodeType::Text ? child.string() : std::string_view());
  };
  const auto addSplit = [&](const char* label, double amount) {
    plist::Dictionary split;
    split.appendSorted("amount", amount);
    split.appendSorted("description", Localized(label));
    splits.push_back(std::move(split));
  };
  if (const auto principal = part(loanAmount, "PRINAMT")) addSplit("Principal", *principal);
  if (const auto interest = part(loanAmount, "INTAMT")) addSplit("Interest", *interest);
  if (const auto insurance = part(loanAmount, "INSURANCE")) addSplit("Insurance", *insurance);

  const XMLNode escrow = BKXMLTreeAtPath(loanAmount, "ESCRWAMT");
  const std::optional<double> total = part(escrow, "ESCRWTOTAL");
  if (!total || *total == 0.0) return splits;
  static constexpr std::pair<const char*, const char*> kEscrowParts[] = {
      {"ESCRWTAX", "Escrow Tax"},
      {"ESCRWINS", "Escrow Insurance"},
      {"ESCRWPMI", "Escrow PMI"},
      {"ESCRWFEES", "Escrow Fees"},
      {"ESCRWOTHER", "Escrow Other"}};
  double amounts[5];
  double sum = 0.0;
  for (int i = 0; i < 5; ++i) {
    amounts[i] = part(escrow, kEscrowParts[i].first).value_or(0.0);
    sum += amounts[i];
  }
  // What the parts leave of the total goes to the other escrow.
  if (sum != *total) amounts[4] += *total - sum;
  for (int i = 0; i < 5; ++i) {
    if (amounts[i] != 0.0) addSplit(kEscrowParts[i].second, amounts[i]);
  }
  return splits;
}

plist::Array TARNOFXImport::EntryTypesInAccounts(const plist::Array& accounts) const {
  EntryTypeList types;
  for (const plist::Value& account : accounts) {
    const plist::Value* entries = account.find("entries");
    if (!entries) continue;
    for (const plist::Value& entry : entries->arrayValue()) {
      const plist::Value* type = entry.find("type");
      if (!type || !type->isString()) continue;
      const plist::Value* deposit = entry.find("isDeposit");
      types.add(type->stringValue(), deposit && deposit->boolValue());
    }
  }
  return types.array();
}

}  // namespace tarn
