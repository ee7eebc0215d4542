#include "feeds/FeedDate.h"

#include "feeds/DateGrammar.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

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

std::u16string Folded(icu::UnicodeString text)
{
    text.foldCase();
    return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

void AddNames(const icu::Locale& locale, DateWords& words)
{
    using Symbols = icu::DateFormatSymbols;
    UErrorCode status = U_ZERO_ERROR;
    const Symbols symbols(locale, status);
    if (U_FAILURE(status))
        return;
    const auto name = [](const icu::UnicodeString& given) {
        return Folded(given.endsWith(u'.') ? icu::UnicodeString(given, 0, given.length() - 1) : given);
    };
    for (const auto context : {Symbols::FORMAT, Symbols::STANDALONE}) {
        for (const auto width : {Symbols::WIDE, Symbols::ABBREVIATED}) {
            std::int32_t count = 0;
            const icu::UnicodeString* months = symbols.getMonths(count, context, width);
            for (std::int32_t i = 0; i < count; ++i)
                words.months.emplace_back(name(months[i]), i + 1);
            const icu::UnicodeString* weekdays = symbols.getWeekdays(count, context, width);
            for (std::int32_t i = UCAL_SUNDAY; i < count; ++i)
                words.weekdays.push_back(name(weekdays[i]));
        }
    }
}

DateWords WordsOf(const icu::Locale& user)
{
    DateWords words;
    AddNames(icu::Locale::getEnglish(), words); // first, as feeds are written in it
    words.months.emplace_back(u"sept", 9);
    words.weekdays.insert(words.weekdays.end(), {u"tues", u"thur", u"thurs"});
    AddNames(user, words);

    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(user, status));
    icu::UnicodeString numeric;
    if (U_SUCCESS(status))
        numeric = patterns->getBestPattern("yMd", status);
    words.dayFirst = numeric.indexOf(u'd') < numeric.indexOf(u'M');
    words.yearFirst = numeric.startsWith(u'y');
    return words;
}

std::unique_ptr<icu::SimpleDateFormat> ShownFormat(const icu::Locale& user)
{
    UErrorCode status = U_ZERO_ERROR;
    auto shown = std::make_unique<icu::SimpleDateFormat>("EEEE d MMMM yyyy", user, status);
    // Feeds count years in the Gregorian way, and so does what is shown, whatever calendar the user's country
    // keeps.
    auto calendar = std::make_unique<icu::GregorianCalendar>(*icu::TimeZone::getGMT(), status);
    if (U_FAILURE(status))
        return nullptr;
    shown->adoptCalendar(calendar.release());
    return shown;
}

} // namespace

struct FeedDate::Formats {
    DateWords words;
    std::unique_ptr<icu::SimpleDateFormat> shown; // nothing when the library lacks its data
};

FeedDate::FeedDate(std::string_view locale) : locale_(locale.empty() ? UserLocale() : std::string(locale)) { }
FeedDate::~FeedDate() = default;

std::string FeedDate::Format(std::string_view text)
{
    constexpr std::size_t kLongest = 128; // no date is longer
    if (text.empty() || text.size() > kLongest)
        return std::string(text);
    if (!formats_) {
        const icu::Locale user(locale_.c_str());
        formats_ = std::make_unique<Formats>(Formats{WordsOf(user), ShownFormat(user)});
    }
    const auto size = static_cast<std::int32_t>(text.size());
    const auto date = ReadDate(
        Folded(icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), size))), formats_->words);
    if (!date || !formats_->shown)
        return std::string(text);
    const std::chrono::milliseconds since1970 = std::chrono::sys_days(*date).time_since_epoch();
    icu::UnicodeString out;
    formats_->shown->format(static_cast<UDate>(since1970.count()), out);
    std::string words;
    out.toUTF8String(words);
    return words;
}

} // namespace vantro
