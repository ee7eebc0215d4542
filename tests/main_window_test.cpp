#include "feeds/ItemTag.h"
#include "platform/IdleCall.h"
#include "tests/support/FeedFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/window/WindowTest.h"
#include "windows/frmMain.h"

#include <cstdlib>
#include <ctime>
#include <wx/display.h>
#include <wx/stattext.h>
#include <wx/utils.h>

using namespace std::literals;

namespace vantro {

using test::PumpUntil;

// The whole program over folders of the test's own and a server that answers as it is told.
struct MainWindowTest : ::testing::Test {
    MainWindowTest()
    {
        for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            setenv(variable, folder.Path().c_str(), 1);
        std::filesystem::create_directory(folder.Path() / "vantro");
        std::string hosts = "[Hosts]\n";
        for (const Site* site : Sites())
            hosts += std::string(site->identifier) + "=" + server.Address("") + "\n";
        folder.Write("vantro/vantro.ini", hosts);
    }
    ~MainWindowTest() override { Close(); }

    void Start()
    {
        runtime = std::make_unique<Runtime>(ProgramFolders(), [] {
            CallWhenIdle([] { runtime ? runtime->reader.Deliver() : void(); }); // may come after Close()
        });
        window = new frmMain(*runtime);
        window->Form_Load();
        ASSERT_TRUE(PumpUntil([this] { return Caption("XBINS") != "Xbins" && PagesInFolder() == 0; }));
        window->Raise();
        ASSERT_TRUE(PumpUntil([this] { return window->IsActive(); }));
    }
    void Close()
    {
        if (window)
            window->Close();
        EXPECT_TRUE(PumpUntil([this] { return !window; }));
        runtime.reset();
    }
    void ServeAll(const std::string& feed)
    {
        for (const Site* site : Sites())
            server.Serve(std::string(site->feedPath), feed);
    }
    // Types as a user would; the keys are pressed while events are handled.
    static void Press(const std::string& keys)
    {
        ASSERT_EQ(wxExecute(VANTRO_TEST_PRESS " " + keys, wxEXEC_SYNC | wxEXEC_NODISABLE), 0);
    }
    [[nodiscard]] std::string Caption(const char* key) const
    {
        const NewsNode* node = runtime->tree.Find(key);
        return node != nullptr ? node->Text() : "";
    }
    [[nodiscard]] std::ptrdiff_t PagesInFolder() const
    {
        return std::distance(std::filesystem::directory_iterator(runtime->folder.Path()), {});
    }
    // The message box in sight; null when there is none.
    [[nodiscard]] static wxDialog* Box()
    {
        auto* box = dynamic_cast<wxDialog*>(wxWindow::FindWindowByName("messageBox"));
        return box != nullptr && box->IsShown() ? box : nullptr;
    }
    // Waits for the box, closes it, and tells what it said.
    std::string AnswerBox()
    {
        if (!PumpUntil([] { return Box() != nullptr; }))
            return "no box";
        std::string said;
        for (const wxWindow* part : Box()->GetChildren()) {
            if (const auto* text = dynamic_cast<const wxStaticText*>(part))
                said += text->GetLabel().utf8_string() + "\n";
        }
        Box()->Close();
        return said;
    }
    [[nodiscard]] wxRect Place(const char* name) const
    {
        return wxWindow::FindWindowByName(name, window)->GetRect();
    }

