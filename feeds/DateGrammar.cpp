#include "feeds/DateGrammar.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <unicode/uchar.h>

namespace vantro {

namespace {

constexpr int kFirstYear = 1583;
constexpr int kCenturyTurn = 70; // of two-digit years
constexpr char16_t kNone = 0;

bool IsDigit(char16_t character)
{
    return character >= u'0' && character <= u'9';
}

// Reads from left to right. A function that takes something says whether it was there; one that skips
// something is content without it, but not with a broken one.
class DateReader {
public:
    DateReader(std::u16string_view text, const DateWords& words) : text_(text), words_(words) { }

    std::optional<std::chrono::year_month_day> Read()
    {
        constexpr std::array kForms = {&DateReader::NamedMonth, &DateReader::YearBehindTime,
            &DateReader::YearMonthDay, &DateReader::EightDigits, &DateReader::YearLast};
        // Both ways, as the short name of a weekday can be that of a month ("mar").
        for (const bool hasWeekday : {true, false}) {
            for (const auto form : kForms) {
                place_ = 0;
                SkipBlanks();
                if (hasWeekday && !TakeWeekday())
                    break;
                if ((this->*form)() && place_ == text_.size() && Day().ok() && year_ >= kFirstYear)
                    return Day();
            }
        }
        return std::nullopt;
    }

private:
    bool NamedMonth() // 5 July 2003, 05-Jul-03, July 5th, 2003
    {
        return TakeDayAndMonth() && TakeYear(true) && SkipTimeOfDay();
    }

    bool YearBehindTime() // Jul  5 12:00:00 GMT 2003
    {
        return TakeDayAndMonth() && TakeTime() && TakeYear(false) && SkipBlanks();
    }

    bool YearMonthDay() // 2003-07-05, 2003/7/5
    {
        if (!TakeNumber(4, 4, year_))
            return false;
        const char16_t separator = Take(u"-/.");
        return separator != kNone && TakeNumber(1, 2, month_) && Take({&separator, 1}) != kNone
            && TakeNumber(1, 2, day_) && SkipTimeOfDay();
    }

    bool EightDigits() // 20030705, 20030705T120000Z
    {
        int number = 0;
        if (!TakeNumber(8, 8, number))
            return false;
        year_ = number / 10000;
        month_ = number / 100 % 100;
        day_ = number % 100;
        if (Take(u"t") == kNone)
            return SkipTimeOfDay();
        return (TakeNumber(4, 4, number) || TakeNumber(6, 6, number)) && SkipZone();
    }

    // 07/05/2003. With dots only where the day comes first, as nobody writes a month in front of a dot; with
    // hyphens only with a whole year, as 03-07-05 may begin with the year.
    bool YearLast()
    {
        int& first = words_.dayFirst ? day_ : month_;
        int& second = words_.dayFirst ? month_ : day_;
        if (!TakeNumber(1, 2, first))
            return false;
        const char16_t separator = Take(words_.dayFirst ? u"/-." : u"/-");
        return separator != kNone && SkipBlanks() && TakeNumber(1, 2, second)
            && Take({&separator, 1}) != kNone && SkipBlanks()
            && TakeYear(separator != u'-' && !words_.yearFirst) && SkipTimeOfDay();
    }

    // In either order, with what separates them from each other and from what follows.
    bool TakeDayAndMonth()
    {
        const std::size_t start = place_;
        if (TakeDayOfMonth() && TakeMonthName())
            return true;
        place_ = start;
        return TakeMonthName() && TakeDayOfMonth();
    }

    bool TakeDayOfMonth() // 5, 05, 5., 5th
    {
        if (!TakeNumber(1, 2, day_))
            return false;
        constexpr std::u16string_view kOrdinals[] = {u"st", u"nd", u"rd", u"th"};
        if (!std::ranges::any_of(kOrdinals, [this](auto ending) { return TakeName(ending); }))
            Take(u".");
        return SkipSeparator(u",-/");
    }

    bool TakeMonthName()
    {
        const auto found = std::ranges::find_if(
            words_.months, [this](const auto& month) { return TakeName(month.first); });
        if (found == words_.months.end())
            return false;
        month_ = found->second;
        Take(u".");
        return SkipSeparator(u",-/");
    }

    bool TakeWeekday()
    {
        if (!std::ranges::any_of(words_.weekdays, [this](const auto& name) { return TakeName(name); }))
            return false;
        Take(u".");
        return SkipSeparator(u",");
    }

