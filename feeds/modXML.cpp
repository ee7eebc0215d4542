#include "feeds/modXML.h"

#include "base/AsciiText.h"

#include <algorithm>
#include <string>

namespace vantro {

namespace {

constexpr std::string_view kItemOpens = "<item>";
constexpr std::string_view kItemCloses = "</item>";
constexpr std::size_t kNowhere = std::string_view::npos;

bool StandsAt(std::string_view text, std::size_t position, std::string_view lowerTag)
{
    if (text.size() - position < lowerTag.size())
        return false;
    return std::equal(lowerTag.begin(), lowerTag.end(), text.begin() + static_cast<std::ptrdiff_t>(position),
        [](char lower, char given) { return lower == ToLowerAscii(given); });
}

// Position of a tag, given in lower case, at or after `from`.
std::size_t FindTag(std::string_view text, std::string_view lowerTag, std::size_t from)
{
    for (std::size_t at = text.find('<', from); at != kNowhere; at = text.find('<', at + 1)) {
        if (StandsAt(text, at, lowerTag))
            return at;
    }
    return kNowhere;
}

} // namespace

std::string_view ExtractTag(std::string_view tagName, std::string_view text)
{
    const std::string name = ToLowerAscii(Trim(tagName, " "));
    const std::string opening = "<" + name + ">";
    const std::string closing = "</" + name + ">";
    std::size_t begin = kNowhere;
    for (std::size_t at = text.find('<'); at != kNowhere; at = text.find('<', at + 1)) {
        if (StandsAt(text, at, closing)) // the first one of the text, so nothing behind it matters
            return begin == kNowhere ? std::string_view() : text.substr(begin, at - begin);
        if (begin == kNowhere && StandsAt(text, at, opening))
            begin = at + opening.size();
    }
    return {};
}

std::vector<std::string_view> SplitItems(std::string_view feedText, std::size_t most)
{
    std::vector<std::string_view> items;
    std::size_t opens = FindTag(feedText, kItemOpens, 0);
    std::size_t rest = opens;
    while (opens != kNowhere && items.size() < most) {
        const std::size_t closes = FindTag(feedText, kItemCloses, rest);
        if (closes == kNowhere)
            break;
        const std::size_t end = closes + kItemCloses.size();
        items.push_back(feedText.substr(rest, end - rest));
        rest = end;
        if (opens < rest)
            opens = FindTag(feedText, kItemOpens, rest);
    }
    return items;
}

} // namespace vantro
