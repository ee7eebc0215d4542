// From the click on an unread item to its complete page, with a real window, engine and store, against what
// the program promises. Needs a screen.

#include "base/AsciiText.h"
#include "bench/BenchFeed.h"
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

constexpr int kItems = 60; // of each site
constexpr int kGroundUp = 8; // first clicks, in which the engine's processes come up

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

double At(std::vector<double> values, double share)
{
    const auto place
        = values.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(values.size() - 1) * share);
    std::ranges::nth_element(values, place);
    return *place;
}

// True when the promise is kept.
bool Report(const char* what, const std::vector<double>& milliseconds, double limit)
{
    const double median = At(milliseconds, 0.5);
    std::printf("%-36s %8zu %8.2f %8.2f   (median at most %g)  %s\n", what, milliseconds.size(), median,
        At(milliseconds, 0.99), limit, median <= limit ? "kept" : "MISSED");
    return median <= limit;
}

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

    bool Run()
    {
        std::vector<double> whole;
        std::vector<double> own;
        int clicks = 0;
        for (int item = 1; item <= kItems; ++item) {
            for (const Site* site : Sites()) {
                const auto [all, ours] = Click(*site, item);
                if (++clicks <= kGroundUp) {
                    std::printf("click %d, from cold: %.2f ms\n", clicks, all);
                    continue;
                }
                whole.push_back(all);
                own.push_back(ours);
            }
        }
        std::printf("\n%-36s %8s %8s %8s\n", "milliseconds", "clicks", "median", "99 %");
        const bool pageKept = Report("from the click to the complete page", whole, 100);
        return Report("of these, the program's own work", own, 5) && pageKept;
    }

private:
    FeedServices Services()
    {
        return {registry_, tree_, [] {}, Fail};
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
        return {std::chrono::duration<double, std::milli>(Clock::now() - start).count(), own_.Take()};
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
        return ClickBench().Run() ? 0 : 1;
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
