// Decimal text to double: exact values, overflow to infinity and underflow to zero whatever the
// number of digits, and refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "NumberText.h"

TEST(NumberText, OverflowGivesInfinityAndUnderflowZero) {
  const double inf = std::numeric_limits<double>::infinity();
  const std::string digits401 = "1" + std::string(400, '0');
  const std::pair<std::string, double> cases[] = {
      {"12", 12.0}, {"+7", 7.0}, {"-0.5", -0.5}, {"1e-3", 1e-3}, {"1.7976931348623157e308", 1.7976931348623157e308},
      {"4.9e-324", 4.9e-324}, {"1e400", inf}, {"-1e400", -inf}, {digits401, inf}, {"-" + digits401, -inf},
      {"1e-400", 0.0}, {"0." + std::string(400, '0') + "1", 0.0}, {"123456789e-500", 0.0},
      {"0.000001e310", 1e304}, {"0.0000000001e315", 1e305}, {"0.0000000001e319", inf}, {"1000e-330", 0.0},
  };
  for (const auto& [text, expected] : cases) {
    double value = 123.0;
    ASSERT_TRUE(TextToDouble(text, value)) << text;
    EXPECT_EQ(value, expected) << text;
  }
  double value = 1.0;
  ASSERT_TRUE(TextToDouble("-1e-400", value));
  EXPECT_EQ(value, 0.0);
  EXPECT_TRUE(std::signbit(value));
  for (const char* bad : {"", "+", "++1", "1e", "abc", "1.2.3", "1 ", " 1", "0x10", "1e5x"}) {
    EXPECT_FALSE(TextToDouble(bad, value)) << bad;
  }
}
