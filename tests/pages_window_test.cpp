#include "feeds/ItemTag.h"
#include "platform/Files.h"
#include "tests/window/PagesFixture.h"

#include <csignal>
#include <fstream>
#include <string_view>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantro::test {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// The feed with the server's address in it; where there is a name server, by a name of its own at each place,
// as the engine looks a name up ahead only once.
std::string WithAddresses(std::string feed, const std::string& name, const std::string& address)
{
    static int places = 0;
    const std::string mark = "{BASE}";
    for (std::size_t at = feed.find(mark); at != std::string::npos; at = feed.find(mark)) {
        const std::string host = std::to_string(++places) + "." + name + ".test";
        feed.replace(at, mark.size(),
            getenv("VANTRO_OWN_NETWORK") != nullptr ? ReplaceAll(address, "127.0.0.1", host) : address);
    }
    return feed;
}

TEST_F(PagesWindowTest, NothingInAFeedActsOrReachesAnythingLocalOnAnyPage)
{
    SetOption(AutoNfoOption(), 1);
    const fs::path local = folder_.Path() / "local";
    fs::create_directory(local);
    std::ofstream(local / "secret.gif") << "GIF89a";
    ASSERT_EQ(mkfifo((local / "pipe").c_str(), 0600), 0);
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, local.c_str(), IN_OPEN | IN_ACCESS), 0);
    for (const auto& entry : fs::directory_iterator(fs::path(VANTRO_TEST_FEEDS) / "hostile")) {
        const std::string name = entry.path().stem();
        HttpServer server;
        const std::string text = ReplaceAll(ReadWholeFile(entry).value(), "{FOLDER}", local.string());
        for (const Site* site : Sites()) {
            Receive(*site, WithAddresses(text, name, server.Address("")));
            const std::size_t items = tree_->Find(site->identifier)->Children().size();
            ASSERT_GT(items, 0U);
            for (std::size_t item = 1; item <= items; ++item) {
                SCOPED_TRACE(name + " " + std::string(site->identifier) + " " + std::to_string(item));
                Show(*site, static_cast<int>(item));
                Pump(name == "meta-refresh" && item == 2 ? 1200ms : 30ms); // that one comes after a second
                std::erase_if(went_,
                    [](const std::string& address) { return address.starts_with("http://news.example/"); });
                ASSERT_EQ(went_.size(), 6U) << ::testing::PrintToString(went_);
                EXPECT_EQ(went_[0], "about:blank");
                EXPECT_TRUE(went_[2].ends_with("-title.htm") && went_[3].ends_with("-main.htm")) << went_[3];
                EXPECT_TRUE(went_[4].ends_with("-title.htm?text")) << went_[4];
                EXPECT_TRUE(went_[5].starts_with("vantro-page://story-")) << went_[5];
                EXPECT_STREQ(webkit_web_view_get_title(engine_), "Untitled Document");
                EXPECT_EQ(wxTopLevelWindows.size(), 1U);
            }
        }
        // Pictures of descriptions alone are fetched, which also shows that the server is within reach.
        const std::string requests = server.Requests();
        EXPECT_EQ(
            requests.empty(), name != "style-background" && name != "local-files" && name != "image-names")
            << requests;
        const Titles secrets{"-title-", "-link-", "-homepage-", "-date-", "-releasedate-", "vantro-page",
            "Cookie", "Referer", folder_.Path().filename().string()};
        for (const std::string& never : secrets)
            EXPECT_EQ(requests.find(never), std::string::npos) << name << never << requests;
    }
    char event[4096];
    EXPECT_EQ(read(watch, event, sizeof event), -1) << "nothing local was opened";
    close(watch);
    EXPECT_TRUE(outside_.empty());
    EXPECT_TRUE(NoFilesLeft());
}

