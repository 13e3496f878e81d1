// TARNOFXImport reads an OFX statement download, the SGML form of OFX 1 or the
// XML form of OFX 2, and turns its bank, credit-card and loan statements into
// plain account dictionaries holding import entry dictionaries. It owns the
// parsed XML tree and its options; it never touches an account. The host makes
// one per file, sets the account's remembered options, and calls parse().
//
// Only file loading is offered. The desktop class also declares
// initWithString: and initWithContentsOfFile:encoding:, but they forward to a
// data-string setter the class does not have and so always end in a failure;
// they are left out here on purpose.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarn/import/import_text_rules.h"
#include "tarn/import/ofx_xml_tree.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/value.h"

namespace tarn {

struct OFXImportSettings;
class EntryTypeList;
struct OFXStatementKind;

// Where a swap option sends the text of an OFX field.
inline constexpr std::int32_t kOFXSwapNotRead = -100;
inline constexpr std::int32_t kOFXSwapCategory = 0;
inline constexpr std::int32_t kOFXSwapToFrom = 1;
inline constexpr std::int32_t kOFXSwapDescription = 2;
inline constexpr std::int32_t kOFXSwapType = 3;
inline constexpr std::int32_t kOFXSwapNotes = 4;
inline constexpr std::int32_t kOFXSwapNumber = 5;

// Why a file did not load.
enum class OFXLoadFailure {
  None,
  Unreadable,   // the file could not be read
  TooShort,     // fewer than 8 bytes
  NoOFXStart,   // no "<OFX>"
  NoOFXEnd,     // no "</OFX>" after it
  EmptyOFX,     // nothing between "<OFX>" and "</OFX>"
  Undecodable,  // the bytes are not valid in the encoding the header names
  XMLRejected,  // the XML parser rejected the document
};

struct OFXLoadError {
  OFXLoadFailure failure = OFXLoadFailure::None;
  std::string detail;      // the encoding, or the XML parser's reason
  std::size_t offset = 0;  // XMLRejected: byte offset in the XML text parsed
  bool tolerant = false;   // the failure came from the tolerant reading

  // One sentence for the user, naming the reason (and the offset).
  std::string description() const;
};

// How a file is loaded. The default is the faithful reading, byte for byte
// what the desktop application accepts. The tolerant reading also accepts the
// OFX 1 files that it rejects (see docs/design.md): hosts try it only after a
// faithful load failed, and tell the user.
struct OFXLoadOptions {
  bool tolerant = false;
};

// The value of an amount written plainly, as banks write TRNAMT: an optional
// "-", then at most fifteen digits with at most one "." among them. Such text
// reads the same through the amount clean-up and the decimal reader whenever
// the separators leave it unchanged (see TARNOFXImport::amountOfText), and the
// quotient of two exact doubles is the correctly rounded value that the
// decimal reader gives. nullopt for any other text.
std::optional<double> PlainAmountValue(std::string_view text);

class TARNOFXImport {
 public:
  TARNOFXImport();

  // Loads an OFX 1 or OFX 2 file; nullptr on every failure.
  static std::shared_ptr<TARNOFXImport> initWithContentsOfFile(const std::string& path);
  // The same with load options, saying in `error` (when given) why a file
  // did not load.
  static std::shared_ptr<TARNOFXImport> initWithContentsOfFile(const std::string& path,
                                                               const OFXLoadOptions& options,
                                                               OFXLoadError* error = nullptr);
  // Loads a file's bytes already in memory.
  static std::shared_ptr<TARNOFXImport> loadFromBytes(std::string bytes,
                                                      const OFXLoadOptions& options = {},
                                                      OFXLoadError* error = nullptr);

  // The SGML-to-XML steps of OFX 1: end tags for elements that lack them, and
  // ampersands turned into references (keeping the desktop's two quirks: a
  // known entity's name is written twice, and the walk stops at an ampersand
  // that starts the text or follows another one).
  static std::string addMissingEndTagsToElementsInString(std::string_view text);
  static std::string escapePhysicalEntitiesInElementsInString(std::string_view text);
  // The same walk on the text where it stands: the text grows by what the
  // ampersands get after them, each piece moved once.
  static void escapePhysicalEntitiesInPlace(std::string& text);
  // The tolerant reading's ampersand walk: references already present are
  // kept once, every other ampersand becomes "&amp;".
  static std::string escapeAmpersandsTolerantly(std::string_view text);

