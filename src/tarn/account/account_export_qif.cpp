// The account as QIF (bank account flavour): an account header with the
// balance, then one record per exported entry, split lines included.

#include <string>
#include <string_view>
#include <vector>

#include "tarn/account/account.h"
#include "tarn/account/account_export_shared.h"
#include "tarn/account/export_options.h"
#include "tarn/model/account_entry.h"
#include "tarn/platform/calendar_date.h"
#include "tarn/platform/localized.h"

namespace tarn {

namespace {

// Writes QIF lines, each a one-letter code, its text and the line ending.
class QIFLines {
 public:
  QIFLines(std::string& out, std::string_view lineEnding) : out_(out), lineEnding_(lineEnding) {}

  void text(char code, std::string_view text) {
    out_.push_back(code);
    out_.append(text);
    out_.append(lineEnding_);
  }
  void amount(char code, double value) {
    out_.push_back(code);
    AppendAmount(out_, value);
    out_.append(lineEnding_);
  }
  void integer(char code, std::int32_t value) {
    out_.push_back(code);
    AppendInteger(out_, value);
    out_.append(lineEnding_);
  }
  void line(std::string_view text) {
    out_.append(text);
    out_.append(lineEnding_);
  }
  void endRecord() { line("^"); }

 private:
  std::string& out_;
  std::string_view lineEnding_;
};

}  // namespace

std::string TARNAccount::asQIFStringWithOptions(const TARNExportOptions* options) const {
  const TARNExportOptions defaults;
  const TARNExportOptions& chosen = options ? *options : defaults;
  const std::vector<TARNAccountEntry*> entries = EntriesToExport(*this, chosen);
  const std::string_view resolvedMark = chosen.resolvedMeansReconciled ? "X" : "*";

  std::string out;
  // About a hundred bytes per record: one allocation for most registers.
  out.reserve(256 + entries.size() * 112);
  QIFLines qif(out, chosen.lineEnding);
  ExportDateText dateText(chosen.dateFormat);

  qif.line("!Account");
  qif.text('N', name_);
  qif.line("TBank");
  qif.amount('B', GetBalance());
  qif.endRecord();
  qif.line("!Type:Bank");

  if (!chosen.exportFilter) {
    const auto first = GetFirstEntry();
    qif.text('D', first ? std::string(dateText(first->GetDate())) : dateText.today());
    qif.text('M', Localized("Starting Balance"));
    qif.amount('T', startingBalance_);
    qif.text('C', resolvedMark);
    qif.endRecord();
  }

  ExportCategoryNames categories(*this);
  for (const TARNAccountEntry* entry : entries) {
    qif.text('D', dateText(entry->GetDate()));
    if (entry->GetCheckNumber() >= 0) qif.integer('N', entry->GetCheckNumber());
    qif.text('P', entry->GetToFrom());
    qif.text('M', entry->GetDescription());
    qif.amount('T', entry->GetAmount());
    if (entry->GetCleared()) qif.text('C', resolvedMark);
    qif.text('L', categories.fullName(entry->GetCategory()));
    for (const auto& item : entry->splitLineItems()) {
      if (!item) continue;
      qif.text('S', categories.name(item->category()));
      qif.text('E', item->description());
      qif.amount('$', item->amount());
    }
    qif.endRecord();
  }
  return out;
}

}  // namespace tarn
