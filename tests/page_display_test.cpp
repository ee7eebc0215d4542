#include "feeds/InformationPages.h"
#include "feeds/ItemTag.h"
#include "feeds/PageDisplay.h"
#include "feeds/modMAXCONSOLE.h"
#include "feeds/modVANTRO.h"
#include "feeds/modXBINS.h"
#include "feeds/modXBOXSCENE.h"
#include "tests/support/FeedFixture.h"

#include <cstdlib>
#include <regex>
#include <set>

namespace vantro {
namespace {

namespace fs = std::filesystem;
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
    void Navigate(const std::string& address, LoadEnded ended) override
    {
        sentTo.push_back(address);
        files = FilesIn(folder_);
        endings.push_back(std::move(ended));
    }
    void NavigateFrame(const std::string& address, std::string_view frame) override
    {
        sentTo.push_back(std::string(frame) + " " + address);
    }
    [[nodiscard]] int ReadyState() const override { return 4; }
    void SetSilent(bool /*silent*/) override { }

    Titles sentTo;
    Files files; // at the newest Navigate()
    std::vector<LoadEnded> endings;

private:
    fs::path folder_;
};

class PageDisplayTest : public FeedFixture {
protected:
    PageDisplayTest()
    {
        setenv("LC_ALL", "en_US.UTF-8", 1);
        fs::create_directory(run_);
        display_.emplace(browser_, Services(), run_);
    }

    void Receive(const SiteModule& module, const std::string& item)
    {
        module.MergeFeed(Services(), folder_.Write("one.xml", "<item>" + item + "</item>"));
    }
    void Show(const SiteModule& module)
    {
        module.ShowItemPage(*display_, std::string(module.Row().prefix) + "1", [this] { ++shown_; });
    }
    void Answer(LoadEnd end = LoadEnd::Complete) { browser_.endings.back()(end); }
    // The page files of an item's page.
    Files PageOf(const SiteModule& module, const std::string& item)
    {
        Receive(module, item);
        Show(module);
        Answer();
        Files files = browser_.files;
        Answer();
        return files;
    }

