#include "shell/RefreshCycle.h"

#include "base/Amounts.h"
#include "base/Words.h"
#include "base/modMain.h"
#include "platform/Files.h"
#include "settings/Options.h"
#include "settings/modRegistry.h"

#include <iterator>
#include <utility>

namespace vantro {

namespace {

constexpr std::chrono::milliseconds kTick = std::chrono::minutes(1);

std::string ErrorKind(std::int32_t e)
{
    switch (static_cast<DownloadErrorCode>(e)) {
    case DownloadErrorCode::Unavailable: return "Download Unavailable";
    case DownloadErrorCode::Redirected: return "Redirected";
    case DownloadErrorCode::ZeroBytes: return "Zero Bytes Returned";
    case DownloadErrorCode::FileSave: return "File Save Error";
    case DownloadErrorCode::Unknown: return "Unknown";
    }
    return {};
}

std::string CheckText(std::int64_t sites)
{
    return CountedWords("Checking %1 site", "Checking %1 sites", sites);
}

std::string ResultText(std::int64_t newItems, std::int64_t failedSites)
{
    std::string found
        = newItems == 0 ? Words("No new items") : CountedWords("%1 new item", "%1 new items", newItems);
    if (failedSites == 0)
        return found;
    return found + "; "
        + CountedWords("%1 site could not be read", "%1 sites could not be read", failedSites);
}

} // namespace

RefreshCycle::RefreshCycle(FeedServices services, const std::function<DownloadEngine&(const Site&)>& control,
    const FeedHosts& hosts, std::filesystem::path folder, MinuteTimer& tmrDownload, Outlets outlets)
    : services_(std::move(services)),
      folder_(std::move(folder)),
      tmrDownload_(tmrDownload),
      outlets_(std::move(outlets))
{
    for (const Site* site : Sites()) {
        Feed feed{&control(*site), site, hosts.addresses.at(site) + std::string(site->feedPath)};
        feed.control->Events.DLComplete = [this, feed](std::int32_t) { DLComplete(feed); };
        if (const auto strip = site->strip)
            feed.control->Events.DLError = [this, strip](std::int32_t e, const std::string& error) {
                download_DLError(*strip, e, error);
            };
        feeds_.push_back(std::move(feed));
    }
}

void RefreshCycle::StartFeedDownloads()
{
    if (awaited_.empty()) {
        newItems_ = 0;
        failed_ = 0;
    }
    for (const Feed& feed : feeds_)
        awaited_.insert(feed.site);
    outlets_.showCheck(CheckText(std::ssize(awaited_)));
    for (const Feed& feed : feeds_) {
        feed.control->SetFileURL(feed.url);
        feed.control->SetSaveFilePath(folder_.string());
        feed.control->BeginDownload();
        if (!feed.control->Downloading())
            FeedEnded(feed);
    }
    StartRefreshTimer();
}

void RefreshCycle::StartRefreshTimer()
{
    if (IsOn(services_.registry, kCheckInterval) && IntervalMinutes() > 0) {
        tmrDownload_.Enable(kTick);
        MinuteCount = 0;
    }
}

void RefreshCycle::StopRefreshTimer()
{
    tmrDownload_.Disable();
    outlets_.showCountdown({});
}

void RefreshCycle::tmrDownload_Timer()
{
    const std::int64_t minutes = IntervalMinutes();
    const std::int64_t left = minutes - MinuteCount;
    if (left >= 1)
        outlets_.showCountdown(
            "Checking for new items in " + std::to_string(left) + (left == 1 ? " minute" : " minutes"));

    if (MinuteCount >= minutes) {
        StartFeedDownloads();
        MinuteCount = 0;
    } else {
        ++MinuteCount;
    }
}

std::int32_t RefreshCycle::IntervalMinutes() const
{
    return ReadOption(services_.registry, kCheckIntervalMinutes).ToNumber();
}

void RefreshCycle::DLComplete(const Feed& feed)
{
    const std::filesystem::path file = feed.control->SaveFileName();
    if (FileExists(file))
        newItems_ += static_cast<std::int64_t>(MergeFeed(*feed.site, services_, file));
    else
        ++failed_;
    FeedEnded(feed);
}

void RefreshCycle::FeedEnded(const Feed& feed)
{
    if (awaited_.erase(feed.site) == 0)
        return;
    if (!awaited_.empty()) {
        outlets_.showCheck(CheckText(std::ssize(awaited_)));
        return;
    }
    outlets_.showCountdown({}); // of the check that has just been made
    outlets_.showCheck(ResultText(newItems_, failed_));
    if (newItems_ > 0)
        outlets_.newItems();
}

void RefreshCycle::download_DLError(int strip, std::int32_t e, const std::string& error)
{
    outlets_.showMessage(strip, std::to_string(strip) + "> Error - " + ErrorKind(e) + ": " + error);
}

} // namespace vantro
