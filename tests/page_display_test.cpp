#include "base/modMain.h"
#include "feeds/InformationPages.h"
#include "feeds/ItemTag.h"
#include "feeds/PageDisplay.h"
#include "platform/Files.h"
#include "tests/support/FeedFixture.h"
#include "web/PageAddress.h"

#include <cstdlib>
#include <set>

namespace vantro {

namespace {

namespace fs = std::filesystem;
using namespace std::literals;
using LoadEnd = PageBrowser::LoadEnd;
using Files = std::map<std::string, std::string>;

Files FilesIn(const fs::path& folder)
{
    Files files;
    std::error_code isGone;
    for (const auto& entry : fs::directory_iterator(folder, isGone))
        files[entry.path().filename()] = ReadWholeFile(entry.path()).value_or("unreadable");
    return files;
}

// Loads nothing; notes where it is sent and what lies in the folder then.
class FakeBrowser final : public PageBrowser {
public:
    explicit FakeBrowser(fs::path folder) : folder_(std::move(folder)) { }
    void ShowBlank(LoadEnded ended) override
    {
        sentTo.emplace_back("blank");
        files = FilesIn(folder_);
        endings.push_back(std::move(ended));
    }
    void ShowPage(const LocalPage& page, LoadEnded ended) override
    {
        ShowBlank(std::move(ended));
        sentTo.back() = page.folder / page.shown;
        shown = page;
        EXPECT_EQ(files.size(), page.files.size()) << "what is not listed stays behind";
        EXPECT_TRUE(numbers_.insert(page.number).second) << "late loads could be taken for this one's";
    }
    void NavigateFrame(const std::string& address, std::string_view frame) override
    {
        sentTo.push_back(std::string(frame) + " " + address);
    }
    [[nodiscard]] int ReadyState() const override { return 4; }
    void SetSilent(bool /*silent*/) override { }

    Titles sentTo;
    Files files; // at the newest call
    LocalPage shown{};
    std::vector<LoadEnded> endings;

private:
    fs::path folder_;
    std::set<std::uint64_t> numbers_;
};

class PageDisplayTest : public FeedFixture {
protected:
    PageDisplayTest()
    {
        setenv("LC_ALL", "en_US.UTF-8", 1);
        fs::create_directory(run_);
        display_.emplace(browser_, Services(), run_);
    }

