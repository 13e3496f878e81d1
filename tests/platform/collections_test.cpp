#include "tarn/platform/collections.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tarn {
namespace {

using Fields = std::vector<std::string>;

TEST(Collections, WithoutCharactersInSetRemovesWholeCodePoints) {
  EXPECT_EQ(withoutCharactersInSet("1,234,567.89", ","), "1234567.89");
  EXPECT_EQ(withoutCharactersInSet("01/15/2005", "/-. "), "01152005");
  // A non-breaking space (C2 A0) as thousands separator; "é" (C3 A9) shares no
  // byte with it, and only whole characters go.
  EXPECT_EQ(withoutCharactersInSet("1\xC2\xA0"
                                   "234 café",
                                   "\xC2\xA0"),
            "1234 café");
  EXPECT_EQ(withoutCharactersInSet("Zürich €5", "€ü"), "Zrich 5");
  EXPECT_EQ(withoutCharactersInSet("abc", ""), "abc");
  EXPECT_EQ(withoutCharactersInSet("", "abc"), "");
  // Stray bytes stay unless the set holds the same stray byte.
  EXPECT_EQ(withoutCharactersInSet("a\xFF"
                                   "b\xC3",
                                   "b"),
            "a\xFF\xC3");
  EXPECT_EQ(withoutCharactersInSet("a\xFF"
                                   "b",
                                   "\xFF"),
            "ab");
}

TEST(Collections, CsvFieldsWithQuotes) {
  EXPECT_EQ(CSVLineComponents("01/15/05,Coffee,-3.50"), (Fields{"01/15/05", "Coffee", "-3.50"}));
  EXPECT_EQ(CSVLineComponents("\"Smith, John\",\"He said \"\"hi\"\"\",5"),
            (Fields{"Smith, John", "He said \"hi\"", "5"}));
  EXPECT_EQ(CSVLineComponents("\"two\nlines\",x"), (Fields{"two\nlines", "x"}));
  EXPECT_EQ(CSVLineComponents("\"\",\"\"\"\""), (Fields{"", "\""}));
  // Unquoted fields stand as they are: spaces and inner quotes included.
  EXPECT_EQ(CSVLineComponents(" a , 5\" pipe,b\"c\""), (Fields{" a ", " 5\" pipe", "b\"c\""}));
  // A space before the opening quote makes the field unquoted.
  EXPECT_EQ(CSVLineComponents("x, \"a,b\""), (Fields{"x", " \"a", "b\""}));
  // Text after a closing quote joins the field; an open quote runs to the end.
  EXPECT_EQ(CSVLineComponents("\"ab\"cd,e"), (Fields{"abcd", "e"}));
  EXPECT_EQ(CSVLineComponents("a,\"open, still"), (Fields{"a", "open, still"}));
}

TEST(Collections, CsvEmptyFields) {
  EXPECT_EQ(CSVLineComponents(""), (Fields{""}));
  EXPECT_EQ(CSVLineComponents(","), (Fields{"", ""}));
  EXPECT_EQ(CSVLineComponents("a,b,"), (Fields{"a", "b", ""}));
  EXPECT_EQ(CSVLineComponents("a,,b"), (Fields{"a", "", "b"}));
  EXPECT_EQ(CSVLineComponents("\"a\","), (Fields{"a", ""}));
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
