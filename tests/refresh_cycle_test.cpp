#include "shell/RefreshCycle.h"
#include "shell/TreeClicks.h"
#include "tests/support/FeedFixture.h"
#include "tests/support/TestPump.h"

namespace vantro {

struct FakeTimer final : MinuteTimer {
    void Enable(std::chrono::milliseconds interval) override { interval_ = interval; }
    void Disable() override { interval_ = {}; }

    std::chrono::milliseconds interval_{}; // zero while it is off
};

// A refresh cycle whose downloads go nowhere: each is refused at once or never started.
struct RefreshCycleTest : FeedFixture {
    std::string Tick()
    {
        countdown_.clear();
        cycle_->tmrDownload_Timer();
        return countdown_;
    }

    RefreshCycleTest()
    {
        FeedHosts
            hosts; // with no address that can be read, so every download ends in an error while it is begun
        for (const Site* site : Sites())
            hosts.addresses[site] = "refused:" + std::string(site->host);
        const auto control = [this](const Site& site) -> DownloadEngine& {
            return engines_.try_emplace(&site, reader_, pump_).first->second;
        };
        cycle_.emplace(Services(), control, hosts, folder_.Path(), timer_,
            RefreshCycle::Outlets{[this](int, const std::string& text) { boxes_.push_back(text); },
                [this](const std::string& text) { countdown_ = text; },
                [this](const std::string& text) { check_ += text + "\n"; }, [this] { check_ += "!"; }});
    }

