// Feeds: their coding, how they are cut into items, and what of them is new.

#include "base/AsciiText.h"
#include "base/TextCoding.h"
#include "feeds/MergePlan.h"
#include "feeds/SiteOperations.h"
#include "feeds/modXML.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

namespace {

void CheckText(std::string_view bytes)
{
    const std::string decoded = DecodeFeedText(bytes);
    Require(IsUtf8(decoded), "decoded text is UTF-8");
    Require(DecodeFeedText(decoded) == decoded, "decoding twice changes nothing");
    Require(!IsUtf8(bytes) || decoded == bytes, "valid text is taken as it is");
    Require(EncodePageText(decoded).find("&#65533;") == std::string::npos
            || decoded.find("\xEF\xBF\xBD") != std::string::npos
            || decoded.find("&#65533;") != std::string::npos,
        "a page loses no character of valid text");

    constexpr std::size_t kMost = 20;
    const std::string line = OneLine(bytes, kMost);
    Require(IsUtf8(line), "a line is UTF-8");
    std::size_t characters = 0;
    for (const char c : line) {
        Require(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F, "a line has no control characters");
        characters += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1 : 0;
    }
    Require(characters <= kMost + 1, "a line is no longer than asked for, but for the ellipsis");
    Require(EncodePageText(bytes).size() <= bytes.size() * 8, "a byte becomes one reference at most");
}

// The one pass against what it stands for.
void CheckCut(std::string_view feed)
{
    constexpr std::string_view kElements[] = {"title", "link", "description", "date"};
    std::vector<std::string_view> rows;
    for (const std::string_view item : SplitItems(feed, kMostItems)) {
        rows.push_back(item);
        for (const std::string_view element : kElements)
            rows.push_back(ExtractTag(element, item));
    }
    Require(CutItems(feed, kMostItems, kElements) == rows, "one pass gives what one after the other does");
}

// Titles are views that prove to lie in the text they were taken from.
std::vector<std::string_view> CheckItems(std::string_view feed)
{
    std::vector<std::string_view> titles;
    const char* rest = feed.data();
    const char* const end = feed.data() + feed.size();
    for (const std::string_view item : SplitItems(feed, kMostItems)) {
        Require(item.data() >= rest && item.data() + item.size() <= end, "items lie in the feed, in order");
        Require(titles.empty() || item.data() == rest, "each item begins right behind the one before");
        Require(ToLowerAscii(item).ends_with("</item>"), "each item ends with its closing tag");
        rest = item.data() + item.size();
        const std::string_view title = ExtractTag("title", item);
        Require(title.empty() || (title.data() >= item.data() && title.data() + title.size() <= rest),
            "a field lies in its item");
        Require(ToLowerAscii(title).find("</title>") == std::string::npos,
            "a field ends at the first closing tag");
        titles.push_back(title);
    }
    return titles;
}

// What is received is kept as read in every second place, then received again.
void CheckMerge(const std::vector<std::string_view>& titles)
{
    const MergePlan first = PlanMerge({}, titles);
    Require(first.states.size() == titles.size(), "every incoming item has a state");
    Require(first.newItems == titles.size(), "all of a first feed is new");
    std::vector<KeptItem> kept;
    for (std::size_t i = 0; i < titles.size(); ++i)
        kept.push_back({std::string(titles[i]), first.states[i]});
    const MergePlan again = PlanMerge(kept, titles);
    Require(again.states == first.states, "the same feed gives the same states");
    for (std::size_t i = 0; i < titles.size(); i += 2)
        kept[i].state = {TreeImage::ItemRead, false, "<READ>"};
    const MergePlan merged = PlanMerge(kept, titles);
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const std::size_t last = static_cast<std::size_t>(
            std::find_if(kept.rbegin(), kept.rend(), [&](const KeptItem& k) { return k.title == titles[i]; })
                .base()
            - kept.begin() - 1);
        const bool isFirst = std::find(titles.begin(), titles.end(), titles[i]) - titles.begin()
            == static_cast<std::ptrdiff_t>(i);
        if (isFirst)
            Require(merged.states[i] == kept[last].state, "a read mark survives a merge that keeps its item");
    }
}

} // namespace

} // namespace vantro

void vantro::Try(std::string_view bytes)
{
    CheckText(bytes);
    CheckCut(bytes);
    CheckMerge(CheckItems(bytes));
}
