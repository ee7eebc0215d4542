// Dates: any text, and texts made of a day that is known.

#include "base/TextCoding.h"
#include "feeds/FeedDate.h"
#include "fuzz/Fuzz.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <string>

namespace vantro {

namespace {

constexpr std::array kMonths = {"January", "February", "March", "April", "May", "June", "July", "August",
    "September", "October", "November", "December"};
constexpr std::array kWeekdays
    = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

std::string Print(const char* form, auto... values)
{
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), form, values...);
    return text.data();
}

void CheckKnownDay(FeedDate& dates, Input input)
{
    using namespace std::chrono;
    constexpr sys_days kFirst = 1583y / January / 1;
    constexpr int kDays = (sys_days(9999y / December / 31) - kFirst).count();
    const int number = static_cast<int>(input.Number(3)) % kDays;
    const sys_days day = kFirst + days(number);
    const year_month_day date(day);
    const int y = static_cast<int>(date.year());
    const unsigned m = static_cast<unsigned>(date.month());
    const unsigned d = static_cast<unsigned>(date.day());
    const char* month = kMonths[m - 1];
    const char* name = kWeekdays[weekday(day).c_encoding()];
    const int zone = static_cast<int>(input.Below(24));
    const std::string shown = Print("%s %u %s %d", name, d, month, y);
    for (const std::string& written :
        {Print("%.3s, %02u %.3s %d %02d:10:05 +%02d00", name, d, month, y, zone, zone),
            Print("%.3s %.3s %2u %02d:10:05 %d", name, month, d, zone, y),
            Print("%d-%02u-%02uT%02d:10:05Z", y, m, d, zone), Print("%u/%u/%d", m, d, y),
            Print("%s %u, %d", month, d, y), shown})
        Require(dates.Format(written) == shown, "a date is read in all the forms that feeds write");
}

} // namespace

} // namespace vantro

void vantro::Try(std::string_view bytes)
{
    static FeedDate english("en_US");
    static FeedDate german("de_DE");
    FeedDate& dates = bytes.size() % 2 == 0 ? english : german;
    const std::string shown = dates.Format(bytes);
    Require(!IsUtf8(bytes) || IsUtf8(shown), "a date in words is UTF-8");
    Require(dates.Format(shown) == shown, "a date in words is read as the same date");
    if (bytes.size() == 4)
        CheckKnownDay(english, Input(bytes));
}