    bool TakeYear(bool mayBeShort)
    {
        if (TakeNumber(4, 4, year_))
            return true;
        if (!mayBeShort || !TakeNumber(2, 2, year_))
            return false;
        year_ += year_ < kCenturyTurn ? 2000 : 1900;
        return true;
    }

    // What may follow a date, to the end of the text.
    bool SkipTimeOfDay()
    {
        SkipBlanks();
        if (place_ == text_.size())
            return true;
        Take(u"t,");
        SkipBlanks();
        return TakeTime();
    }

    // With a half of the day and a zone, if they are there, and the blanks behind.
    bool TakeTime()
    {
        int hour = 0;
        int minute = 0;
        int second = 0;
        if (!TakeNumber(1, 2, hour) || Take(u":") == kNone || !TakeNumber(2, 2, minute))
            return false;
        if (Take(u":") != kNone) {
            if (!TakeNumber(2, 2, second) || (Take(u".,") != kNone && !TakeDigits()))
                return false;
        }
        SkipBlanks();
        SkipHalfOfDay();
        return hour <= 24 && minute < 60 && second <= 60 && SkipZone(); // 60 is a leap second
    }

    void SkipHalfOfDay() // am, p.m.
    {
        const std::size_t start = place_;
        if (Take(u"ap") != kNone) {
            Take(u".");
            if (Take(u"m") != kNone)
                Take(u".");
            else
                place_ = start; // a zone
        }
    }

    bool SkipZone() // Z, GMT, +01, +0100, +01:00, GMT+2, +0100 (CET)
    {
        constexpr int kLongestName = 5;
        SkipBlanks();
        for (int letters = 0; letters < kLongestName && Here() >= u'a' && Here() <= u'z'; ++letters)
            ++place_;
        SkipBlanks();
        int number = 0;
        if (Take(u"+-") != kNone && !TakeNumber(4, 4, number)) {
            if (!TakeNumber(1, 2, number) || (Take(u":") != kNone && !TakeNumber(2, 2, number)))
                return false;
        }
        SkipBlanks();
        if (Take(u"(") != kNone) {
            place_ = std::min(text_.find_first_of(u"()", place_), text_.size());
            if (Take(u")") == kNone)
                return false;
        }
        return SkipBlanks();
    }

    [[nodiscard]] char16_t Here() const { return place_ < text_.size() ? text_[place_] : kNone; }

    // One of these characters, or none.
    char16_t Take(std::u16string_view characters)
    {
        const char16_t here = Here();
        if (here == kNone || characters.find(here) == std::u16string_view::npos)
            return kNone;
        ++place_;
        return here;
    }

    // A name with no letter or digit right behind it.
    bool TakeName(std::u16string_view name)
    {
        const std::u16string_view rest = text_.substr(place_);
        if (!rest.starts_with(name) || (rest.size() > name.size() && u_isalnum(rest[name.size()])))
            return false;
        place_ += name.size();
        return true;
    }

    bool TakeDigits()
    {
        const std::size_t start = place_;
        while (IsDigit(Here()))
            ++place_;
        return place_ > start;
    }

    // All digits that stand here, when they are as many; at most eight.
    bool TakeNumber(std::size_t fewest, std::size_t most, int& number)
    {
        const std::size_t start = place_;
        const bool fits = TakeDigits() && place_ - start >= fewest && place_ - start <= most;
        if (!fits) {
            place_ = start;
            return false;
        }
        number = 0;
        for (const char16_t digit : text_.substr(start, place_ - start))
            number = number * 10 + (digit - u'0');
        return true;
    }

    bool SkipSeparator(std::u16string_view characters)
    {
        SkipBlanks();
        Take(characters);
        return SkipBlanks();
    }

    bool SkipBlanks()
    {
        while (place_ < text_.size() && u_isUWhiteSpace(text_[place_]))
            ++place_;
        return true;
    }

    [[nodiscard]] std::chrono::year_month_day Day() const
    {
        return {std::chrono::year(year_), std::chrono::month(static_cast<unsigned>(month_)),
            std::chrono::day(static_cast<unsigned>(day_))};
    }

    std::u16string_view text_;
    const DateWords& words_;
    std::size_t place_ = 0;
    int year_ = 0;
    int month_ = 0;
    int day_ = 0;
};

} // namespace

std::optional<std::chrono::year_month_day> ReadDate(std::u16string_view folded, const DateWords& words)
{
    return DateReader(folded, words).Read();
}

} // namespace vantro
