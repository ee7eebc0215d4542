#pragma once

#include "downloader/DownloadEngine.h"
#include "feeds/HostsFile.h"
#include "feeds/Site.h"
#include "feeds/SiteOperations.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace vantro {

// The window's timer, as the refresh cycle uses it.
class MinuteTimer {
public:
    virtual ~MinuteTimer() = default;
    // Ticks at this interval from now on; a timer that runs starts its interval anew.
    virtual void Enable(std::chrono::milliseconds interval) = 0;
    virtual void Disable() = 0;
};

// Decides when the feeds are fetched and what happens when a fetch ends. Takes over DLComplete and DLError of
// the sites' controls. Interface thread only; everything handed in outlives it.
class RefreshCycle {
public:
    // Where its news go besides the tree. All return at once.
    struct Outlets {
        // A box about the download of a site, by its strip; a newer one may take the place of one that
        // stands.
        std::function<void(int strip, const std::string& text)> showMessage;
        // The countdown in the status bar; an empty text takes it away.
        std::function<void(const std::string& text)> showCountdown;
        // What the check under way does, and then what it has brought.
        std::function<void(const std::string& text)> showCheck;
        // Called at the end of a check that has brought new items.
        std::function<void()> newItems;
    };

    // `control` is asked once for each of Sites(), in that order.
    RefreshCycle(FeedServices services, const std::function<DownloadEngine&(const Site&)>& control,
        const FeedHosts& hosts, std::filesystem::path folder, MinuteTimer& tmrDownload, Outlets outlets);

    // Starts a check of all feeds and returns at once. A feed whose download is still under way goes on with
    // that one.
    void StartFeedDownloads();
    // Arms the timer and sets the minute count to 0 if periodic checking is on and its minutes are above 0;
    // else changes nothing.
    void StartRefreshTimer();
    // Takes the countdown away as well.
    void StopRefreshTimer();
    // To be called at each tick.
    void tmrDownload_Timer();

private:
    struct Feed {
        DownloadEngine* control;
        const Site* site;
        std::string url;
    };

    [[nodiscard]] std::int32_t IntervalMinutes() const;
    void DLComplete(const Feed& feed);
    void FeedEnded(const Feed& feed);
    void download_DLError(int strip, std::int32_t e, const std::string& error);

    FeedServices services_;
    std::filesystem::path folder_;
    MinuteTimer& tmrDownload_;
    Outlets outlets_;
    std::vector<Feed> feeds_; // in the order in which a check starts them

    // Of the check under way, or the last one.
    std::set<const Site*> awaited_;
    std::int64_t newItems_ = 0;
    std::int64_t failed_ = 0; // sites of which no list came
};

} // namespace vantro
