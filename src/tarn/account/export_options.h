// The choices of an export of an account as QIF or tab-delimited text. The
// host fills one in from its save panel and passes it to the account's
// export; the options share the filter with the host (a smart folder, say)
// and never change it.
#pragma once

#include <memory>
#include <string>

namespace tarn {

class TARNFilter;

struct TARNExportOptions {
  // Exports only the register entries that pass it, and then without the
  // starting balance. nullptr exports the whole register.
  std::shared_ptr<TARNFilter> exportFilter;
  // Calendar format of the QIF dates.
  std::string dateFormat = "%m/%d/%Y";
  // Ends every QIF line, the record ends ("^") included. The tab-delimited
  // text always ends its lines with "\n".
  std::string lineEnding = "\n";
  // Whether a resolved QIF entry is marked reconciled ("X") rather than
  // cleared ("*").
  bool resolvedMeansReconciled = false;
};

}  // namespace tarn
