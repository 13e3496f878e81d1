// Delimited-text import on arbitrary bytes, layouts and options: no crash,
// no hang, and never more entries than the text has lines.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "fuzz_import_options.h"
#include "tarn/import/text_import.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarn::fuzz::OptionBytes options(data, size);
  tarn::TARNTextImport importer;
  const std::uint8_t flags = options.next();
  importer.SetDataFormat(flags & 1 ? tarn::kTextImportTabSeparated
                                   : tarn::kTextImportCommaSeparated);
  importer.SetSkipFirstRow(flags & 2);
  importer.SetImportZeroAmountsAsDeposits(flags & 4);
  std::vector<std::int32_t> layout(options.next() % 16);
  // Every role, and codes that are no role (5, 110, 120).
  for (std::int32_t& code : layout) code = static_cast<std::int32_t>(options.next() % 26) * 5;
  importer.SetDataLayout(layout);
  importer.SetDateFormat(options.dateFormat());
  auto [decimal, thousands] = options.separators();
  importer.SetDecimalSeparator(decimal);
  importer.SetThousandsSeparator(thousands);
  const std::string_view text = options.rest();
  importer.SetDataString(std::string(text));

  const tarn::plist::Dictionary parsed = importer.parse();
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n') +
                                              std::count(text.begin(), text.end(), '\r')) +
                     1;
  if (parsed.at("entries").arrayValue().size() > lines) std::abort();
  if (parsed.at("types").arrayValue().size() > parsed.at("entries").arrayValue().size()) {
    std::abort();
  }
  return 0;
}
