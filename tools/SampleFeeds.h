// The sample feeds behind the demo and the tests: what each holds, when a further item appears, and the pages
// that their links lead to.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// When a further item appears at the top of a feed: with every so many requests of that feed, or, if `time`
// is above zero, each time that long has passed since the server began.
struct Pace {
    std::int64_t requests = 2;
    std::chrono::seconds time{0};
};

struct SampleAnswer {
    std::string body;
    std::string contentType; // with the character set of the bytes in `body`, if they have one
};

// One feed file, cut at its items, and the patterns from which items are invented once the file has no more.
class SampleFeed {
public:
    // Throws std::runtime_error naming the file if one of the two cannot be read or holds no item.
    SampleFeed(const std::filesystem::path& feedFile, const std::filesystem::path& moreFile);

    // The feed after `released` items have appeared above those it starts with: header, the newest items
    // first, end.
    [[nodiscard]] std::string Text(std::int64_t released) const;

    // The newest item that holds `text`, among those a reader may still have in its list.
    [[nodiscard]] std::optional<std::string> FindItem(std::string_view text, std::int64_t released) const;

    // The encoding that the feed's XML declaration names.
    [[nodiscard]] const std::string& Charset() const { return charset_; }

private:
    [[nodiscard]] std::int64_t ItemCount(std::int64_t released) const;
    [[nodiscard]] std::string ItemAt(std::int64_t place) const; // 0 is the oldest item of the file

    std::string header_;
    std::string end_;
    std::string charset_;
    std::vector<std::string> items_; // as in the file, newest first
    std::vector<std::string> patterns_;
};

// The feeds of all sites, each from the file of its name in one folder. Every operation may be called from
// any thread.
class SampleFeeds {
public:
    // Reads the feeds and page patterns below `folder`. With a `stateFile` the number of items that have
    // appeared is taken from it and kept in it, so that a feed goes on where the server left off; a missing
    // or unreadable one starts every feed anew. Without one (an empty path) nothing is kept. Throws
    // std::runtime_error naming the file that is missing or wrong.
    SampleFeeds(const std::filesystem::path& folder, Pace pace, std::filesystem::path stateFile,
        std::chrono::steady_clock::time_point start);

    // The feed at `path` (a site's feedPath) as this request finds it. Counts the request.
    SampleAnswer TakeFeed(
        const std::string& path, std::string_view base, std::chrono::steady_clock::time_point now);

    // The page at `path`, if an item of a feed links to it: release notes for "/nfo/", an article for any
    // other.
    [[nodiscard]] std::optional<SampleAnswer> FindPage(const std::string& path, std::string_view base) const;

private:
    struct Entry {
        SampleFeed feed;
        std::int64_t releasedBefore = 0; // by earlier runs
        std::int64_t released = 0; // in all
        std::int64_t requests = 0; // of this run
    };

    void LoadState();
    void SaveState() const;

    const Pace pace_;
    const std::filesystem::path stateFile_;
    const std::chrono::steady_clock::time_point start_;
    std::string articlePattern_;
    std::string notesPattern_;
    mutable std::mutex mutex_;
    std::map<std::string, Entry> feeds_; // by path; guarded by mutex_
};

} // namespace vantro
