#include "feeds/PageDisplay.h"

#include "base/Amounts.h"
#include "base/AsciiText.h"
#include "base/Resources.h"
#include "base/Words.h"
#include "base/modMain.h"
#include "feeds/ItemStore.h"
#include "feeds/ItemTag.h"
#include "feeds/ReadMarks.h"
#include "platform/Files.h"
#include "settings/Options.h"
#include "web/DisplayAddress.h"
#include "web/PageAddress.h"

#include <cerrno>
#include <utility>

namespace vantro {

namespace {

// A page that ends the engine's process does so whenever it is shown; what happens less often is not its
// fault.
constexpr std::chrono::seconds kTooSoon(3);
constexpr int kTries = 2;
constexpr std::string_view kSubject = "page";

} // namespace

void ShowItemPage(
    const Site& site, PageDisplay& display, std::string_view nodeKey, std::function<void()> shown)
{
    display.ShowItemPage(site, nodeKey, std::move(shown));
}

PageDisplay::PageDisplay(PageBrowser& browser, FeedServices services, std::filesystem::path folder)
    : browser_(browser), services_(std::move(services)), folder_(std::move(folder))
{
}

PageDisplay::~PageDisplay()
{
    DeleteFiles();
}

void PageDisplay::ShowItemPage(const Site& site, std::string_view nodeKey, std::function<void()> shown)
{
    const NewsNode* node = services_.tree.Find(nodeKey);
    Begin({site.page, &site, node != nullptr ? std::optional(Hold(*node)) : std::nullopt, std::move(shown)});
}

void PageDisplay::ShowInformationPage(const PageRecipe& page)
{
    Begin({&page, nullptr, std::nullopt, {}});
}

void PageDisplay::BrowserLost(Clock::time_point now)
{
    if (request_.page == nullptr)
        return;
    triesInARow_ = now - triedAt_ < kTooSoon ? triesInARow_ + 1 : 1;
    triedAt_ = now;
    if (triesInARow_ > kTries) {
        DeleteFiles();
        services_.say(
            kSubject, Words("The page cannot be shown: the browser engine stopped again and again."));
        End();
        return;
    }
    Start();
}

void PageDisplay::Begin(Request request)
{
    DeleteFiles(); // of the page before, while it is known
    End();
    request_ = std::move(request);
    triesInARow_ = 0;
    services_.say(kSubject, {});
    Start();
}

void PageDisplay::Start()
{
    ++newest_;
    DeleteFiles();
    autoLink_.clear();
    if (request_.site == nullptr) {
        ShowFiles({});
        return;
    }
    browser_.ShowBlank(WhileNewest([this](PageBrowser::LoadEnd) { ShowItemFiles(); }));
}

// An answer that comes when a newer page was asked for does nothing.
PageBrowser::LoadEnded PageDisplay::WhileNewest(std::function<void(PageBrowser::LoadEnd)> step)
{
    return [this, ticket = newest_, step = std::move(step)](PageBrowser::LoadEnd end) {
        if (ticket == newest_)
            step(end);
    };
}

void PageDisplay::ShowItemFiles()
{
    NewsNode* node = request_.item ? services_.tree.Find(*request_.item) : nullptr;
    if (node == nullptr) {
        End();
        return;
    }
    request_.item = Hold(*node); // a merge may have given it another number
    if (IsUnread(node->Tag()))
        MarkRead(services_, *node);
    const Values values = ReadValues();
    const PageRecipe& page = *request_.page;
    if (page.autoLinkOption != nullptr && IsOn(services_.registry, *page.autoLinkOption))
        autoLink_ = AddressOfLink(values.at("Link"));
    ShowFiles(values);
}

PageDisplay::Values PageDisplay::ReadValues()
{
    const PageRecipe& page = *request_.page;
    const ItemStore store(services_.registry, *request_.site);
    const std::int32_t item = ItemNumber(request_.item->key);
    Values values;
    for (const PageField& field : page.fields) {
        std::string text = store.ReadText(item, field.value);
        values[field.value] = field.isDate ? dates_.Format(text) : std::move(text);
    }
    if (!page.emptyLink.empty() && IsSameIgnoringCase(values["Link"], page.emptyLink))
        values["Link"].clear();
    return values;
}

void PageDisplay::ShowFiles(const Values& values)
{
    if (!WriteFiles(values)) {
        DeleteFiles();
        End();
        return;
    }
    LocalPage page{newest_, folder_, request_.page->deleted, request_.page->shown};
    if (request_.site != nullptr) {
        page.frames = {{kTitleFrame, request_.page->filled.back().file},
            {kMainFrame, request_.page->filled.front().file, true}};
        page.link = AddressOfLink(values.at("Link"));
    }
    browser_.ShowPage(page, WhileNewest([this](PageBrowser::LoadEnd end) { FilesLoaded(end); }));
}

bool PageDisplay::WriteFiles(const Values& values)
{
    filesWritten_ = true;
    const PageRecipe& page = *request_.page;
    std::optional<FileError> error;
    for (const SavedResource& resource : page.saved) {
        if (!error)
            error = SaveResourceToFile(folder_ / resource.file, resource.name, page.resourceType, true);
    }
    for (const FilledTemplate& filled : page.filled) {
        if (error)
            break;
        const auto source = FindResource(page.resourceType, filled.name);
        if (!source) {
            error = FileError{ENOENT,
                Words("The page part %1 %2 is missing from the program.", {page.resourceType, filled.name})};
            break;
        }
        std::string text(*source);
        for (const Replacement& step : filled.replacements)
            text = ReplaceAll(std::move(text), step.search, ValueOf(step, values));
        error = WriteTextFile(folder_ / filled.file, text);
    }
    if (error)
        services_.say(kSubject, Words("The page cannot be shown. %1", {error->sentence}));
    return !error;
}

std::string PageDisplay::ValueOf(const Replacement& step, const Values& values) const
{
    switch (step.value) {
    case PageValue::Stored: return values.at(step.argument);
    case PageValue::Version: return VersionLine;
    case PageValue::MainFrame: return std::string(kMainFrame);
    case PageValue::ExternalTarget:
        return IsOn(services_.registry, *request_.page->externalOption)
            ? std::string(request_.page->externalPrefix) + std::to_string(ItemNumber(request_.item->key))
            : std::string(kMainFrame);
    case PageValue::FileOf: return DisplayAddress(newest_).OfFile(step.argument);
    }
    return {};
}

void PageDisplay::FilesLoaded(PageBrowser::LoadEnd end)
{
    DeleteFiles();
    switch (end) {
    case PageBrowser::LoadEnd::Complete:
        if (!autoLink_.empty())
            browser_.NavigateFrame(autoLink_, kMainFrame);
        break;
    case PageBrowser::LoadEnd::Failed:
        services_.say(kSubject, Words("The page cannot be shown: the browser could not load it."));
        break;
    case PageBrowser::LoadEnd::TimedOut:
        services_.say(kSubject, Words("The page did not finish loading within %1.", {TimeText(kLoadLimit)}));
        break;
    }
    End();
}

void PageDisplay::End()
{
    if (const auto shown = std::exchange(request_.shown, {}))
        shown();
}

void PageDisplay::DeleteFiles() noexcept
{
    if (!std::exchange(filesWritten_, false))
        return;
    for (const std::string_view file : request_.page->deleted)
        DeleteFileIfExists(folder_ / file);
}

} // namespace vantro