    TemporaryFolder folder;
    test::HttpServer server;
    static inline std::unique_ptr<Runtime> runtime;
    wxWeakRef<frmMain> window;
};

TEST_F(MainWindowTest, StartsInTheMiddleWithABranchForEachSiteAndLaysItselfOutAtEverySize)
{
    Start();
    EXPECT_EQ(window->GetTitle(), "Vantro");
    EXPECT_EQ(window->GetIcons().GetIconCount(), 7u);
    EXPECT_EQ(window->GetStatusBar()->GetStatusText(), "Press F5 to fetch the news.");
    EXPECT_EQ(runtime->tree.SelectedItem(), runtime->tree.Find("VANTRO"));
    EXPECT_EQ(Caption("XBOXSCENE"), "Xbox-Scene (0 New, 0 Unread, 0 Total)");
    const wxRect screen = wxDisplay(window.get()).GetGeometry();
    EXPECT_NEAR(window->GetRect().x, (screen.width - window->GetRect().width) / 2.0, 24);
    EXPECT_EQ(window->GetClientSize().x, 640);
    const int strips = static_cast<int>(StripCount());
    for (const wxSize size : {wxSize(640, 480), wxSize(801, 555), wxSize(1100, 900)}) {
        window->SetClientSize(size);
        ASSERT_TRUE(PumpUntil([&] { return Place("webPlace").GetRight() == window->GetClientSize().x - 1; }));
        const wxSize inside = window->GetClientSize();
        EXPECT_EQ(Place("tv"), wxRect(0, 0, 250, inside.y - 4 * strips));
        EXPECT_EQ(Place("picDownload"), wxRect(0, inside.y - 4 * strips, 250, 4 * strips));
        EXPECT_EQ(Place("webPlace"), wxRect(250, 0, inside.x - 250, inside.y));
        for (int i = 0; i < strips; ++i)
            EXPECT_EQ(Place(("download(" + std::to_string(i) + ")").c_str()), wxRect(0, 4 * i, 250, 4));
    }
}

TEST_F(MainWindowTest, LivesByKeyboardAlone)
{
    ServeAll(
        test::HttpText("200 OK", "<item><title>A</title><link>l</link></item><item><title>B</title></item>"));
    Start();
    Press("alt+m s");
    ASSERT_TRUE(PumpUntil([] {
        auto* options = dynamic_cast<wxTopLevelWindow*>(wxWindow::FindWindowByLabel("Options"));
        return options != nullptr && options->IsActive();
    }));
    Press("space Escape"); // "Auto expand sites with New items"
    ASSERT_TRUE(PumpUntil([] { return wxWindow::FindWindowByLabel("Options") == nullptr; }));
    ASSERT_TRUE(PumpUntil([this] { return window->IsActive(); }));
    Press("Menu Down Return"); // the marks are disabled on a site: this is "Update News Lists"
    ASSERT_TRUE(PumpUntil([this] {
        return Caption("XBOXSCENE") == "Xbox-Scene (2 New, 2 Unread, 2 Total)"
            && runtime->tree.Find("maxc2") != nullptr && runtime->tree.Find("vant2") != nullptr;
    }));
    EXPECT_TRUE(runtime->tree.Find("XBOXSCENE")->Expanded());
    EXPECT_NE(server.LastRequest().find("User-Agent: Vantro/1.0\r\n"), std::string::npos);

    Press("Down Down Return"); // the second item of the own feed's open branch
    ASSERT_TRUE(PumpUntil([this] { return Caption("VANTRO") == "Vantro (1 New, 1 Unread, 2 Total)"; }));
    const std::string told = test::Told(*window);
    for (const char* line :
        {"tree table News\n", "table cell Vantro (1 New, 1 Unread, 2 Total)\n", "table cell A, new\n",
            "table cell B, read\n", "progress bar Download of Xbins 0.00\n", "statusbar 8 new items\n"})
        EXPECT_NE(told.find(line), std::string::npos) << line << told;
    EXPECT_EQ(runtime->tree.SelectedItem()->Key(), "vant2");
    EXPECT_EQ(PagesInFolder(), 0);
    const wxWindow* list = wxWindow::FindWindowByName("tv", window.get());
    Press("F6");
    ASSERT_TRUE(PumpUntil([&] { return !list->HasFocus(); }));
    ServeAll(test::HttpText("200 OK", "<item><title>B</title></item><item><title>C</title></item>"));
    Press("F5");
    ASSERT_TRUE(PumpUntil([] { return runtime->tree.Find("vant2")->Text() == "C"; }));
    Press("F6 n");
    ASSERT_TRUE(PumpUntil([this] { return Caption("VANTRO") == "Vantro (0 New, 0 Unread, 2 Total)"; }));
    EXPECT_TRUE(list->HasFocus());
    Press("shift+F10 Down Return"); // on a read item the first is "Mark as Unread"
    ASSERT_TRUE(PumpUntil([] { return IsUnread(runtime->tree.Find("vant2")->Tag()); }));
    Press("Tab");
    EXPECT_TRUE(PumpUntil([] {
        const wxWindow* focused = wxWindow::FindFocus();
        return focused != nullptr && focused->GetParent()->GetName() == "webPlace";
    }));
    Close();
    Start();
    EXPECT_EQ(Caption("VANTRO"), "Vantro (0 New, 1 Unread, 2 Total)");
    Press("ctrl+q");
    EXPECT_TRUE(PumpUntil([this] { return !window; }));
}

// How long the interface thread works between two ticks, of the processor's time, as the machine may be busy.
struct Holds final : wxTimer {
    using Milliseconds = std::clock_t;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr Milliseconds kAllowed = 1000;
#else
    static constexpr Milliseconds kAllowed = 200; // of slow machines, where this is 70 to 80 on a fast one
#endif
    Milliseconds last = Now();
    Milliseconds longest = 0;

