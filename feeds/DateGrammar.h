#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantro {

// How dates are written where the user lives. Names stand in folded case, without a closing dot.
struct DateWords {
    std::vector<std::pair<std::u16string, int>> months; // 1 to 12; a month may have several names
    std::vector<std::u16string> weekdays;
    bool dayFirst = false; // 5/7/2003 is in July
    bool yearFirst = false; // so a short year at the end of numbers is none
};

// The day that a text in folded case names, when all of it is a date with or without a time of day and zone.
// Names of weekdays need not fit. Years have four digits and are not before 1583, the first whole year of
// the calendar, or have two: 00 to 69 are in this century, 70 to 99 in the last.
[[nodiscard]] std::optional<std::chrono::year_month_day> ReadDate(
    std::u16string_view folded, const DateWords& words);

} // namespace vantro