    void Show(const Site& site)
    {
        ShowItemPage(site, *display_, std::string(site.prefix) + "1", [this] { ++shown_; });
    }
    void Answer(LoadEnd end = LoadEnd::Complete) { browser_.endings.back()(end); }
    fs::path run_ = folder_.Path() / "run";
    FakeBrowser browser_{run_};
    std::optional<PageDisplay> display_;
    int shown_ = 0;
};

TEST_F(PageDisplayTest, GoesFromTheBlankPageToTheFilesAndDeletesThemWhenTheyAreLoaded)
{
    for (const Site* site : Sites()) {
        SCOPED_TRACE(site->identifier);
        ReceiveTitles(*site, {"A"});
        Show(*site);
        EXPECT_EQ(UnreadTitles(*site), Titles{"A"}) << "still unread while the blank page loads";
        EXPECT_TRUE(browser_.files.empty());
        Answer();
        EXPECT_TRUE(Item(*site, "A").Image() == TreeImage::ItemRead && !Item(*site, "A").Bold());
        EXPECT_EQ(Stored(*site, 1, "Tag"), "<READ>");
        const auto last = browser_.sentTo.end();
        EXPECT_EQ(Titles(last - 2, last), (Titles{"blank", run_ / site->page->shown}));
        EXPECT_EQ(shown_, 0);
        Answer();
        EXPECT_TRUE(fs::is_empty(run_));
        EXPECT_EQ(std::exchange(shown_, 0), 1);
    }
    for (const auto& [show, shown] : {std::pair{&ShowAboutPage, "vantro.htm"}, {&ShowHelpPage, "help.htm"},
             {&ShowDonationsPage, "donations.htm"}}) {
        show(*display_);
        EXPECT_EQ(browser_.sentTo.back(), run_ / shown);
        Answer();
        EXPECT_TRUE(fs::is_empty(run_));
    }
    EXPECT_TRUE(said_.empty());
}

TEST_F(PageDisplayTest, FillsTheTemplatesInTheOrderOfTheSteps)
{
    struct Case {
        const Site& site;
        std::string_view on; // the option that sends a link outside
        const char* item;
        const char* file;
        Titles parts;
    };
    for (const Case& c :
        {Case{modXBINS, ExternalOption(modXBINS),
             "<title>A [NFO "
             "TEXT]</title><link>N</link><homepage>H</homepage><releasedate>2003-07-05</releasedate>",
             "xbins-title.htm",
             {">A N</div>", R"(href="N" target="mainFrame")", R"(href="H" target="_XbinsExternal1")",
                 "> Saturday 5 July 2003<", "src=\"vantro-page://{N}/xbins-logo.gif\""}},
            {modXBINS, "",
                "<title>\u20ac \u00e9 "
                "\u0416</title><link>HTTP://www.Xbins.EXAMPLE/</link><homepage>H</homepage>",
                "xbins-title.htm",
                {">\x80 \xe9 &#1046;</div>", R"(<a href="" target="mainFrame" title=""></a>)",
                    R"(href="H" target="mainFrame")", "Date:</span> <"}},
            {modVANTRO, "",
                "<title>[VERSION] [LINK]</title><link>L</link><homepage>H "
                "%5BLINK%5D</homepage><date>soon</date>",
                "vantro-title.htm",
                {">[VERSION] L</div>", R"(href="L" target="mainFrame")",
                    R"(href="H %5BLINK%5D" target="mainFrame")", "Your Version: " + VersionLine + "<",
                    "Item Date: soon<"}},
            {modMAXCONSOLE, "", "<title>A</title><description><b>[TITLE] [DESCRIPTION]</b></description>",
                "maxconsole-main.htm", {"<b>[TITLE] [DESCRIPTION]</b>"}},
            {modMAXCONSOLE, ExternalOption(modMAXCONSOLE), "<title>B</title><link>L</link>",
                "maxconsole-title.htm", {R"(href="L" target="_XboxSceneExternal1")"}},
            {modXBOXSCENE, ExternalOption(modXBOXSCENE), "<title>A</title><link>L</link>",
                "xboxscene-title.htm", {R"(href="L" target="_XboxSceneExternal1")"}},
            {modXBOXSCENE, ExternalOption(modMAXCONSOLE),
                "<title>[LINK TEXT]|[LINK TARGET] xboxscene-logo.jpg</title><link>[TITLE]</link>",
                "xboxscene-title.htm",
                {">[TITLE]|mainFrame vantro-page://{N}/xboxscene-logo.jpg</div>",
                    R"(href="[TITLE]" target="mainFrame" title="[TITLE]")"}},
            {modXBOXSCENE, "", "<title>C</title>", "xboxscene-main.htm",
                {"url(\"vantro-page://{N}/xboxscene-bgnd.gif\")"}}}) {
        for (const Site* site : Sites()) {
            for (const auto& option : site->optionFrame.options)
                SetOption(option.name, option.name == c.on ? 1 : 2);
        }
        Receive(c.site, "<item>"s + c.item + "</item>");
        Show(c.site);
        Answer();
        for (const std::string& part : c.parts)
            EXPECT_NE(
                browser_.files[c.file].find(ReplaceAll(part, "{N}", std::to_string(browser_.shown.number))),
                std::string::npos)
                << part << browser_.files[c.file];
        Answer();
    }
}

TEST_F(PageDisplayTest, SendsTheBottomFrameToTheNfoByItselfWhenToldTo)
{
    for (const auto& [option, link, end, goes] : std::vector<std::tuple<int, std::string, LoadEnd, bool>>{
             {1, "http://a.example/1.nfo", LoadEnd::Complete, true},
             {0, "http://a.example/2.nfo", LoadEnd::Complete, false}, {1, "", LoadEnd::Complete, false},
             {1, "http://WWW.xbins.example/", LoadEnd::Complete, false},
             {1, "http://a.example/3.nfo", LoadEnd::Failed, false},
             {1, " \r\n\t", LoadEnd::Complete, false}}) {
        SetOption(AutoNfoOption(), option);
        Receive(modXBINS, ReplaceAll("<item><title>{L}</title><link>{L}</link></item>", "{L}", link));
        Show(modXBINS);
        Answer();
        Answer(end);
        EXPECT_EQ(browser_.sentTo.back(), goes ? "mainFrame " + link : (run_ / "xbins-frames.htm").string())
            << link;
    }
}

TEST(PageAddress, IsWhereAClickWouldGo)
{
    for (const auto& [written, address] :
        std::map<std::string, std::string>{{"\r\n\t http://a.example/a\n\tb c \x01", "http://a.example/ab c"},
            {"?a=1&amp;b=&lt;&GT&quot;&apos;&#65;&#x42&#X43;", "?a=1&b=<>\"'ABC"},
            {"&amp;amp; &amp=1 &ampx &lt", "&amp; &amp=1 &ampx <"}, {"&apos &#; &#x; &", "&apos &#; &#x; &"},
            {"&#10;&#32;a&#128;&#0;&#55296;&#99999999999;", "a%E2%82%AC%EF%BF%BD%EF%BF%BD%EF%BF%BD"},
            {"http://\u00e9/\u0416?q=\u00e9%20#&#233;", "http://%C3%A9/%D0%96?q=%C3%A9%20#%C3%A9"},
            {"a\" onclick=\"b", "a"}, {" &#9;\n", ""}})
        EXPECT_EQ(AddressOfLink(written), address) << written;
}

TEST_F(PageDisplayTest, ANewerPageTakesThePlaceOfOneUnderWayAtAnyStep)
{
    ReceiveTitles(modVANTRO, {"A", "B"});
    ReceiveTitles(modXBINS, {"C"});
    Show(modVANTRO);
    const auto lateBlank = browser_.endings.back();
    ShowItemPage(modVANTRO, *display_, "vant2", [this] { ++shown_; });
    lateBlank(LoadEnd::Complete);
    EXPECT_EQ(UnreadTitles(modVANTRO), (Titles{"A", "B"})) << "the page of A never came";
    Answer();
    const auto lateFiles = browser_.endings.back();
    EXPECT_FALSE(fs::is_empty(run_));
    Show(modXBINS);
    EXPECT_TRUE(fs::is_empty(run_)) << "the files of B are of no use any more";
    Answer();
    const Files ofC = FilesIn(run_);
    lateFiles(LoadEnd::Complete);
    EXPECT_EQ(FilesIn(run_), ofC) << "the files of one display are never touched by another";
    ShowHelpPage(*display_);
    EXPECT_EQ(shown_, 3) << "each one's counts are to follow its mark";
    EXPECT_TRUE(FilesIn(run_).contains("help.htm"));
    display_.reset();
    EXPECT_TRUE(fs::is_empty(run_)) << "closing leaves nothing behind";
}

TEST_F(PageDisplayTest, ShowsTheStoryThatWasClickedWhereverAMergePutsIt)
{
    ReceiveTitles(modXBINS, {"A", "B"});
    Show(modXBINS);
    ReceiveTitles(modXBINS, {"New", "A", "B"});
    Answer();
    EXPECT_NE(browser_.files["xbins-title.htm"].find("http://news.example/A"), std::string::npos);
    EXPECT_EQ(UnreadTitles(modXBINS), (Titles{"New", "B"}));
    Show(modXBINS);
    ReceiveTitles(modXBINS, {"Newer", "A", "B"});
    Answer();
    EXPECT_EQ(browser_.sentTo.back(), "blank") << "the story has gone, and no other takes its place";
    EXPECT_EQ(UnreadTitles(modXBINS), (Titles{"Newer", "B"}));
}

TEST_F(PageDisplayTest, SaysWhatWentWrongAndEnds)
{
    ReceiveTitles(modVANTRO, {"A"});
    for (const auto& [end, word] :
        std::map<LoadEnd, std::string>{{LoadEnd::Failed, "load"}, {LoadEnd::TimedOut, "30"}}) {
        Show(modVANTRO);
        Answer(end); // of the blank page, which is no reason to give up
        Answer(end);
        EXPECT_NE(said_.back().find(word), std::string::npos) << said_.back();
        EXPECT_TRUE(fs::is_empty(run_));
    }
    EXPECT_EQ(shown_, 2);
    ShowItemPage(modVANTRO, *display_, "vant7", [this] { ++shown_; });
    Answer();
    EXPECT_EQ(shown_, 3) << "an item that is gone ends the display";
    fs::remove_all(run_);
    Show(modVANTRO);
    Answer();
    EXPECT_EQ(shown_, 4);
    EXPECT_EQ(said_.size(), 3U);
    EXPECT_NE(said_.back().find((run_ / "vantro.jpg").string() + " cannot be written"), std::string::npos)
        << said_.back();
}

} // namespace

} // namespace vantro
