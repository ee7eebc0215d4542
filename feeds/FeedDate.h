#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace vantro {

// Turns the dates that feeds carry into words: "Saturday 5 July 2003", with the names of the user's locale.
// Recognised are, each with or without a weekday in front and a time of day and zone behind: RFC 822 and 850,
// what C's ctime() writes, ISO 8601, a day and a month's name (English or the user's) in either order with a
// year, and "07/05/2003" (day and month in the locale's order). The day is the one written in the feed,
// whatever its time zone.
class FeedDate {
public:
    // A locale name such as "de_DE"; empty takes the user's (LC_ALL, LC_TIME, LANG).
    explicit FeedDate(std::string_view locale = {});
    ~FeedDate();
    FeedDate(const FeedDate&) = delete;
    FeedDate& operator=(const FeedDate&) = delete;

    // What is not recognised comes back as it is.
    [[nodiscard]] std::string Format(std::string_view text);

private:
    struct Formats;
    std::string locale_;
    std::unique_ptr<Formats> formats_; // made at first use, which keeps them out of the start
};

} // namespace vantro
