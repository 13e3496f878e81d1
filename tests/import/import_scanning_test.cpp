#include "tarn/import/import_scanning.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tarn/platform/collections.h"

namespace tarn {
namespace {

std::vector<std::string> Strings(const std::vector<std::string_view>& views) {
  return {views.begin(), views.end()};
}

// The comma-separated fields are views into the line or the scratch buffer;
// CSVLineComponents, which builds every field, is the reference.
TEST(ImportScanning, CSVLineFieldsSplitAsCSVLineComponents) {
  std::vector<std::string_view> fields;
  std::string scratch;
  const char* const lines[] = {
      "",   "a,b",         "\"a,b\",c", "\"say \"\"hi\"\"\",x", "\"open", "\"\"",
      ",,", "\"a\"tail,b", "\"\"\"\"",  "a\"b,\"c\"\"",
  };
  for (const char* line : lines) {
    CSVLineFields(line, fields, scratch);
    EXPECT_EQ(Strings(fields), CSVLineComponents(line)) << line;
  }
  std::mt19937 random(4);
  const char alphabet[] = "\"\",,ab \t";
  for (int round = 0; round < 20000; ++round) {
    std::string line;
    const int length = static_cast<int>(random() % 16);
    for (int i = 0; i < length; ++i) line += alphabet[random() % (sizeof alphabet - 1)];
    // The same buffers serve every line, as they do in the importer.
    CSVLineFields(line, fields, scratch);
    EXPECT_EQ(Strings(fields), CSVLineComponents(line)) << line;
  }
}

TEST(ImportScanning, LineEndsNormalisedInPlaceAsByCopy) {
  std::mt19937 random(8);
  const char alphabet[] = "\n\r\nab";
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    const int length = static_cast<int>(random() % 12);
    for (int i = 0; i < length; ++i) text += alphabet[random() % (sizeof alphabet - 1)];
    std::string inPlace = text;
    NormaliseImportLineEndsInPlace(inPlace);
    EXPECT_EQ(inPlace, NormaliseImportLineEnds(text));
  }
  std::string text = "a\nb\n";
  NormaliseImportLineEndsInPlace(text);
  EXPECT_EQ(text, "\ra\rb\n");  // the very last line feed stays
}

}  // namespace
}  // namespace tarn