TEST_F(PagesWindowTest, TheTextShowsAtOnceWhateverItsPicturesDo)
{
    server_.Serve("/stalls.gif", "", HttpServer::Then::Stall);
    const std::string lime("\x00\xff\x00", 3);
    const std::string paint = "<style>html,body{background:lime!important}</style>";
    Receive(modVANTRO,
        "<item><title>A" + paint + "</title><description>" + paint + "<img src='"
            + server_.Address("/stalls.gif") + "'></description></item>");
    Receive(modXBINS, "<item><title>B</title></item><item><title>C</title></item>");
    Show(modXBINS);
    const auto start = std::chrono::steady_clock::now();
    Begin(modVANTRO);
    EXPECT_TRUE(PumpUntil([&] { return ColourAt(600, 60) == lime && ColourAt(600, 400) == lime; }));
    EXPECT_TRUE(PumpUntil([this] { return shown_; }));
    EXPECT_TRUE(NoFilesLeft());
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    RecordProperty("milliseconds", std::to_string(taken.count()));
    EXPECT_LT(taken, std::chrono::seconds(1)) << "on a busy machine; 100 ms are promised";
    EXPECT_TRUE(PumpUntil([&] { return server_.Hits("/stalls.gif") == 1; }));
    for (int i = 0; i < 40; ++i) { // clicks at any moment of a load
        Begin(modXBINS, i % 2 + 1);
        Pump(std::chrono::milliseconds(i));
        EXPECT_FALSE(fs::exists(run_ / "vantro-frames.htm"));
    }
    EXPECT_TRUE(PumpUntil([this] { return shown_; }));
    EXPECT_EQ(browser_->ReadyState(), 4);
    EXPECT_TRUE(NoFilesLeft());
    EXPECT_TRUE(said_.empty()) << said_.front();
    Begin(modVANTRO);
    ASSERT_TRUE(PumpUntil([this] { return fs::exists(run_ / "vantro-frames.htm"); }));
    EXPECT_LT(browser_->ReadyState(), 4);
    Close();
    EXPECT_TRUE(NoFilesLeft());
    Open(1ms);
    Show(modVANTRO);
    EXPECT_EQ(said_, Titles{"The page did not finish loading within 30 seconds."});
    EXPECT_TRUE(NoFilesLeft());
}

// Sends a signal to the engine's processes of this name below this one, and says how many there were.
int Signal(int number, std::string_view begin, const std::string& above = std::to_string(getpid()))
{
    int sent = 0;
    for (const auto& thread : fs::directory_iterator("/proc/" + above + "/task")) {
        std::ifstream children(thread.path() / "children");
        for (std::string child, name; children >> child;) {
            sent += Signal(number, begin, child);
            std::ifstream("/proc/" + child + "/comm") >> name;
            if (name.starts_with(begin))
                sent += kill(std::stoi(child), number) == 0 ? 1 : 0;
        }
    }
    return sent;
}

TEST_F(PagesWindowTest, APageWhoseEngineDiedIsShownAgainUnlessItDoesSoAgainAndAgain)
{
    Receive(modVANTRO, "<item><title>A</title></item>");
    Show(modVANTRO);
    int died = 0;
    for (; said_.empty() && died < 10; ++died) {
        went_.clear();
        ASSERT_GT(Signal(SIGKILL, "WebKitWebProc"), 0);
        EXPECT_TRUE(PumpUntil(
            [this] { return !said_.empty() || (went_.size() == 6 && browser_->ReadyState() == 4); }));
        Pump(100ms);
    }
    EXPECT_GE(died, 3);
    EXPECT_EQ(said_.size(), 1U);
    EXPECT_TRUE(went_.empty());
    Show(modVANTRO);
    EXPECT_TRUE(NoFilesLeft());
}

TEST_F(PagesWindowTest, APageIsShownWhateverBecomesOfTheProcessThatFetchesItsPictures)
{
    server_.Serve("/never", "", HttpServer::Then::Stall);
    for (const int number : {SIGKILL, SIGSTOP, SIGKILL}) {
        ReceiveLink(modVANTRO, "http://x.example/", "<img src='" + server_.Address("/never") + "'>");
        const int hits = server_.Hits("/never");
        Show(modVANTRO);
        ASSERT_TRUE(PumpUntil([&] { return server_.Hits("/never") > hits; }));
        ASSERT_EQ(Signal(number, "WebKitNetworkPr"), 1);
        if (number == SIGSTOP)
            Begin(modVANTRO);
        EXPECT_TRUE(PumpUntil([&] { return server_.Hits("/never") > hits + 1; }));
    }
    EXPECT_TRUE(said_.empty());
}

TEST_F(PagesWindowTest, NoPageFollowedToCanHoldTheBrowser)
{
    Receive(modVANTRO, "<item><title>A</title></item>");
    SetOption(AutoNfoOption(), 1);
    server_.Serve("/asks", Html("<script>onbeforeunload=()=>'Stay?'</script>"));
    server_.Serve("/hangs", Html("<script>setTimeout(()=>{for(;;);},50)</script>"));
    server_.Serve("/never", "", HttpServer::Then::Stall);
    for (const std::string path : {"/asks", "/never", "/hangs"}) {
        ReceiveLink(modXBINS, server_.Address(path));
        Show(modXBINS);
        ASSERT_TRUE(PumpUntil([&] { return server_.Hits(path) == 1; }));
        Click(400, 300);
        Show(modVANTRO);
        EXPECT_TRUE(PumpUntil([&] { return server_.Ended(path) == 1; })) << "nothing goes on unseen";
    }
    EXPECT_TRUE(said_.empty());
}

} // namespace

} // namespace vantro::test
