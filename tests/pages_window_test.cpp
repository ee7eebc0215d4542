#include "feeds/ItemTag.h"
#include "feeds/PageDisplay.h"
#include "feeds/modMAXCONSOLE.h"
#include "feeds/modVANTRO.h"
#include "feeds/modXBINS.h"
#include "feeds/modXBOXSCENE.h"
#include "platform/Browser.h"
#include "tests/support/FeedFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/window/WindowTest.h"

#include <csignal>
#include <fstream>
#include <unistd.h>
#include <webkit2/webkit2.h>
#include <wx/frame.h>
#include <wx/sizer.h>
#include <wx/uiaction.h>
#include <wx/webview.h>

namespace vantro::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// Real pages in the real engine.
class PagesWindowTest : public FeedFixture {
protected:
    PagesWindowTest()
    {
        fs::create_directory(run_);
        Open(30s);
    }
    ~PagesWindowTest() override { Close(); }

    void Open(std::chrono::milliseconds loadLimit)
    {
        frame_ = new wxFrame(nullptr, wxID_ANY, "Pages", wxPoint(100, 100), wxSize(900, 600));
        browser_ = std::make_unique<Browser>(
            frame_, run_, [this] { display_->BrowserLost(); },
            BrowserSettings{loadLimit, [this](const std::string& address) { outside_.push_back(address); }});
        browser_->SetSilent(true);
        frame_->SetSizer(new wxBoxSizer(wxVERTICAL));
        frame_->GetSizer()->Add(browser_->Window(), 1, wxEXPAND);
        display_.emplace(*browser_, Services(), run_);
        engine_ = WEBKIT_WEB_VIEW(static_cast<wxWebView*>(browser_->Window())->GetNativeBackend());
        g_signal_connect(engine_, "decide-policy", G_CALLBACK(OnAllowed), &went_);
        ASSERT_TRUE(ShowAndSettle(*frame_));
    }
    void Close()
    {
        display_.reset();
        browser_.reset();
        DestroyAndWait(*frame_);
    }
    // The browser's own handler comes first and ends the signal where it forbids.
    static gboolean OnAllowed(
        WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type, Titles* went)
    {
        if (type != WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
            went->push_back(webkit_uri_request_get_uri(
                webkit_navigation_action_get_request(webkit_navigation_policy_decision_get_navigation_action(
                    WEBKIT_NAVIGATION_POLICY_DECISION(decision)))));
        return FALSE;
    }

    void Receive(const SiteModule& module, const std::string& feed)
    {
        module.MergeFeed(Services(), folder_.Write("received.xml", feed));
    }
    void Begin(const SiteModule& module, int item = 1)
    {
        shown_ = false;
        went_.clear();
        module.ShowItemPage(
            *display_, std::string(module.Row().prefix) + std::to_string(item), [this] { shown_ = true; });
    }
    void Show(const SiteModule& module, int item = 1)
    {
        Begin(module, item);
        ASSERT_TRUE(PumpUntil([this] { return shown_; }));
    }
    static void Pump(std::chrono::milliseconds time)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        (void)PumpUntil([end] { return std::chrono::steady_clock::now() > end; });
    }
    void Click(int x, int y)
    {
        wxUIActionSimulator mouse;
        mouse.MouseMove(browser_->Window()->ClientToScreen(wxPoint(x, y)));
        Pump(50ms);
        mouse.MouseClick();
        Pump(50ms);
    }
    [[nodiscard]] bool NoFilesLeft() const { return fs::is_empty(run_); }

    fs::path run_ = folder_.Path() / "run";
    wxFrame* frame_ = nullptr;
    std::unique_ptr<Browser> browser_;
    std::optional<PageDisplay> display_;
    WebKitWebView* engine_ = nullptr;
    Titles went_; // where pages and frames were let go, since the last Begin()
    Titles outside_;
    bool shown_ = false;
    HttpServer server_;
};

std::string Html(const std::string& body)
{
    return HttpText("200 OK", body, "Content-Type: text/html\r\n");
}

