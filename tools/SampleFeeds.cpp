#include "SampleFeeds.h"

#include "feeds/ItemTag.h"
#include "feeds/Sites.h"
#include "platform/Files.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace vantro {

namespace {

namespace fs = std::filesystem;

// So many of the newest items of a feed file are held back at first, to appear one by one.
constexpr std::int64_t kHeldBack = 6;
// A feed that has grown to this length drops its oldest item for each new one, as news sites do.
constexpr std::int64_t kLongest = 40;
// A list fetched some time ago still holds items that the feed has dropped; their links work this far back.
constexpr std::int64_t kLinksKept = 2 * kLongest;

// More than this in a state file is damage, not growth.
constexpr std::int64_t kMostReleased = 1'000'000'000;

constexpr std::string_view kItemStart = "<item>";
constexpr std::string_view kItemEnd = "</item>";

std::string ReadSample(const fs::path& file)
{
    const std::optional<std::string> text = ReadWholeFile(file);
    if (!text || text->empty())
        throw std::runtime_error("Cannot read the sample file " + file.string());
    return *text;
}

// What stands between the two marks, or the empty text if one of them is missing.
std::string Between(std::string_view text, std::string_view before, std::string_view after)
{
    const auto from = text.find(before);
    if (from == std::string_view::npos)
        return {};
    const auto start = from + before.size();
    const auto end = text.find(after, start);
    return end == std::string_view::npos ? std::string() : std::string(text.substr(start, end - start));
}

// The content of one element as a web page shows it.
std::string Content(std::string_view item, const std::string& name)
{
    std::string content = Between(item, "<" + name + ">", "</" + name + ">");
    content = ReplaceAll(std::move(content), "<![CDATA[", "");
    content = ReplaceAll(std::move(content), "]]>", "");
    return content;
}

// Each item with whatever stands between it and the one before; `rest` is left with what follows the last.
std::vector<std::string> TakeItems(std::string_view& rest)
{
    std::vector<std::string> items;
    for (auto end = rest.find(kItemEnd); end != std::string_view::npos; end = rest.find(kItemEnd)) {
        items.emplace_back(rest.substr(0, end + kItemEnd.size()));
        rest.remove_prefix(end + kItemEnd.size());
    }
    return items;
}

// Invented items are dated one a day from here on, later than any item of the files.
std::string InventedDate(std::int64_t number)
{
    using namespace std::chrono;
    static constexpr const char* kMonths[] = {"January", "February", "March", "April", "May", "June", "July",
        "August", "September", "October", "November", "December"};
    constexpr sys_days kFirst = 2004y / March / 15d;
    constexpr std::int64_t kTenYears = 3650; // then the dates begin again: a year stays four digits long
    const year_month_day date{kFirst + days{number % kTenYears}};
    return std::to_string(static_cast<unsigned>(date.day())) + " "
        + kMonths[static_cast<unsigned>(date.month()) - 1] + " "
        + std::to_string(static_cast<int>(date.year()));
}

} // namespace

SampleFeed::SampleFeed(const fs::path& feedFile, const fs::path& moreFile)
{
    const std::string text = ReadSample(feedFile);
    const std::string more = ReadSample(moreFile);
    std::string_view rest = text;
    header_ = rest.substr(0, rest.find(kItemStart));
    rest.remove_prefix(header_.size());
    items_ = TakeItems(rest);
    end_ = rest;
    charset_ = Between(header_, "encoding=\"", "\"");

    std::string_view moreRest = more;
    patterns_ = TakeItems(moreRest);
    if (std::ssize(items_) <= kHeldBack || patterns_.empty())
        throw std::runtime_error("Too few items in " + (patterns_.empty() ? moreFile : feedFile).string());
}

std::int64_t SampleFeed::ItemCount(std::int64_t released) const
{
    return std::ssize(items_) - kHeldBack + released;
}

std::string SampleFeed::ItemAt(std::int64_t place) const
{
    const auto inFile = std::ssize(items_);
    if (place < inFile)
        return items_[static_cast<std::size_t>(inFile - 1 - place)];
    const std::int64_t number = place - inFile + 1;
    std::string item = patterns_[static_cast<std::size_t>(number - 1) % patterns_.size()];
    item = ReplaceAll(std::move(item), "{NUMBER}", std::to_string(number));
    item = ReplaceAll(std::move(item), "{DATE}", InventedDate(number));
    return item;
}

