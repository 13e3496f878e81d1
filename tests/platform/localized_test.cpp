#include "tarn/platform/localized.h"

#include <gtest/gtest.h>
#include <libintl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace tarn {
namespace {

// Writes a gettext catalogue (.mo, little-endian, no hash table, keys in
// byte order as gettext's binary search wants them).
void writeCatalogue(const std::filesystem::path& path,
                    std::vector<std::pair<std::string, std::string>> pairs) {
  std::sort(pairs.begin(), pairs.end());
  const auto count = static_cast<uint32_t>(pairs.size());
  const uint32_t originals = 28;
  const uint32_t translations = originals + 8 * count;
  uint32_t offset = translations + 8 * count;
  std::vector<uint32_t> header = {0x950412de, 0, count, originals, translations, 0, 0};
  std::vector<uint32_t> table;
  std::string strings;
  for (int side = 0; side < 2; ++side) {
    for (const auto& pair : pairs) {
      const std::string& text = side == 0 ? pair.first : pair.second;
      table.push_back(static_cast<uint32_t>(text.size()));
      table.push_back(offset + static_cast<uint32_t>(strings.size()));
      strings += text;
      strings.push_back('\0');
    }
  }
  std::filesystem::create_directories(path.parent_path());
  std::ofstream out(path, std::ios::binary);
  for (uint32_t word : header) out.write(reinterpret_cast<const char*>(&word), 4);
  for (uint32_t word : table) out.write(reinterpret_cast<const char*>(&word), 4);
  out << strings;
}

TEST(Localized, KeysStandWhenThereIsNoCatalogue) {
  EXPECT_EQ(Localized("and"), "and");
  EXPECT_EQ(Localized("No such key in any catalogue"), "No such key in any catalogue");
  EXPECT_EQ(Localized(""), "");
}

TEST(Localized, CataloguesAreReadFromTheChosenDirectory) {
  const std::filesystem::path directory =
      std::filesystem::temp_directory_path() / ("tarn-localized-" + std::to_string(::getpid()));
  const std::vector<std::pair<std::string, std::string>> pairs = {
      {"", "Content-Type: text/plain; charset=UTF-8\n"}, {"and", "und"}, {"Rent", "Miete für"}};
  for (const char* locale : {"C.UTF-8", "C.utf8"}) {
    writeCatalogue(directory / locale / "LC_MESSAGES" / "tarn.mo", pairs);
  }
  const std::string previousDirectory = bindtextdomain("tarn", nullptr);
  const std::string previousLocale = std::setlocale(LC_MESSAGES, nullptr);
  ASSERT_NE(std::setlocale(LC_MESSAGES, "C.UTF-8"), nullptr);

  SetLocalizationDirectory(directory.string());
  EXPECT_EQ(Localized("and"), "und");
  EXPECT_EQ(Localized("Rent"), "Miete für");
  EXPECT_EQ(Localized("Groceries"), "Groceries");

  SetLocalizationDirectory(previousDirectory);
  std::setlocale(LC_MESSAGES, previousLocale.c_str());
  EXPECT_EQ(Localized("and"), "and");
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace tarn
