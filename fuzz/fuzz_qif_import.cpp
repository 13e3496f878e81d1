// QIF import on arbitrary bytes and options: no crash, no hang, and never
// more entries than the text has record ends.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "fuzz_import_options.h"
#include "tarn/import/qif_import.h"
#include "tarn/platform/log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The unterminated-AutoSwitch message would flood the output.
  static const bool quiet = (tarn::SetLogSink([](std::string_view) {}), true);
  (void)quiet;
  tarn::fuzz::OptionBytes options(data, size);
  tarn::TARNQIFImport importer;
  const std::uint8_t flags = options.next();
  importer.SetImportZeroAmountsAsDeposits(flags & 1);
  importer.SetImportSplitLineItems(flags & 2);
  importer.SetSwapOptions_ToFrom(options.swapOption());
  importer.SetSwapOptions_Description(options.swapOption());
  importer.SetSwapOptions_Category(options.swapOption());
  importer.SetDateFormat(options.dateFormat());
  auto [decimal, thousands] = options.separators();
  importer.SetDecimalSeparator(decimal);
  importer.SetThousandsSeparator(thousands);
  const std::string_view text = options.rest();
  importer.SetDataString(std::string(text));

  const tarn::plist::Dictionary parsed = importer.parse();
  const auto carets = static_cast<std::size_t>(std::count(text.begin(), text.end(), '^'));
  if (parsed.at("entries").arrayValue().size() > carets) std::abort();
  std::size_t inAccounts = 0;
  if (parsed.contains("accounts")) {
    for (const auto& account : parsed.at("accounts").arrayValue()) {
      inAccounts += account.find("entries")->arrayValue().size();
    }
  }
  if (inAccounts > carets) std::abort();
  // The step-by-step operations, for the first few accounts.
  const std::vector<std::string> names = importer.AccountNames();
  for (std::size_t i = 0; i < names.size() && i < 4; ++i) {
    importer.EntriesForAccountWithName(names[i]);
  }
  importer.EntryCategories();
  return 0;
}