TEST_F(PagesWindowTest, NothingInAFeedActsOnAnyPage)
{
    SetOption("Xbins Auto NFO", 1);
    for (const auto& entry : fs::directory_iterator(fs::path(VANTRO_TEST_FEEDS) / "hostile")) {
        const std::string name = entry.path().stem();
        HttpServer server;
        const std::string feed = ReplaceAll(ReadWholeFile(entry).value(), "{BASE}", server.Address(""));
        for (const SiteModule* module : SiteModules()) {
            Receive(*module, feed);
            const std::size_t items = tree_->Find(module->Row().identifier)->Children().size();
            ASSERT_GT(items, 0U);
            for (std::size_t item = 1; item <= items; ++item) {
                SCOPED_TRACE(name + " " + std::string(module->Row().identifier) + " " + std::to_string(item));
                Show(*module, static_cast<int>(item));
                Pump(name == "meta-refresh" && item == 2 ? 1200ms : 30ms); // that one comes after a second
                std::erase_if(went_,
                    [](const std::string& address) { return address.starts_with("http://news.example/"); });
                ASSERT_EQ(went_.size(), 4U) << ::testing::PrintToString(went_);
                EXPECT_EQ(went_[0], "about:blank");
                EXPECT_TRUE(went_[2].ends_with("-title.htm") && went_[3].ends_with("-main.htm")) << went_[3];
                EXPECT_STREQ(webkit_web_view_get_title(engine_), "Untitled Document");
                EXPECT_EQ(wxTopLevelWindows.size(), 1U);
            }
        }
        // Pictures may be fetched, which also shows that the server is within reach.
        EXPECT_EQ(server.LastRequest().empty(), name != "style-background") << name << server.LastRequest();
    }
    EXPECT_TRUE(outside_.empty());
    EXPECT_TRUE(NoFilesLeft());
}

TEST_F(PagesWindowTest, AClickedLinkGoesWhereItsTargetSaysIfItIsSafe)
{
    struct Case {
        const SiteModule& module;
        const char* option;
        std::string link;
        bool loads;
        bool opensOutside;
    };
    const std::string web = server_.Address("/page");
    server_.Serve("/page", Html("A page"));
    const Case cases[] = {{modVANTRO, "", web, true, false}, {modXBOXSCENE, "", web, true, false},
        {modXBOXSCENE, "XboxScene External", web, false, true},
        {modMAXCONSOLE, "Max Console External", web, false, true},
        {modXBOXSCENE, "", "mailto:a@a.example", false, true},
        {modXBOXSCENE, "XboxScene External", "file:///etc/hostname", false, false},
        {modMAXCONSOLE, "", "javascript:location='" + web + "'", false, false},
        {modXBOXSCENE, "", "data:text/html,x", false, false}};
    int number = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.link + c.option);
        for (const char* option : {"XboxScene External", "Max Console External"})
            SetOption(option, option == std::string(c.option) ? 1 : 0);
        Receive(c.module,
            "<item><title>" + std::to_string(++number)
                + "<style>a{position:fixed;top:0;left:0;width:100%;height:95px}</style></title><link>"
                + c.link + "</link></item>");
        Show(c.module);
        outside_.clear();
        const int before = server_.Hits("/page");
        Click(400, 40);
        (void)PumpUntil([&] { return server_.Hits("/page") > before || !outside_.empty(); },
            c.loads || c.opensOutside ? kPatience : 300ms);
        EXPECT_EQ(server_.Hits("/page") - before, c.loads ? 1 : 0);
        EXPECT_EQ(outside_, c.opensOutside ? Titles{c.link} : Titles{});
        EXPECT_EQ(went_.size(), c.loads ? 5U : 4U) << ::testing::PrintToString(went_);
        EXPECT_STREQ(webkit_web_view_get_title(engine_), "Untitled Document");
    }
}

TEST_F(PagesWindowTest, APageFollowedToCannotMoveOnOpenWindowsOrAskQuestionsByItself)
{
    server_.Serve("/a%20b.nfo",
        Html("<meta http-equiv=refresh "
             "content='1;url=/moved'><script>alert(1);window.open();window.open('/window');"
             "setTimeout(()=>{location='/moved'},200);setTimeout(()=>{window.open('/window')},300)</script>"
             "<p style='position:fixed;left:0;top:0;width:100%;height:100px' "
             "onclick=\"window.open('/clicked')\">Text"));
    SetOption("Xbins Auto NFO", 1);
    Receive(modXBINS,
        "<item><title>A</title><link>" + ReplaceAll(server_.Address("/a b.nfo"), "http:", "HTTP:")
            + "</link></item>");
    Show(modXBINS);
    EXPECT_TRUE(PumpUntil([&] { return server_.Hits("/a%20b.nfo") == 1; }))
        << "the bottom frame was sent there";
    Pump(300ms);
    Click(400, 300); // a click on nothing gives no leave to go
    Pump(1300ms);
    EXPECT_NE(server_.LastRequest().find("GET /a%20b.nfo "), std::string::npos) << server_.LastRequest();
    EXPECT_EQ(went_.size(), 5U) << ::testing::PrintToString(went_);
    EXPECT_TRUE(outside_.empty());
    Click(400, 140);
    EXPECT_TRUE(PumpUntil([this] { return outside_ == Titles{server_.Address("/clicked")}; }));
}

