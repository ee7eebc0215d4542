// From the click on an unread item to its complete page, with a real window, engine and store. Needs a
// screen.

#include "base/AsciiText.h"
#include "bench/BenchFeed.h"
#include "bench/Figures.h"
#include "feeds/InformationPages.h"
#include "feeds/ItemTag.h"
#include "feeds/PageDisplay.h"
#include "feeds/SiteOperations.h"
#include "platform/Files.h"
#include "platform/PrivateFolder.h"
#include "platform/RegistryStore.h"
#include "settings/modRegistry.h"
#include "toolkit/Browser.h"
#include "toolkit/WebEngine.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/sizer.h>

namespace vantro {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kItems = 13; // of each site
constexpr const char* kPart = "A click";

// Runs only while the program itself works.
class Stopwatch {
public:
    void Run(const std::function<void()>& work)
    {
        start_ = Clock::now();
        work();
        spent_ += Clock::now() - start_;
    }
    // For work of others inside Run().
    void Pause(const std::function<void()>& work)
    {
        const auto start = Clock::now();
        work();
        spent_ -= Clock::now() - start;
    }
    [[nodiscard]] double Take()
    {
        return std::chrono::duration<double, std::milli>(std::exchange(spent_, {})).count();
    }

private:
    Clock::time_point start_;
    Clock::duration spent_{};
};

// The browser, its own work not counted.
class CountedBrowser final : public PageBrowser {
public:
    CountedBrowser(Browser& browser, Stopwatch& own) : browser_(browser), own_(own) { }
    void ShowBlank(LoadEnded ended) override
    {
        own_.Pause([&] { browser_.ShowBlank(Counted(std::move(ended))); });
    }
    void ShowPage(const LocalPage& page, LoadEnded ended) override
    {
        own_.Pause([&] { browser_.ShowPage(page, Counted(std::move(ended))); });
    }
    void NavigateFrame(const std::string& address, std::string_view frame) override
    {
        own_.Pause([&] { browser_.NavigateFrame(address, frame); });
    }
    [[nodiscard]] int ReadyState() const override { return browser_.ReadyState(); }
    void SetSilent(bool silent) override { browser_.SetSilent(silent); }

private:
    LoadEnded Counted(LoadEnded ended)
    {
        return [this, ended = std::move(ended)](LoadEnd end) { own_.Run([&] { ended(end); }); };
    }

    Browser& browser_;
    Stopwatch& own_;
};

constexpr int kComplete = 4; // a ReadyState()

class ClickBench {
public:
    ClickBench()
    {
        registry_.CreateRegKey(RegRoot, RegPath);
        AddSiteRoots(tree_);
        for (const Site* site : Sites()) {
            std::string feed = ReplaceAll(MakeFeed(0, kItems), "category", "homepage");
            for (const PageField& field : site->page->fields) {
                if (field.isDate)
                    feed = ReplaceAll(std::move(feed), "pubDate", ToLowerAscii(field.value));
            }
            if (const auto failure = ReplaceFile(folder_ / "feed.xml", feed))
                Fail(*failure);
            MergeFeed(*site, Services(), folder_ / "feed.xml");
        }
        frame_->SetSizer(new wxBoxSizer(wxVERTICAL));
        frame_->GetSizer()->Add(browser_.Window(), 1, wxEXPAND);
        frame_->Show();
    }
    ~ClickBench()
    {
        frame_->Destroy();
        fs::remove_all(folder_);
    }
    ClickBench(const ClickBench&) = delete;
    ClickBench& operator=(const ClickBench&) = delete;

    void Run()
    {
        ShowAboutPage(display_); // as every run does at its start
        while (browser_.ReadyState() != kComplete)
            wxEventLoopBase::GetActive()->Dispatch();
        (void)own_.Take();
        std::vector<double> whole;
        std::vector<double> own;
        std::vector<double> share;
        for (int item = 1; item <= kItems; ++item) {
            for (const Site* site : Sites()) {
                const auto [all, ours] = Click(*site, item);
                whole.push_back(all);
                own.push_back(ours);
                share.push_back(ours / all);
            }
        }
        TellFigure(kPart, "first click of a run to the complete page", "median at most 100 ms", {whole[0]});
        whole.erase(whole.begin());
        TellFigure(kPart, "click to complete page", "median at most 25 ms", whole);
        TellFigure(kPart, "click to complete page", "99 % at most 60 ms", whole);
        TellFigure(kPart, "the program's own work for it", "median at most 1 ms", own);
        TellFigure(kPart, "the program's own work, of the whole", "median at most 0.1 times", share);
    }

private:
    FeedServices Services()
    {
        return {registry_, tree_, [] {},
            [](std::string_view, const std::string& sentence) {
                if (!sentence.empty())
                    Fail(sentence);
            }};
    }
    static void Fail(const std::string& sentence)
    {
        std::fprintf(stderr, "%s\n", sentence.c_str());
        std::abort();
    }
    std::pair<double, double> Click(const Site& site, int item)
    {
        bool shown = false;
        const auto start = Clock::now();
        own_.Run([&] {
            ShowItemPage(site, display_, std::string(site.prefix) + std::to_string(item), [&] {
                UpdateSiteCounts(site, Services());
                shown = true;
            });
        });
        while (!shown)
            wxEventLoopBase::GetActive()->Dispatch();
        return {MillisecondsSince(start), own_.Take()};
    }

    fs::path folder_ = MakePrivateFolder(fs::current_path(), "click-bench-");
    RegistryStore store_{folder_ / "registry.db"};
    modRegistry registry_{store_};
    NewsTree tree_;
    wxFrame* frame_ = new wxFrame(nullptr, wxID_ANY, "Clicks", wxDefaultPosition, wxSize(900, 600));
    Stopwatch own_;
    Browser browser_{frame_, [] { Fail("The engine's process died."); }};
    CountedBrowser counted_{browser_, own_};
    PageDisplay display_{counted_, Services(), folder_};
};

class BenchApp final : public wxApp {
public:
    bool OnInit() override { return true; }
    int OnRun() override
    {
        wxGUIEventLoop loop;
        const wxEventLoopActivator active(&loop);
        ClickBench().Run();
        return 0;
    }
};

} // namespace

} // namespace vantro

int main(int argc, char** argv)
{
    vantro::EngineEnvironment();
    wxApp::SetInstance(new vantro::BenchApp);
    return wxEntry(argc, argv);
}
