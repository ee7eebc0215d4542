#include "feeds/ItemTag.h"
#include "tests/window/PagesFixture.h"

namespace vantro::test {

namespace {

using namespace std::chrono_literals;

TEST_F(PagesWindowTest, AClickedLinkAlwaysDoesSomething)
{
    Close();
    Open(3s); // is waited for an answer
    const std::string html = "Content-Type: text/html\r\n";
    const std::string opened = "It was opened in your browser.";
    struct Case {
        std::string path; // or a whole address
        std::string answer = {};
        std::string says = {};
        bool opensOutside = false;
        const Site& site = modVANTRO;
        std::string_view option = {};
        int button = wxMOUSE_BTN_LEFT;
        int key = 0;
        bool outsideStarts = true;
    };
    server_.Serve("/late", "", HttpServer::Then::Stall);
    for (const Case& c :
        {Case{"/a", Html("A page")}, {"/b", Html("A page"), "", false, modXBOXSCENE},
            {"/c", "", "", true, modXBOXSCENE, ExternalOption(modXBOXSCENE)},
            {"/d", "", "", true, modMAXCONSOLE, ExternalOption(modMAXCONSOLE)},
            {"mailto:a@a.example", "", "", true, modXBOXSCENE},
            {"/e", "", "", true, modVANTRO, "", wxMOUSE_BTN_MIDDLE},
            {"/f", "", "", true, modVANTRO, "", wxMOUSE_BTN_LEFT, WXK_CONTROL},
            {"/g", "", "", true, modVANTRO, "", wxMOUSE_BTN_LEFT, WXK_SHIFT},
            {HttpServer().Address("/"), "", "127.0.0.1 cannot be reached: "},
            {"/h", HttpText("404 Not Found"), "127.0.0.1 answered with error 404."},
            {"/i", HttpText("204 No Content"), "nothing to show"},
            {"/j", HttpText("401 A", "", "WWW-Authenticate: Basic realm=\"a\"\r\n"), "a name and a password"},
            {"/late", "", "has not answered"},
            {"/k", HttpText("200 OK", "PK", "Content-Type: application/zip\r\n"), opened, true},
            {"/l", HttpText("200 OK", "a", html + "Content-Disposition: attachment\r\n"), opened, true},
            {"/m", HttpText("200 OK", "a", html + "X-Frame-Options: DENY\r\n"), opened, true},
            {"/n", HttpText("200 OK", "a", html + "Content-Security-Policy: frame-ancestors 'self'\r\n"),
                opened, true},
            {"/o", HttpText("302 Found", "", "Location: /m\r\n"), opened, true},
            {"/p", HttpText("302 Found", "", "Location: tel:1\r\n"), "127.0.0.1 sends this link on"},
            {"/q", HttpText("302 Found", "", "Location: http://a.example:22/\r\n"),
                "127.0.0.1 sends this link on"},
            {"/r", HttpText("302 Found", "", "Location: mailto:a@a.example\r\n"), "", true},
            {"http://a.example:22/", "", "This link leads to"},
            {"javascript:alert(1)", "", "This link leads to"}, {"data:text/html,a", "", "This link leads to"},
            {"file:///etc/hostname", "", "This link leads to"}, {"a", "", "This link leads to"},
            {"/s", HttpText("200 OK", "PK", "Content-Type: application/zip\r\n"), "open it in your browser",
                true, modVANTRO, "", wxMOUSE_BTN_LEFT, 0, false},
            {"/t", "", "Your browser could not be started.", true, modVANTRO, "", wxMOUSE_BTN_MIDDLE, 0,
                false}}) {
        SCOPED_TRACE(c.path);
        const std::string link = c.path.starts_with('/') ? server_.Address(c.path) : c.path;
        if (!c.answer.empty())
            server_.Serve(c.path, c.answer);
        for (const Site* site : Sites()) {
            for (const auto& option : site->optionFrame.options)
                SetOption(option.name, option.name == c.option ? 1 : 0);
        }
        ReceiveLink(c.site, link);
        Show(c.site);
        EXPECT_EQ(pageSays_, "") << "what was said of the page before no longer holds";
        outside_.clear();
        outsideStarts_ = c.outsideStarts;
        ClickLink(400, 40, c.button, c.key);
        const bool goes = !c.answer.empty() || c.path == "/late" || c.says.starts_with("127.0.0.1");
        EXPECT_TRUE(PumpUntil([&] {
            return (c.answer.empty() || server_.Hits(c.path) > 0) && outside_.empty() != c.opensOutside
                && pageSays_.empty() == c.says.empty();
        }));
        EXPECT_EQ(outside_,
            c.opensOutside ? Titles{c.path == "/r" ? "mailto:a@a.example" : ReplaceAll(link, "/o", "/m")}
                           : Titles{});
        EXPECT_NE(pageSays_.find(c.says), std::string::npos) << pageSays_;
        Pump(c.opensOutside ? OutsideGate::kBetween : 0ms);
        const bool backAgain = !goes || c.path == "/m" || c.path == "/n" || c.path == "/o";
        const std::string last = went_.empty() ? "nowhere" : went_.back();
        EXPECT_EQ(last.starts_with("http"), !backAgain) << last;
        EXPECT_STREQ(webkit_web_view_get_title(engine_), "Untitled Document");
    }
}

TEST_F(PagesWindowTest, ALinkOfADescriptionIsRelativeToThatOfItsItem)
{
    for (const char* path : {"/a/c.html?d", "/e", "/t", "/a/b.html?%C3%A9", "/a/b.html"})
        server_.Serve(path, Html("A page"));
    const std::string host = HttpServer().Address("").substr(5); // with "//", and nobody is there
    for (const auto& [link, goes] :
        std::map<std::string, std::string>{{"c.html?d", "/a/c.html?d"}, {"/e", "/e"},
            {server_.Address("/t") + "\" target=\"_top", "/t"}, {"?\u00E9", "/a/b.html?%C3%A9"},
            {"", "/a/b.html"}, {host + "/e", "https"}, {"vantro-page://1/vantro-main.htm", ""},
            {"file:///etc/hostname", ""}, {"javascript:location='/e'", ""}, {"data:text/html,x", ""}}) {
        SCOPED_TRACE(link);
        ReceiveLink(modVANTRO, server_.Address("/a/b.html") + " ", "<a href=\"" + link + "\">x</a>");
        Show(modVANTRO);
        Click(400, 140);
        EXPECT_TRUE(PumpUntil(
            [&, to = goes] {
                return to == "https" ? !pageSays_.empty() : to.empty() || server_.Hits(to) >= 1;
            },
            goes.empty() ? 300ms : kPatience))
            << ::testing::PrintToString(went_);
        EXPECT_EQ(went_.size(),
            goes.empty()       ? 6U
                : goes == "/t" ? 8U
                               : 7U)
            << ::testing::PrintToString(went_);
    }
    ReceiveLink(modVANTRO, server_.Address("/a/b.html?q"),
        "<a href='#z'>x</a><div style='height:3000px'></div><div id=z "
        "style='height:3000px;background:lime'></div>");
    Show(modVANTRO);
    ClickLink(400, 140);
    EXPECT_TRUE(PumpUntil([this] { return ColourAt(400, 400) == std::string("\x00\xff\x00", 3); }));
    EXPECT_TRUE(went_.back().ends_with("/a/b.html?q#z")) << went_.back();
    EXPECT_TRUE(outside_.empty());
}

TEST_F(PagesWindowTest, APageFollowedToCannotMoveOnOpenWindowsOrAskQuestionsByItself)
{
    server_.Serve("/a%20b.nfo",
        Html("<meta http-equiv=refresh "
             "content='1;url=/moved'><script>alert(1);window.open();window.open('/window');"
             "setTimeout(()=>{location='/moved'},200);setTimeout(()=>{window.open('/window')},300)</script>"
             "<p style='position:fixed;left:0;top:0;width:100%;height:100px' "
             "onclick=\"for(i=0;i<30;++i)window.open('/clicked')\">Text"));
    SetOption(AutoNfoOption(), 1);
    ReceiveLink(modXBINS, ReplaceAll(server_.Address("/a b.nfo"), "http:", "HTTP:"));
    Show(modXBINS);
    EXPECT_TRUE(PumpUntil([&] { return server_.Hits("/a%20b.nfo") == 1; }))
        << "the bottom frame was sent there";
    Pump(300ms);
    Click(400, 300); // a click on nothing gives no leave to go
    Pump(1300ms);
    EXPECT_NE(server_.LastRequest().find("GET /a%20b.nfo "), std::string::npos) << server_.LastRequest();
    EXPECT_EQ(went_.size(), 7U) << ::testing::PrintToString(went_);
    EXPECT_TRUE(outside_.empty());
    Click(400, 140);
    EXPECT_TRUE(PumpUntil([this] { return !outside_.empty(); }));
    Pump(OutsideGate::kBetween);
    EXPECT_EQ(outside_, Titles{server_.Address("/clicked")});
    wxUIActionSimulator keys;
    const auto pressed = [&](int key, std::size_t places) {
        keys.Char(key, wxMOD_ALT);
        return PumpUntil([&] { return went_.size() == places; }, 1s);
    };
    EXPECT_TRUE(pressed(WXK_LEFT, 8));
    EXPECT_TRUE(went_.back().starts_with("vantro-page://story-")) << went_.back();
    EXPECT_FALSE(pressed(WXK_LEFT, 9)) << "the page before is that of another display";
    EXPECT_TRUE(pressed(WXK_RIGHT, 9));
    EXPECT_EQ(went_.back(), server_.Address("/a%20b.nfo"));
}

TEST_F(PagesWindowTest, ControlWithPlusAndZeroZoomsThisPageAndTheNext)
{
    const auto isLime = [this] { return ColourAt(150, 300) == std::string("\x00\xff\x00", 3); };
    for (const bool before : {false, true}) {
        ReceiveLink(
            modVANTRO, "", "<p style='position:fixed;top:0;width:130px;height:130px;background:lime'>");
        Show(modVANTRO);
        Click(300, 400);
        EXPECT_TRUE(PumpUntil([&] { return isLime() == before; }));
        for (int i = 0; i < 7; ++i) // doubles
            wxUIActionSimulator().Char(before ? '0' : '=', wxMOD_CONTROL);
        EXPECT_TRUE(PumpUntil([&] { return isLime() != before; }));
    }
}

TEST_F(PagesWindowTest, CookiesAreForPagesThatAreFollowedOnly)
{
    const std::string sets = "Content-Type: text/html\r\nSet-Cookie: a=1; Path=/\r\n";
    server_.Serve("/picture", HttpText("200 OK", "", sets));
    server_.Serve("/page",
        HttpText("200 OK",
            "<script>localStorage.b=2;new Image().src='/seen?'+document.cookie+localStorage.b</script>",
            sets));
    const std::string picture = "<img src='" + server_.Address("/picture") + "'>";
    for (const int times : {1, 2}) {
        ReceiveLink(modVANTRO, server_.Address("/page"), picture);
        Show(modVANTRO);
        EXPECT_TRUE(PumpUntil([&] { return server_.Hits("/picture") == times; }));
        EXPECT_EQ(server_.Requests().find("Cookie:"), std::string::npos);
    }
    ClickLink(400, 40);
    EXPECT_TRUE(PumpUntil([&] { return server_.Hits("/seen?a=12") == 1; })) << server_.Requests();
}

} // namespace

} // namespace vantro::test
