#pragma once

#include "feeds/FeedDate.h"
#include "feeds/NewsTree.h"
#include "feeds/PageRecipe.h"
#include "feeds/Site.h"
#include "feeds/SiteOperations.h"
#include "web/PageBrowser.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vantro {

// Shows pages in the browser, one at a time: writes a page's files into the program's folder, sends the
// browser there, and deletes the files when it has loaded them. Never waits: each step goes on when the
// browser reports, and a newer page takes the place of one under way, whose files go at once. Interface
// thread only.
class PageDisplay {
public:
    // `browser` is used until the display is destroyed; `folder` is where page files are written.
    PageDisplay(PageBrowser& browser, FeedServices services, std::filesystem::path folder);
    // Deletes the files of a page under way.
    ~PageDisplay();
    PageDisplay(const PageDisplay&) = delete;
    PageDisplay& operator=(const PageDisplay&) = delete;

    // Shows the page of an item and marks it read; whatever a merge does meanwhile, it is the story that was
    // asked for. `shown` is called when the display has ended, well or not, or a newer page took its place. A
    // node that is missing, or a story that is gone, ends it after the blank page. What cannot be written or
    // does not load is said, and no file stays behind.
    void ShowItemPage(const Site& site, std::string_view nodeKey, std::function<void()> shown);
    // The same for a page of the program itself, without a blank page before it. `page` outlives this.
    void ShowInformationPage(const PageRecipe& page);

    using Clock = std::chrono::steady_clock;
    // To be called when the engine behind the browser died: the page is shown again, unless it dies again and
    // again at once; that is said, and the next page tries anew.
    void BrowserLost(Clock::time_point now = Clock::now());

private:
    using Ticket = std::uint64_t;
    using Values = std::map<std::string_view, std::string>;

    // A page as it was asked for.
    struct Request {
        const PageRecipe* page = nullptr;
        const Site* site = nullptr; // null for an information page
        std::optional<HeldItem> item; // of an item page whose node was there
        std::function<void()> shown;
    };

    void Begin(Request request);
    void Start();
    void ShowItemFiles();
    void ShowFiles(const Values& values);
    void FilesLoaded(PageBrowser::LoadEnd end);
    void End();
    void DeleteFiles() noexcept;

    [[nodiscard]] PageBrowser::LoadEnded WhileNewest(std::function<void(PageBrowser::LoadEnd)> step);
    [[nodiscard]] Values ReadValues();
    [[nodiscard]] bool WriteFiles(const Values& values);
    [[nodiscard]] std::string ValueOf(const Replacement& step, const Values& values) const;

    PageBrowser& browser_;
    FeedServices services_;
    std::filesystem::path folder_;
    FeedDate dates_;
    Request request_;
    Ticket newest_ = 0;
    std::string autoLink_; // where the bottom frame goes by itself once the page is there
    bool filesWritten_ = false;
    int triesInARow_ = 0;
    Clock::time_point triedAt_;
};

} // namespace vantro
