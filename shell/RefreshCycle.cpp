#include "shell/RefreshCycle.h"

#include "base/modMain.h"
#include "feeds/modMAXCONSOLE.h"
#include "feeds/modVANTRO.h"
#include "feeds/modXBINS.h"
#include "feeds/modXBOXSCENE.h"
#include "platform/Files.h"
#include "settings/modRegistry.h"

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

} // namespace

RefreshCycle::RefreshCycle(FeedServices services, Controls controls, const FeedHosts& hosts,
    std::filesystem::path folder, MinuteTimer& tmrDownload, Outlets outlets)
    : services_(std::move(services)),
      folder_(std::move(folder)),
      tmrDownload_(tmrDownload),
      outlets_(std::move(outlets)),
      feeds_{{{&controls.Vantro_Download, &modVANTRO, hosts.vantro + "/vantro/vantro.xml"},
          {controls.download[0], &modXBINS, hosts.xbins + "/xbins.xml"},
          {controls.download[1], &modXBOXSCENE, hosts.xboxScene + "/xbox1data/xbox-scene.xml"},
          {controls.download[2], &modMAXCONSOLE, hosts.maxConsole + "/rss/xboxfeed.rss"}}}
{
    for (const Feed& feed : feeds_)
        feed.control->Events.DLComplete = [this, &feed](std::int32_t) { DLComplete(feed); };
    for (int index = 0; index < 3; ++index) {
        controls.download[static_cast<std::size_t>(index)]->Events.DLError
            = [this, index](std::int32_t e, const std::string& error) { download_DLError(index, e, error); };
    }
}

void RefreshCycle::StartFeedDownloads()
{
    for (const Feed& feed : feeds_) {
        feed.control->SetFileURL(feed.url);
        feed.control->SetSaveFilePath(folder_.string());
        feed.control->BeginDownload();
    }
    StartRefreshTimer();
}

void RefreshCycle::StartRefreshTimer()
{
    if (services_.registry.ReadRegValue(RegRoot, RegPath, "Check Interval") == 1 && IntervalMinutes() > 0) {
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
    if (left == 1)
        outlets_.showCountdown("Checking for new items in 1 minute");
    else if (left >= 2)
        outlets_.showCountdown("Checking for new items in " + std::to_string(left) + " minutes");

    if (MinuteCount >= minutes) {
        StartFeedDownloads();
        MinuteCount = 0;
    } else {
        ++MinuteCount;
    }
}

std::int32_t RefreshCycle::IntervalMinutes() const
{
    return services_.registry.ReadRegValue(RegRoot, RegPath, "Check Interval Minutes").ToNumber();
}

void RefreshCycle::DLComplete(const Feed& feed)
{
    const std::filesystem::path file = feed.control->SaveFileName();
    if (FileExists(file))
        feed.module->MergeFeed(services_, file);
}

void RefreshCycle::download_DLError(int index, std::int32_t e, const std::string& error)
{
    outlets_.showMessage(index, std::to_string(index) + "> Error - " + ErrorKind(e) + ": " + error);
}

} // namespace vantro