std::string SampleFeed::Text(std::int64_t released) const
{
    const std::int64_t count = ItemCount(released);
    std::string text = header_;
    for (std::int64_t place = count - 1; place >= std::max<std::int64_t>(0, count - kLongest); --place)
        text += ItemAt(place);
    return text + end_;
}

std::optional<std::string> SampleFeed::FindItem(std::string_view text, std::int64_t released) const
{
    const std::int64_t count = ItemCount(released);
    for (std::int64_t place = count - 1; place >= std::max<std::int64_t>(0, count - kLinksKept); --place) {
        std::string item = ItemAt(place);
        if (item.find(text) != std::string::npos)
            return item;
    }
    return std::nullopt;
}

SampleFeeds::SampleFeeds(
    const fs::path& folder, Pace pace, fs::path stateFile, std::chrono::steady_clock::time_point start)
    : pace_(pace),
      stateFile_(std::move(stateFile)),
      start_(start),
      articlePattern_(ReadSample(folder / "pages" / "article.html")),
      notesPattern_(ReadSample(folder / "pages" / "notes.nfo"))
{
    for (const Site* site : Sites()) {
        const fs::path file = fs::path(site->feedPath).filename();
        feeds_.emplace(site->feedPath, Entry{SampleFeed(folder / file, folder / "more" / file)});
    }
    LoadState();
}

SampleAnswer SampleFeeds::TakeFeed(
    const std::string& path, std::string_view base, std::chrono::steady_clock::time_point now)
{
    const std::lock_guard lock(mutex_);
    Entry& entry = feeds_.at(path);
    ++entry.requests;
    const std::int64_t released = entry.releasedBefore
        + (pace_.time.count() > 0 ? (now - start_) / pace_.time : entry.requests / pace_.requests);
    if (released != entry.released) {
        entry.released = released;
        SaveState();
    }
    SampleAnswer answer{entry.feed.Text(released), "text/xml"};
    answer.body = ReplaceAll(std::move(answer.body), "{BASE}", base);
    return answer;
}

std::optional<SampleAnswer> SampleFeeds::FindPage(const std::string& path, std::string_view base) const
{
    const bool isNotes = path.starts_with("/nfo/");
    const std::lock_guard lock(mutex_);
    for (const auto& [feedPath, entry] : feeds_) {
        // The mark of the next tag keeps "/news/1" from answering for "/news/12".
        const auto item = entry.feed.FindItem("{BASE}" + path + "<", entry.released);
        if (!item)
            continue;
        SampleAnswer answer{isNotes ? notesPattern_ : articlePattern_,
            (isNotes ? "text/plain; charset=" : "text/html; charset=") + entry.feed.Charset()};
        answer.body = ReplaceAll(std::move(answer.body), "{DATE}", Content(*item, "releasedate"));
        answer.body = ReplaceAll(std::move(answer.body), "{TEXT}", Content(*item, "description"));
        answer.body = ReplaceAll(std::move(answer.body), "{TITLE}", Content(*item, "title"));
        answer.body = ReplaceAll(std::move(answer.body), "{BASE}", base);
        return answer;
    }
    return std::nullopt;
}

void SampleFeeds::LoadState()
{
    if (stateFile_.empty())
        return;
    std::istringstream in(ReadWholeFile(stateFile_).value_or(""));
    std::string path;
    std::int64_t released = 0;
    while (in >> path >> released) {
        const auto found = feeds_.find(path);
        if (found != feeds_.end() && released > 0 && released <= kMostReleased)
            found->second.releasedBefore = found->second.released = released;
    }
}

void SampleFeeds::SaveState() const
{
    if (stateFile_.empty())
        return;
    std::string text;
    for (const auto& [path, entry] : feeds_)
        text += path + " " + std::to_string(entry.released) + "\n";
    if (ReplaceFile(stateFile_, text))
        std::cerr << "feedserver: cannot write " << stateFile_.string()
                  << "; the feeds will start anew next time\n";
}

} // namespace vantro
