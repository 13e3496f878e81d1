#include "tarn/platform/collections.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tarn {
namespace {

using Fields = std::vector<std::string>;

TEST(Collections, WithoutCharactersInSetRemovesWholeCodePoints) {
  // A non-breaking space (C2 A0) goes, "é" (C3 A9) stays; stray bytes stay
  // unless the set holds the same stray byte.
  // clang-format off
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"1,234,567.89", ",", "1234567.89"}, {"01/15/2005", "/-. ", "01152005"},
      {"1\xC2\xA0" "234 café", "\xC2\xA0", "1234 café"}, {"Zürich €5", "€ü", "Zrich 5"},
      {"abc", "", "abc"}, {"", "abc", ""}, {"a\xFF" "b\xC3", "b", "a\xFF\xC3"},
      {"a\xFF" "b", "\xFF", "ab"}};
  // clang-format on
  for (const auto& [text, set, expected] : cases) {
    EXPECT_EQ(withoutCharactersInSet(text, set), expected) << text;
  }
}

TEST(Collections, CsvFieldsWithQuotesAndEmptyFields) {
  // Unquoted fields stand as they are, spaces and inner quotes included (a space
  // before a quote makes it unquoted); text after a closing quote joins the
  // field; an open quote runs to the end.
  // clang-format off
  const std::pair<std::string, Fields> cases[] = {
      {"01/15/05,Coffee,-3.50", {"01/15/05", "Coffee", "-3.50"}},
      {"\"Smith, John\",\"He said \"\"hi\"\"\",5", {"Smith, John", "He said \"hi\"", "5"}},
      {"\"two\nlines\",x", {"two\nlines", "x"}}, {"\"\",\"\"\"\"", {"", "\""}},
      {" a , 5\" pipe,b\"c\"", {" a ", " 5\" pipe", "b\"c\""}}, {"x, \"a,b\"", {"x", " \"a", "b\""}},
      {"\"ab\"cd,e", {"abcd", "e"}}, {"a,\"open, still", {"a", "open, still"}},
      {"", {""}}, {",", {"", ""}}, {"a,b,", {"a", "b", ""}}, {"a,,b", {"a", "", "b"}},
      {"\"a\",", {"a", ""}}};
  // clang-format on
  for (const auto& [line, fields] : cases) EXPECT_EQ(CSVLineComponents(line), fields) << line;
}

struct Item {
  int value;
};

TEST(Collections, RemoveObjectsKeepsOrderAndComparesByIdentity) {
  std::vector<std::shared_ptr<Item>> items;
  for (int i = 0; i < 40; ++i) items.push_back(std::make_shared<Item>(Item{i % 5}));
  const auto twin = std::make_shared<Item>(Item{0});  // equal in value to items[0], not the same

  // A short list of objects to remove, with a duplicate and a stranger.
  auto array = items;
  array.push_back(items[3]);  // a duplicate in the array goes too
  removeObjectsInArray_Optimized(array, {items[3], items[7], items[3], twin});
  ASSERT_EQ(array.size(), 38u);
  EXPECT_EQ(array[2], items[2]);
  EXPECT_EQ(array[3], items[4]);
  EXPECT_EQ(array[6], items[8]);
  EXPECT_EQ(array.back(), items[39]);

  // A long one (the hashed path): every even object.
  array = items;
  std::vector<std::shared_ptr<Item>> evens;
  for (size_t i = 0; i < items.size(); i += 2) evens.push_back(items[i]);
  removeObjectsInArray_Optimized(array, evens);
  ASSERT_EQ(array.size(), 20u);
  for (size_t i = 0; i < array.size(); ++i) EXPECT_EQ(array[i], items[2 * i + 1]);

  array = items;
  removeObjectsInArray_Optimized(array, items);
  EXPECT_TRUE(array.empty());
  array = items;
  removeObjectsInArray_Optimized(array, {});
  EXPECT_EQ(array, items);
  removeObjectsInArray_Optimized(array, {twin});
  EXPECT_EQ(array, items);
}

}  // namespace
}  // namespace tarn
