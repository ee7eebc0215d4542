#include "settings/MinutesText.h"

#include <gtest/gtest.h>
#include <limits>

namespace vantro {

TEST(MinutesTextTest, TakesTheNumberThatTheTextStartsWith)
{
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    const std::pair<std::string, std::int32_t> cases[] = {{"", 0}, {"abc", 0}, {"a1", 0}, {"15", 15},
        {"15 minutes", 15}, {"1 0", 10}, {" \t1\r\n2", 12}, {"007", 7}, {"-5", -5}, {"+5", 5}, {"- 5", -5},
        {"--5", 0}, {"5-3", 5}, {"1,5", 1}, {"2.5", 2}, {"3.5", 4}, {"-2.5", -2}, {"2.51", 3}, {".5", 0},
        {".6", 1}, {"7.", 7}, {"1.2.9", 1}, {".", 0}, {"1e2", 100}, {"1E+2", 100}, {"1d2", 100}, {"15D-1", 2},
        {"1 e 2", 100}, {"3e", 3}, {"3e+", 3}, {"e2", 0}, {"&H10", 0}, {"0x10", 0}, {"inf", 0}, {"nan", 0},
        {"\u00A05", 0}, {"2147483647", kMost}, {"2147483648", kMost}, {"-2147483649", kLeast},
        {"1e999", kMost}, {"-1e999", kLeast}, {"1e-999", 0}, {"0e999", 0}, {std::string(5000, '9'), kMost},
        {"." + std::string(5000, '0') + "1", 0}, {"1e99999999999999999999", kMost}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(MinutesFromText(text), expected) << text.substr(0, 40);
}

} // namespace vantro
