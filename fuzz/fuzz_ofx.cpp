// OFX files from arbitrary bytes: both readings (faithful and tolerant) of
// OFX 1 and OFX 2, then parse() with arbitrary options, and the SGML steps
// on their own. The first bytes choose the options; the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz_import_options.h"
#include "tarn/import/ofx_import.h"

namespace {

struct ParseOptions {
  std::int32_t swaps[5];
  bool zeroAmountsAsDeposits;
  std::pair<std::string, std::string> separators;
  std::string dateFormat;
};

// The OFX swap values: not read, the five destinations, the number, and one
// outside the table.
std::int32_t swapOption(tarn::fuzz::OptionBytes& options) {
  static constexpr std::int32_t kValues[] = {-100, 0, 1, 2, 3, 4, 5, 99};
  return kValues[options.next() % std::size(kValues)];
}

void parseWith(tarn::TARNOFXImport& importer, const ParseOptions& options) {
  importer.SetSwapOptions_Name(options.swaps[0]);
  importer.SetSwapOptions_Payee(options.swaps[1]);
  importer.SetSwapOptions_Memo(options.swaps[2]);
  importer.SetSwapOptions_TransactionType(options.swaps[3]);
  importer.SetSwapOptions_ReferenceNumber(options.swaps[4]);
  importer.SetImportZeroAmountsAsDeposits(options.zeroAmountsAsDeposits);
  importer.SetDecimalSeparator(options.separators.first);
  importer.SetThousandsSeparator(options.separators.second);
  importer.SetDateFormat(options.dateFormat);
  const tarn::plist::Value result = importer.parse();
  (void)result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 1 << 20) return 0;
  tarn::fuzz::OptionBytes options(data, size);
  ParseOptions parse;
  for (std::int32_t& swap : parse.swaps) swap = swapOption(options);
  const std::uint8_t flags = options.next();
  parse.zeroAmountsAsDeposits = (flags & 1) != 0;
  parse.separators = options.separators();
  parse.dateFormat = options.dateFormat();
  const std::string file(options.rest());

  for (const bool tolerant : {false, true}) {
    if (auto importer = tarn::TARNOFXImport::loadFromBytes(file, {tolerant})) {
      parseWith(*importer, parse);
    }
  }
  // The same body behind an XML declaration, so that the OFX 2 reading sees
  // every input too.
  if (flags & 2) {
    const std::string xml = "<?xml version=\"1.0\"?>" + file;
    if (auto importer = tarn::TARNOFXImport::loadFromBytes(xml, {(flags & 4) != 0})) {
      parseWith(*importer, parse);
    }
  }
  const std::string withEndTags = tarn::TARNOFXImport::addMissingEndTagsToElementsInString(file);
  (void)tarn::TARNOFXImport::escapePhysicalEntitiesInElementsInString(withEndTags);
  (void)tarn::TARNOFXImport::escapeAmpersandsTolerantly(withEndTags);
  return 0;
}