    fs::path run_ = folder_.Path() / "run";
    FakeBrowser browser_{run_};
    std::optional<PageDisplay> display_;
    int shown_ = 0;
};

TEST_F(PageDisplayTest, GoesFromTheBlankPageToTheFilesAndDeletesThemWhenTheyAreLoaded)
{
    const std::map<const SiteModule*, std::set<std::string>> parts{{&modXBINS, {"xbins-logo.gif"}},
        {&modVANTRO, {"vantro.jpg"}}, {&modMAXCONSOLE, {"maxconsole-logo.jpg"}},
        {&modXBOXSCENE, {"xboxscene-bgnd.gif", "xboxscene-logo.jpg"}}};
    for (const auto& [module, pictures] : parts) {
        SCOPED_TRACE(module->Row().identifier);
        ReceiveTitles(*module, {"A"});
        browser_.sentTo.clear();
        shown_ = 0;
        Show(*module);
        EXPECT_EQ(UnreadTitles(*module), Titles{"A"}) << "still unread while the blank page loads";
        EXPECT_TRUE(browser_.files.empty());
        Answer();
        EXPECT_EQ(Item(*module, "A").Image(), TreeImage::ItemRead);
        EXPECT_FALSE(Item(*module, "A").Bold());
        EXPECT_EQ(Stored(*module, 1, "Tag"), "<READ>");
        std::set<std::string> expected = pictures;
        const std::string frames = fs::path(browser_.sentTo.back()).filename();
        for (const char* part : {"frames", "main", "title"})
            expected.insert(ReplaceAll(frames, "frames", part));
        EXPECT_EQ(browser_.sentTo, (Titles{"about:blank", run_ / frames}));
        std::set<std::string> written;
        for (const auto& [name, bytes] : browser_.files)
            written.insert(name);
        EXPECT_EQ(written, expected);
        EXPECT_EQ(shown_, 0);
        Answer();
        EXPECT_TRUE(fs::is_empty(run_));
        EXPECT_EQ(shown_, 1);
    }
    EXPECT_TRUE(said_.empty());
}

TEST_F(PageDisplayTest, FillsTheTemplatesInTheOrderOfTheSteps)
{
    const std::string run = run_;
    struct Case {
        const SiteModule& module;
        const char* option; // switched on for this case
        std::string item;
        const char* file;
        std::string expected;
    };
    const Case cases[] = {
        {modXBOXSCENE, "", "<title>[LINK TEXT]|[LINK TARGET]|%5BLINK%5D</title><link>L</link>",
            "xboxscene-title.htm", ">L|mainFrame|L</div>"},
        {modXBOXSCENE, "", "<title>b</title><link>[TITLE][LINK TARGET]</link>", "xboxscene-title.htm",
            "<a href=\"[TITLE][LINK TARGET]\" target=\"mainFrame\" title=\"[TITLE]mainFrame\">"},
        {modXBOXSCENE, "", "<title>c xboxscene-logo.jpg</title>", "xboxscene-title.htm",
            ">c " + run + "/xboxscene-logo.jpg</div>"},
        {modXBOXSCENE, "", "<title>d</title>", "xboxscene-main.htm",
            "url(\"" + run + "/xboxscene-bgnd.gif\")"},
        {modMAXCONSOLE, "",
            "<title>[DESCRIPTION]</title><description><b>[TITLE] [DESCRIPTION] %5BLINK%5D</b></description>",
            "maxconsole-main.htm", "<b>[TITLE] [DESCRIPTION] %5BLINK%5D</b>"},
        {modMAXCONSOLE, "Max Console External", "<title>b</title><link>L</link>", "maxconsole-title.htm",
            "href=\"L\" target=\"_XboxSceneExternal1\""},
        {modXBOXSCENE, "XboxScene External", "<title>e</title><link>L</link>", "xboxscene-title.htm",
            "href=\"L\" target=\"_XboxSceneExternal1\""},
        {modXBINS, "Xbins External Page", "<title>a</title><link>N</link><homepage>H</homepage>",
            "xbins-title.htm", "href=\"H\" target=\"_XbinsExternal1\""},
        {modXBINS, "Xbins External Page", "<title>b</title><link>N</link>", "xbins-title.htm",
            "href=\"N\" target=\"mainFrame\""},
        {modXBINS, "", "<title>c [NFO TEXT]</title><link>N</link><homepage>H</homepage>", "xbins-title.htm",
            "href=\"H\" target=\"mainFrame\""},
        {modXBINS, "", "<title>d [NFO TEXT]</title><link>N</link>", "xbins-title.htm", ">d N</div>"},
        {modXBINS, "", "<title>e</title><link>HTTP://www.Xbins.EXAMPLE/</link>", "xbins-title.htm",
            "<a href=\"\" target=\"mainFrame\" title=\"\"></a>"},
        {modXBINS, "", "<title>f</title><releasedate>2003-07-05</releasedate>", "xbins-title.htm",
            "Release Date:</span> Saturday 5 July 2003<"},
        {modXBINS, "", "<title>g \u20ac caf\u00e9 \u0416</title>", "xbins-title.htm",
            ">g \x80 caf\xe9 &#1046;</div>"},
        {modVANTRO, "", "<title>a [VERSION] [LINK]</title><link>L</link><date>soon</date>",
            "vantro-title.htm", ">a [VERSION] L</div>"},
        {modVANTRO, "", "<title>b</title><homepage>H %5BLINK%5D</homepage><date>soon</date>",
            "vantro-title.htm", "href=\"H %5BLINK%5D\" target=\"mainFrame\""},
        {modVANTRO, "", "<title>c</title><date>soon</date>", "vantro-title.htm", "Item Date: soon<"},
        {modVANTRO, "", "<title>d</title><description>vantro.jpg [DATE]</description>", "vantro-main.htm",
            "\r\nvantro.jpg [DATE]\r\n"},
    };
    for (const Case& c : cases) {
        if (*c.option != '\0')
            SetOption(c.option, 1);
        const std::string page = PageOf(c.module, c.item)[c.file];
        EXPECT_NE(page.find(c.expected), std::string::npos) << c.item << "\n" << c.expected << "\n" << page;
        if (*c.option != '\0')
            SetOption(c.option, 2); // only 1 is on
    }
}

TEST_F(PageDisplayTest, SendsTheBottomFrameToTheNfoByItselfWhenToldTo)
{
    struct Case {
        int option;
        const char* link;
        LoadEnd end;
        bool goes;
    };
    for (const Case& c : {Case{1, "http://a.example/1.nfo", LoadEnd::Complete, true},
             {0, "http://a.example/2.nfo", LoadEnd::Complete, false}, {1, "", LoadEnd::Complete, false},
             {1, "http://WWW.xbins.example/", LoadEnd::Complete, false},
             {1, "http://a.example/3.nfo", LoadEnd::Failed, false}}) {
        SetOption("Xbins Auto NFO", c.option);
        Receive(modXBINS, std::string("<title>") + c.link + "</title><link>" + c.link + "</link>");
        Show(modXBINS);
        Answer();
        Answer(c.end);
        EXPECT_EQ(browser_.sentTo.back() == std::string("mainFrame ") + c.link, c.goes) << c.link;
    }
}

TEST_F(PageDisplayTest, ANewerPageTakesThePlaceOfOneUnderWayAtAnyStep)
{
    ReceiveTitles(modVANTRO, {"A", "B"});
    ReceiveTitles(modXBINS, {"C"});
    Show(modVANTRO);
    const auto lateBlank = browser_.endings.back();
    modVANTRO.ShowItemPage(*display_, "vant2", [this] { ++shown_; });
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
    EXPECT_EQ(shown_, 0);
    EXPECT_TRUE(FilesIn(run_).contains("help.htm"));
    display_.reset();
    EXPECT_TRUE(fs::is_empty(run_)) << "closing leaves nothing behind";
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
    modVANTRO.ShowItemPage(*display_, "vant7", [this] { ++shown_; });
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

TEST_F(PageDisplayTest, ShowsAPageAgainOnceWhenTheEngineDied)
{
    display_->BrowserLost();
    EXPECT_TRUE(browser_.sentTo.empty()) << "there was no page";
    ReceiveTitles(modVANTRO, {"A"});
    Show(modVANTRO);
    Answer();
    display_->BrowserLost();
    Answer();
    Answer();
    EXPECT_EQ(shown_, 1);
    EXPECT_EQ(browser_.sentTo.size(), 4U);
    display_->BrowserLost();
    EXPECT_EQ(browser_.sentTo.size(), 4U);
    EXPECT_EQ(said_.size(), 1U);
}

TEST_F(PageDisplayTest, InformationPagesStandAloneWithTheirPicturesAndTheVersion)
{
    for (const auto show : {ShowAboutPage, ShowHelpPage, ShowDonationsPage}) {
        browser_.sentTo.clear();
        show(*display_);
        ASSERT_EQ(browser_.sentTo.size(), 1U) << "no blank page goes before";
        const std::string page = browser_.files[fs::path(browser_.sentTo.front()).filename()];
        EXPECT_NE(page.find("?subject=Vantro%20(" + VersionLine + ")\""), std::string::npos);
        EXPECT_FALSE(std::regex_search(page, std::regex(R"(\[VERSION|%5B)")));
        std::set<std::string> pictures{fs::path(browser_.sentTo.front()).filename()};
        const std::regex source("<img src=\"([^\"]*)\"");
        for (std::sregex_iterator at(page.begin(), page.end(), source); at != std::sregex_iterator(); ++at)
            pictures.insert((*at)[1]);
        for (const auto& [name, bytes] : browser_.files)
            EXPECT_EQ(pictures.erase(name), 1U) << name << " is written for nothing";
        EXPECT_TRUE(pictures.empty()) << *pictures.begin() << " is missing";
        Answer();
        EXPECT_TRUE(fs::is_empty(run_));
    }
}

TEST(FeedDate, PutsDatesIntoTheUsersWordsAndLeavesOtherTextAlone)
{
    struct Case {
        const char* locale;
        const char* given;
        const char* shown;
    };
    for (const Case& c : {Case{"en_US", "Sat, 05 Jul 2003 23:30:00 -0800", "Saturday 5 July 2003"},
             {"en_US", "Sat, 5 Jul 03 08:00 GMT", "Saturday 5 July 2003"},
             {"en_US", "2003-07-05T23:59:59.5+02:00", "Saturday 5 July 2003"},
             {"en_US", " 5 July 2003 ", "Saturday 5 July 2003"},
             {"en_US", "07/05/2003", "Saturday 5 July 2003"},
             {"en_GB", "05/07/2003 8:15 PM", "Saturday 5 July 2003"},
             {"de_DE", "Sat, 05 Jul 2003 08:00:00 GMT", "Samstag 5 Juli 2003"},
             {"de_DE", "1. M\u00e4rz 2003", "1. M\u00e4rz 2003"},
             {"de_DE", "5 Dezember 2003", "Freitag 5 Dezember 2003"},
             {"th_TH", "2003-07-05",
                 "\u0e27\u0e31\u0e19\u0e40\u0e2a\u0e32\u0e23\u0e4c 5 "
                 "\u0e01\u0e23\u0e01\u0e0e\u0e32\u0e04\u0e21 2003"},
             {"en_US", "2004-02-29", "Sunday 29 February 2004"}, {"en_US", "2003-02-29", "2003-02-29"},
             {"en_US", "tomorrow", "tomorrow"}, {"en_US", "5 July 2003 or later", "5 July 2003 or later"},
             {"en_US", "<b>5 July 2003</b>", "<b>5 July 2003</b>"}, {"en_US", "", ""},
             {"en_US", "2003", "2003"}, {"no_such", "2003-07-05", "Saturday 5 July 2003"}})
        EXPECT_EQ(FeedDate(c.locale).Format(c.given), c.shown) << c.locale << " " << c.given;
}

} // namespace
} // namespace vantro