  void setXMLTree(std::unique_ptr<OFXXMLTree> tree);
  const OFXXMLTree* XMLTree() const { return tree_.get(); }
  // Whether the tree came from the tolerant reading; its entries then keep
  // every entity reference of MEMO, NAME and PAYEE/NAME as its character.
  bool loadedTolerantly() const { return tolerant_; }

  void SetDateFormat(std::string format) { dateFormatString_ = std::move(format); }
  const std::string& GetDateFormat() const { return dateFormatString_; }
  // nullopt leaves the separator as it was.
  void SetDecimalSeparator(std::optional<std::string> separator);
  void SetThousandsSeparator(std::optional<std::string> separator);
  const std::string& GetDecimalSeparator() const { return decimalSeparator_; }
  const std::string& GetThousandsSeparator() const { return thousandsSeparator_; }
  void SetImportZeroAmountsAsDeposits(bool value) { importZeroAmountsAsDeposits_ = value; }
  bool GetImportZeroAmountsAsDeposits() const { return importZeroAmountsAsDeposits_; }
  void SetSwapOptions_Name(std::int32_t value) { swapOptions_Name_ = value; }
  void SetSwapOptions_Payee(std::int32_t value) { swapOptions_Payee_ = value; }
  void SetSwapOptions_Memo(std::int32_t value) { swapOptions_Memo_ = value; }
  void SetSwapOptions_TransactionType(std::int32_t value) { swapOptions_Type_ = value; }
  void SetSwapOptions_ReferenceNumber(std::int32_t value) { swapOptions_RefNum_ = value; }
  std::int32_t GetSwapOptions_Name() const { return swapOptions_Name_; }
  std::int32_t GetSwapOptions_Payee() const { return swapOptions_Payee_; }
  std::int32_t GetSwapOptions_Memo() const { return swapOptions_Memo_; }
  std::int32_t GetSwapOptions_TransactionType() const { return swapOptions_Type_; }
  std::int32_t GetSwapOptions_ReferenceNumber() const { return swapOptions_RefNum_; }
  void SetError(std::int32_t error) { error_ = error; }
  std::int32_t GetError() const { return error_; }
  // nullopt stores "".
  void setSourceName(std::optional<std::string> name) { sourceName_ = name.value_or(""); }
  const std::string& sourceName() const { return sourceName_; }
  void setImportAccount(std::int32_t account) { importAccount_ = account; }
  std::int32_t importAccount() const { return importAccount_; }
  // The account's remembered options, all at once.
  void SetOptions(const OFXImportSettings& settings);

  // {"accounts": [...], "types": [...]}.
  plist::Value parse() const;
  plist::Array Accounts() const;
  // Nil for no subtree.
  plist::Value BankStatementAggregateToAccount(XMLNode statement) const;
  plist::Value CreditCardStatementAggregateToAccount(XMLNode statement) const;
  plist::Value LoanStatementAggregateToAccount(XMLNode statement) const;
  plist::Value BankTransactionAggregateToEntry(XMLNode transaction) const;
  plist::Value LoanTransactionAggregateToEntry(XMLNode transaction) const;
  plist::Array EntryTypesInAccounts(const plist::Array& accounts) const;
  // The first eight digits of an OFX date (YYYYMMDD...); today without them.
  DateNumber DateStringToDateNumber(std::string_view text) const;
  // The amount clean-up and date components with this importer's options.
  std::string TweakAmountString(std::string_view text) const;
  DateComponents DateStringComponents(std::string_view text) const;

 private:
  plist::Array accountsCollectingTypes(EntryTypeList* types) const;
  plist::Value statementToAccount(XMLNode statement, const OFXStatementKind& kind,
                                  EntryTypeList* types) const;
  plist::Value transactionToEntry(XMLNode transaction, bool loan, EntryTypeList* types) const;
  plist::Array loanSplits(XMLNode loanAmount) const;
  std::string joinedText(XMLNode element, bool keepAmpersands) const;
  double amountOfText(std::string_view text) const;

  std::unique_ptr<OFXXMLTree> tree_;
  std::string dateFormatString_ = "%m/%d/%y";
  std::string decimalSeparator_ = ".";
  std::string thousandsSeparator_ = ",";
  bool importZeroAmountsAsDeposits_ = true;
  std::int32_t swapOptions_Name_ = 0;
  std::int32_t swapOptions_Payee_ = 0;
  std::int32_t swapOptions_Memo_ = 0;
  std::int32_t swapOptions_Type_ = 0;
  std::int32_t swapOptions_RefNum_ = 0;
  std::int32_t error_ = 0;
  std::string sourceName_;
  std::int32_t importAccount_ = -1;
  bool tolerant_ = false;
};

}  // namespace tarn
