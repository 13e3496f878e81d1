#include "tarn/platform/user_defaults.h"

#include <gtest/gtest.h>

namespace tarn {
namespace {

TEST(UserDefaults, InitialValuesAndChanges) {
  ResetUserDefaults();
  // The tests never call setlocale, so the C library is in the "C" locale:
  // "." for decimals and no thousands separator, for which "," stands in.
  EXPECT_EQ(UserDefault("NSDecimalSeparator"), ".");
  EXPECT_EQ(UserDefault("NSThousandsSeparator"), ",");
  EXPECT_EQ(UserDefault("NSShortDateFormatString"), "%m/%d/%y");
  EXPECT_EQ(UserDefault("NoSuchKey"), "");

  SetUserDefault("NSDecimalSeparator", ",");
  SetUserDefault("NSThousandsSeparator", ".");
  SetUserDefault("Other", "x");
  EXPECT_EQ(UserDefault("NSDecimalSeparator"), ",");
  EXPECT_EQ(UserDefault("NSThousandsSeparator"), ".");
  EXPECT_EQ(UserDefault("Other"), "x");

  ResetUserDefaults();
  EXPECT_EQ(UserDefault("NSDecimalSeparator"), ".");
  EXPECT_EQ(UserDefault("Other"), "");
}

}  // namespace
}  // namespace tarn