    AsyncRead reader_{[] {}};
    test::TestPump pump_;
    std::map<const Site*, DownloadEngine> engines_;
    FakeTimer timer_;
    std::vector<std::string> boxes_;
    std::string countdown_;
    std::string check_;
    std::optional<RefreshCycle> cycle_;
};

TEST_F(RefreshCycleTest, BringsEverySiteTheFeedOfItsOwnHost)
{
    const std::map<const Site*, std::string> urls{
        {&modVANTRO, "refused:http://www.vantro.example/vantro/vantro.xml"},
        {&modXBINS, "refused:http://www.xbins.example/xbins.xml"},
        {&modXBOXSCENE, "refused:http://www.xbox-scene.example/xbox1data/xbox-scene.xml"},
        {&modMAXCONSOLE, "refused:http://www.maxconsole.example/rss/xboxfeed.rss"}};
    for (const auto& [site, url] : urls) // as if downloaded
        folder_.Write(url.substr(url.rfind('/') + 1), "<item><title>" + url + "</title></item>");
    cycle_->StartFeedDownloads();
    for (const auto& [site, url] : urls) {
        EXPECT_EQ(engines_.at(site).FileURL(), url);
        EXPECT_EQ(TreeTitles(*site), Titles{url});
    }
    EXPECT_EQ(
        check_, "Checking 4 sites\nChecking 3 sites\nChecking 2 sites\nChecking 1 site\n4 new items\n!");
    check_.clear();
    cycle_->StartFeedDownloads();
    EXPECT_TRUE(check_.ends_with("No new items; 4 sites could not be read\n")) << check_;
}

TEST_F(RefreshCycleTest, CountsDownAndChecksOneMinuteAfterTheLast)
{
    SetOption(kCheckInterval.name, 1);
    SetOption(kCheckIntervalMinutes.name, 5);
    cycle_->StartRefreshTimer();
    EXPECT_EQ(timer_.interval_, std::chrono::minutes(1));
    for (int round = 0; round < 2; ++round) {
        for (const std::string left : {"5 minutes", "4 minutes", "3 minutes", "2 minutes", "1 minute"})
            EXPECT_EQ(Tick(), "Checking for new items in " + left);
        EXPECT_TRUE(boxes_.empty());
        EXPECT_EQ(Tick(), "");
        EXPECT_EQ(boxes_.size(), StripCount()) << "the check has begun, and each news site's download failed";
        boxes_.clear();
    }
    Tick();
    Tick();
    SetOption(kCheckIntervalMinutes.name, 1);
    Tick();
    EXPECT_EQ(boxes_.size(), StripCount()) << "a lowered interval counts from the next tick on";
    EXPECT_EQ(said_, Titles{}) << "where no file came nothing is merged";
    SetOption(kCheckIntervalMinutes.name, 3);
    Tick();
    cycle_->StartRefreshTimer();
    EXPECT_EQ(Tick(), "Checking for new items in 3 minutes") << "arming counts anew";
    cycle_->StopRefreshTimer();
    EXPECT_TRUE(countdown_.empty() && timer_.interval_ == std::chrono::minutes(0));
}

TEST_F(RefreshCycleTest, ArmsTheTimerOnlyWhenBothSettingsAskForIt)
{
    for (const auto& [interval, minutes, armed] :
        {std::tuple{0, 5, false}, {1, 0, false}, {1, -3, false}, {2, 5, false}, {1, 5, true}}) {
        timer_.Disable();
        SetOption(kCheckInterval.name, interval);
        SetOption(kCheckIntervalMinutes.name, minutes);
        cycle_->StartRefreshTimer();
        EXPECT_EQ(timer_.interval_.count() > 0, armed) << interval << " " << minutes;
    }
    SetOption(kCheckInterval.name, 0);
    cycle_->StartFeedDownloads();
    EXPECT_GT(timer_.interval_.count(), 0) << "arming never stops a timer that runs";
}

TEST_F(RefreshCycleTest, TellsErrorsOfTheNewsSitesInTheirWords)
{
    for (const auto& [e, text] :
        {std::pair{1, "1> Error - Download Unavailable: why"}, {2, "1> Error - Redirected: why"},
            {3, "1> Error - Zero Bytes Returned: why"}, {4, "1> Error - File Save Error: why"},
            {99, "1> Error - Unknown: why"}, {7, "1> Error - : why"}}) {
        engines_.at(&modXBOXSCENE).Events.DLError(e, "why");
        EXPECT_EQ(boxes_.back(), text);
    }
    EXPECT_FALSE(engines_.at(&modVANTRO).Events.DLError) << "the program's own feed fails in silence";
}

TEST_F(FeedFixture, ClicksActOnTheSelectedNodeByTheButtonPressedLast)
{
    std::string did;
    TreeClicks clicks(*tree_,
        {[&](const Site&, const std::string& key) { did = "page " + key; },
            [&](bool read, bool unread) {
                did = std::string("popup ") + (read ? "read " : "- ") + (unread ? "unread" : "-");
            },
            [&](const std::string& text) { did = text; }});
    const auto click = [&](const char* key, std::int16_t button) {
        did.clear();
        tree_->Select(tree_->Find(key));
        clicks.tv_MouseDown(button);
        clicks.tv_Click();
        return did;
    };
    ReceiveTitles(modXBOXSCENE, {"A"});
    EXPECT_EQ(click("nothing", TreeClicks::kLeftButton), "");
    EXPECT_EQ(click("XBINS", TreeClicks::kLeftButton), "");
    EXPECT_EQ(click("XBINS", TreeClicks::kRightButton), "popup - -");
    EXPECT_EQ(click("xbsc1", TreeClicks::kLeftButton), "page xbsc1");
    EXPECT_EQ(click("xbsc1", TreeClicks::kRightButton), "popup read -");
    EXPECT_EQ(click("xbsc1", 4), "");
    ReceiveTitles(modXBOXSCENE, {"New", "A"});
    EXPECT_EQ(clicks.PopupItem(), tree_->Find("xbsc2")) << "an open popup belongs to its story";
    ReceiveTitles(modXBOXSCENE, {"Newer", "A"});
    click("xbsc1", TreeClicks::kRightButton);
    ReceiveTitles(modXBOXSCENE, {"A", "Newest"});
    EXPECT_EQ(clicks.PopupItem(), nullptr) << "gone, and the site is no item";
    tree_->SetState(*tree_->Find("xbsc1"), {TreeImage::ItemRead, false, "<READ>"});
    EXPECT_EQ(click("xbsc1", TreeClicks::kRightButton), "popup - unread");
    tree_->SetState(*tree_->Find("XBINS"), {TreeImage::Site, false, "<READ>"});
    EXPECT_EQ(click("XBINS", TreeClicks::kLeftButton), "Unknown item tag!. Please contact Tobrin");
}

} // namespace vantro