TEST_F(PagesWindowTest, FilesLieThereOnlyWhileTheirPageLoads)
{
    server_.Serve("/stalls.gif", "", HttpServer::Then::Stall);
    Receive(modVANTRO,
        "<item><title>A</title><description><img src='" + server_.Address("/stalls.gif")
            + "'></description></item>");
    Receive(modXBINS, "<item><title>B</title></item><item><title>C</title></item>");
    const auto loading = [&] { return server_.Hits("/stalls.gif") > 0; };
    Begin(modVANTRO);
    ASSERT_TRUE(PumpUntil(loading));
    EXPECT_TRUE(fs::exists(run_ / "vantro-frames.htm"));
    EXPECT_LT(browser_->ReadyState(), 4);
    for (int i = 0; i < 40; ++i) { // clicks at any moment of a load
        Begin(modXBINS, i % 2 + 1);
        Pump(std::chrono::milliseconds(i));
        EXPECT_FALSE(fs::exists(run_ / "vantro-frames.htm"));
    }
    EXPECT_TRUE(PumpUntil([this] { return shown_; }));
    EXPECT_EQ(browser_->ReadyState(), 4);
    EXPECT_TRUE(NoFilesLeft());
    EXPECT_TRUE(said_.empty()) << said_.front();
    Close();
    Open(300ms);
    Show(modVANTRO);
    EXPECT_EQ(said_, Titles{"The page did not finish loading within 30 seconds."});
    EXPECT_TRUE(NoFilesLeft());
    Begin(modVANTRO);
    ASSERT_TRUE(PumpUntil([this] { return went_.size() == 4; }));
    Close();
    EXPECT_TRUE(NoFilesLeft());
    Open(30s);
}

// Ends the engine's processes below this one that draw pages, and says how many there were.
int KillWebProcesses(const std::string& above = std::to_string(getpid()))
{
    int killed = 0;
    for (const auto& thread : fs::directory_iterator("/proc/" + above + "/task")) {
        std::ifstream children(thread.path() / "children");
        for (std::string child, name; children >> child;) {
            killed += KillWebProcesses(child);
            std::ifstream("/proc/" + child + "/comm") >> name;
            if (name.starts_with("WebKitWebProc"))
                killed += kill(std::stoi(child), SIGKILL) == 0 ? 1 : 0;
        }
    }
    return killed;
}

TEST_F(PagesWindowTest, APageWhoseEngineDiedIsShownAgainOnce)
{
    Receive(modVANTRO, "<item><title>A</title></item>");
    Show(modVANTRO);
    went_.clear();
    ASSERT_GT(KillWebProcesses(), 0);
    EXPECT_TRUE(PumpUntil([this] { return went_.size() == 4 && browser_->ReadyState() == 4; }));
    Pump(100ms);
    EXPECT_TRUE(said_.empty());
    ASSERT_GT(KillWebProcesses(), 0);
    EXPECT_TRUE(PumpUntil([this] { return !said_.empty(); }));
    EXPECT_EQ(went_.size(), 4U);
    Show(modVANTRO);
    EXPECT_TRUE(NoFilesLeft());
}

TEST_F(PagesWindowTest, NoPageFollowedToCanHoldTheBrowser)
{
    Receive(modVANTRO, "<item><title>A</title></item>");
    SetOption("Xbins Auto NFO", 1);
    server_.Serve("/asks", Html("<script>onbeforeunload=()=>'Stay?'</script>"));
    server_.Serve("/hangs", Html("<script>setTimeout(()=>{for(;;);},50)</script>"));
    server_.Serve("/never", "", HttpServer::Then::Stall);
    for (const std::string path : {"/asks", "/never", "/hangs"}) {
        Receive(
            modXBINS, "<item><title>" + path + "</title><link>" + server_.Address(path) + "</link></item>");
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
