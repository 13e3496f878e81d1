#include "tarn/model/list_utils.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tarn {
namespace {

TEST(ListUtils, BubbleSortsOrderEachElementType) {
  BubbleSort_Long(nullptr, 0);  // never touches the pointer
  BubbleSort_Double(nullptr, -3);
  std::vector<std::int32_t> longs = {5, -2, 2147483647, 0, -2147483647 - 1, 5, 3};
  BubbleSort_Long(longs.data(), 6);  // a short count sorts only the front
  EXPECT_EQ(longs, (std::vector<std::int32_t>{-2147483647 - 1, -2, 0, 5, 5, 2147483647, 3}));
  std::vector<float> floats = {2.5f, -1.0f, 0.0f, 2.25f};
  BubbleSort_Float(floats.data(), static_cast<int>(floats.size()));
  EXPECT_EQ(floats, (std::vector<float>{-1.0f, 0.0f, 2.25f, 2.5f}));
  std::vector<double> doubles = {9, 8, 7, 6, 5, 4, 3, 2, 1};  // worst case needs every pass
  BubbleSort_Double(doubles.data(), static_cast<int>(doubles.size()));
  EXPECT_EQ(doubles, (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));

  // NaN is never smaller, nor is anything smaller than it: 3 stays in front.
  std::vector<double> withNaN = {3, std::nan(""), 1};
  BubbleSort_Double(withNaN.data(), 3);
  EXPECT_TRUE(withNaN[0] == 3 && std::isnan(withNaN[1]) && withNaN[2] == 1);
}

TEST(ListUtils, StringsToEnglishList) {
  EXPECT_EQ(StringsToEnglishList({}), "");
  EXPECT_EQ(StringsToEnglishList({"Food"}), "Food");
  EXPECT_EQ(StringsToEnglishList({"a", "b", "c", "d"}), "a, b, c and d");
  EXPECT_EQ(StringsToEnglishList({"", ""}), " and ");
}

}  // namespace
}  // namespace tarn