    static Milliseconds Now()
    {
        timespec used{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
        return used.tv_sec * 1000 + used.tv_nsec / 1'000'000;
    }
    void Notify() override
    {
        const Milliseconds now = Now();
        longest = std::max(longest, now - std::exchange(last, now));
    }
};

TEST_F(MainWindowTest, AnswersWithinATenthOfASecondWhateverTheServersSend)
{
    Start();
    Holds holds;
    holds.Start(1);
    const auto check = [&] {
        holds.last = Holds::Now(); // what the test itself did
        wxCommandEvent chosen(wxEVT_MENU, frmMain::mnuRefresh);
        window->ProcessWindowEvent(chosen);
    };
    for (const auto& [items, text] : {std::pair{100'000, ""s}, {10'000, std::string(6000, 'w')}}) {
        std::string feed;
        for (int i = 0; i < items; ++i)
            feed += "<item><title>" + std::to_string(items + i) + "</title><description>" + text
                + "</description></item>";
        ServeAll(test::HttpText("200 OK", feed));
        check();
        const auto isTaken = [&, areMany = text.empty()](const Site* site) {
            const std::string caption = Caption(site->identifier.data());
            return !caption.ends_with("(0 New, 0 Unread, 0 Total)")
                && caption.ends_with(" 10000 Total)") == areMany;
        };
        EXPECT_TRUE(PumpUntil([&] { return std::ranges::all_of(Sites(), isTaken); }, 30s));
        EXPECT_LE(std::exchange(holds.longest, 0), Holds::kAllowed) << items;
    }
    using Then = test::HttpServer::Then;
    const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::tuple<std::string, Then, std::string> manners[]
        = {{chunked, Then::Patter, "1\r\nx\r\n"}, {chunked, Then::Flood, "1\r\nx\r\n"},
            {"HTTP/1.1 200 OK\r\n\r\n", Then::Flood, "x"}, {"", Then::Flood, "HTTP/1.1 103 \r\n\r\n"}};
    for (std::size_t i = 0; i < Sites().size(); ++i) {
        const auto& [text, then, again] = manners[i % std::size(manners)];
        server.Serve(std::string(Sites()[i]->feedPath), text, then, again);
    }
    const auto before = Holds::Now();
    check();
    test::Rest(2s);
    EXPECT_LE(holds.longest, Holds::kAllowed);
    EXPECT_LT(Holds::Now() - before, 2 * Holds::kAllowed) << "in two seconds";
}

TEST_F(MainWindowTest, AStandingBoxHoldsUpNothing)
{
    const std::string target = server.Address("/" + std::string(7800, 'x'));
    ServeAll(test::HttpText("301 Moved", {}, "Location: " + target + "\r\n"));
    Start();
    for (const char* title : {"A", "B", "C"}) {
        server.Serve("/xbox1data/xbox-scene.xml",
            test::HttpText("200 OK", "<item><title>" + std::string(title) + "</title></item>"));
        wxCommandEvent check(wxEVT_MENU, frmMain::mnuRefresh);
        window->ProcessWindowEvent(check);
        ASSERT_TRUE(PumpUntil([&] { return Box() != nullptr && Caption("xbsc1") == title; })) << title;
    }
    ASSERT_TRUE(PumpUntil([] { return Box()->IsActive(); }));
    EXPECT_LT(Box()->GetSize().x, 600) << "its button stays on the screen";
    std::vector<std::string> said{AnswerBox(), AnswerBox()};
    std::ranges::sort(said);
    EXPECT_TRUE(said[0].starts_with("0> Error - Redirected: Redirected to\nhttp://127.0.0.1:")) << said[0];
    EXPECT_TRUE(said[1].starts_with("2> Error - Redirected: ")) << said[1];
    EXPECT_TRUE(PumpUntil([] { return Box() == nullptr; })) << "three failures of one site are one box";
}

} // namespace vantro
