#include "feeds/FeedDate.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <regex>
#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>
#include <vector>

namespace vantro {

namespace {

std::string UserLocale()
{
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0')
            continue;
        const std::string name = value;
        const std::string plain = name.substr(0, name.find_first_of(".@"));
        return plain == "C" || plain == "POSIX" ? "en_US" : plain;
    }
    return "en_US";
}

// What may follow a date: a time of day, with or without seconds, fraction and zone.
bool IsTimeOrNothing(const std::string& rest)
{
    static const std::regex kTime(
        R"([\sT,]*(\d{1,2}:\d{2}(:\d{2}([.,]\d+)?)?(\s*[AaPp]\.?[Mm]\.?)?(\s*([A-Za-z]{1,5}|[+-]\d{2}:?\d{2}))?)?\s*)");
    return rest.size() < 64 && std::regex_match(rest, kTime);
}

} // namespace

struct FeedDate::Formats {
    explicit Formats(const std::string& localeName)
    {
        const icu::Locale user(localeName.c_str());
        const icu::Locale english = icu::Locale::getEnglish();
        // "yy" also reads four digits; the letters are those of the Unicode date field symbols. English comes
        // first, as feeds are written in it.
        Add("EEE, d MMM yy", english);
        Add("EEE d MMM yy", english);
        Add("d MMM yy", english);
        Add("d MMM yy", user);
        Add("yyyy-MM-dd", english);
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
            icu::DateTimePatternGenerator::createInstance(user, status));
        icu::UnicodeString numeric;
        if (U_SUCCESS(status))
            numeric = patterns->getBestPattern("yMd", status);
        const bool monthFirst = numeric.indexOf(u'M') < numeric.indexOf(u'd') || numeric.isEmpty();
        Add(monthFirst ? "M/d/yy" : "d/M/yy", english);

        status = U_ZERO_ERROR;
        words = std::make_unique<icu::SimpleDateFormat>("EEEE d MMMM yyyy", user, status);
        if (U_SUCCESS(status))
            words->adoptCalendar(NewCalendar());
        else
            words.reset();
    }

    // Feeds count years in the Gregorian way, and so do the words, whatever calendar the user's country
    // keeps.
    static icu::Calendar* NewCalendar()
    {
        UErrorCode status = U_ZERO_ERROR;
        auto* calendar = new icu::GregorianCalendar(*icu::TimeZone::getGMT(), status);
        calendar->setLenient(false);
        return calendar;
    }

    void Add(const char* pattern, const icu::Locale& locale)
    {
        UErrorCode status = U_ZERO_ERROR;
        auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
        if (U_FAILURE(status))
            return;
        format->adoptCalendar(NewCalendar());
        format->setLenient(false);
        accepted.push_back(std::move(format));
    }

    [[nodiscard]] std::optional<UDate> Parse(const icu::UnicodeString& text) const
    {
        for (const auto& format : accepted) {
            icu::ParsePosition end(0);
            const UDate date = format->parse(text, end);
            if (end.getIndex() == 0)
                continue;
            std::string rest;
            text.tempSubString(end.getIndex()).toUTF8String(rest);
            if (IsTimeOrNothing(rest))
                return date;
        }
        return std::nullopt;
    }

    std::vector<std::unique_ptr<icu::SimpleDateFormat>> accepted;
    std::unique_ptr<icu::SimpleDateFormat> words;
};

FeedDate::FeedDate(std::string_view locale) : locale_(locale.empty() ? UserLocale() : std::string(locale)) { }
FeedDate::~FeedDate() = default;

std::string FeedDate::Format(std::string_view text)
{
    constexpr std::size_t kLongest = 128; // no date is longer
    if (text.empty() || text.size() > kLongest)
        return std::string(text);
    if (!formats_)
        formats_ = std::make_unique<Formats>(locale_);
    icu::UnicodeString given
        = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())))
              .trim();
    const std::optional<UDate> date = formats_->Parse(given);
    if (!date || !formats_->words)
        return std::string(text);
    icu::UnicodeString out;
    formats_->words->format(*date, out);
    std::string words;
    out.toUTF8String(words);
    return words;
}

} // namespace vantro
