#include "maint/version.h"

#include <gtest/gtest.h>

TEST(ParseVersion, OrdersNumericallyNotAsText) {
  const struct {
    const char* online;
    bool newer_than_1_4_0;
    Version parsed;
  } cases[] = {
      {"1.10.0", true, {1, 10, 0}},
      {"1.4.1", true, {1, 4, 1}},
      {"1.4.0-beta", false, {1, 4, 0}},
      {"1.3.99", false, {1, 3, 99}},
      {"2.", true, {2, 0, 0}},
      {" 1. 5 .9", true, {1, 5, 0}},
      {"v1.5", false, {0, 0, 0}},
      {"-99999999999999999999", false, {-2147483647 - 1, 0, 0}},
      {"99999999999999999999.1", true, {2147483647, 1, 0}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ParseVersion(c.online) > ParseVersion("1.4.0"), c.newer_than_1_4_0) << c.online;
    EXPECT_EQ(ParseVersion(c.online), c.parsed) << c.online;
  }
}
