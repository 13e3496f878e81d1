// OFX files from arbitrary bytes: both readings (faithful and tolerant) of
// OFX 1 and OFX 2, then parse() with arbitrary options, and the SGML steps
// on their own. The first two bytes choose the options; the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tarn/import/ofx_import.h"

namespace {

constexpr std::int32_t kSwapValues[] = {-100, 0, 1, 2, 3, 4, 5, 99};

void parseWithOptions(tarn::TARNOFXImport& importer, std::uint8_t a, std::uint8_t b) {
  importer.SetSwapOptions_Name(kSwapValues[a & 7]);
  importer.SetSwapOptions_Payee(kSwapValues[(a >> 3) & 7]);
  importer.SetSwapOptions_Memo(kSwapValues[b & 7]);
  importer.SetSwapOptions_TransactionType(kSwapValues[(b >> 3) & 7]);
  importer.SetSwapOptions_ReferenceNumber(kSwapValues[((a >> 6) | (b >> 4)) & 7]);
  importer.SetImportZeroAmountsAsDeposits((b & 0x80) != 0);
  if (a & 0x40) {
    importer.SetDecimalSeparator(",");
    importer.SetThousandsSeparator(".");
  }
  const tarn::plist::Value result = importer.parse();
  (void)result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 1 << 20) return 0;
  const std::uint8_t a = data[0];
  const std::uint8_t b = data[1];
  const std::string file(reinterpret_cast<const char*>(data) + 2, size - 2);

  for (const bool tolerant : {false, true}) {
    if (auto importer = tarn::TARNOFXImport::loadFromBytes(file, {tolerant})) {
      parseWithOptions(*importer, a, b);
    }
  }
  // The same body as OFX 2, so that the XML reading sees every input too.
  if (a & 0x80) {
    const std::string xml = "<?xml version=\"1.0\"?>" + file;
    if (auto importer = tarn::TARNOFXImport::loadFromBytes(xml, {(b & 1) != 0})) {
      parseWithOptions(*importer, b, a);
    }
  }
  const std::string withEndTags = tarn::TARNOFXImport::addMissingEndTagsToElementsInString(file);
  (void)tarn::TARNOFXImport::escapePhysicalEntitiesInElementsInString(withEndTags);
  (void)tarn::TARNOFXImport::escapeAmpersandsTolerantly(withEndTags);
  return 0;
}
