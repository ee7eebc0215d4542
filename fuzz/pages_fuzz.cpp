// The pages of items whose fields hold anything: how they are filled, and what is left of them.

#include "base/AsciiText.h"
#include "base/Resources.h"
#include "base/TextCoding.h"
#include "base/modMain.h"
#include "feeds/FeedDate.h"
#include "feeds/ItemStore.h"
#include "feeds/PageDisplay.h"
#include "fuzz/Fuzz.h"
#include "platform/Files.h"
#include "platform/RegistryStore.h"
#include "settings/Options.h"
#include "settings/modRegistry.h"
#include "web/DisplayAddress.h"
#include "web/PageAddress.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantro {

namespace {

// Takes what it is shown, and waits.
class TakingBrowser final : public PageBrowser {
public:
    void ShowBlank(LoadEnded ended) override { waiting = std::move(ended); }
    void ShowPage(const LocalPage& page, LoadEnded ended) override
    {
        number = page.number;
        for (const std::string_view file : page.files)
            files[file] = ReadWholeFile(page.folder / file).value_or("");
        waiting = std::move(ended);
    }
    void NavigateFrame(const std::string& address, std::string_view frame) override
    {
        Require(frame == kMainFrame, "no other frame goes by itself");
        sentTo = address;
    }
    [[nodiscard]] int ReadyState() const override { return 4; }
    void SetSilent(bool /*silent*/) override { }

    LoadEnded waiting;
    std::uint64_t number = 0;
    std::map<std::string_view, std::string> files;
    std::string sentTo;
};

struct Item {
    const Site& site;
    FeedItem stored;
    bool isExternal;
    bool isAutomatic; // follows its link by itself

    // As a page reads it.
    [[nodiscard]] std::string Value(std::string_view name) const
    {
        static FeedDate dates;
        const auto field = std::ranges::find_if(
            site.taken, [&](const SiteField& each) { return each.element == name || each.value == name; });
        std::string text = stored.fields[static_cast<std::size_t>(field - site.taken.begin())];
        const PageField read = *std::ranges::find(site.page->fields, name, &PageField::value);
        if (read.isDate)
            text = dates.Format(text);
        const std::string_view empty = site.page->emptyLink;
        return name == "Link" && !empty.empty() && ToLowerAscii(text) == empty ? "" : text;
    }
};

std::string ValueOf(const Replacement& step, const Item& item, std::uint64_t number)
{
    switch (step.value) {
    case PageValue::Stored: return item.Value(step.argument);
    case PageValue::Version: return VersionLine;
    case PageValue::MainFrame: return "mainFrame";
    case PageValue::ExternalTarget:
        return item.isExternal ? std::string(item.site.page->externalPrefix) + "1" : "mainFrame";
    case PageValue::FileOf:
        return "vantro-page://" + std::to_string(number) + "/" + std::string(step.argument);
    }
    return {};
}

// Letter by letter.
std::string Replaced(std::string_view text, std::string_view search, const std::string& value)
{
    std::string out;
    while (!text.empty()) {
        const bool isThere = text.starts_with(search);
        out += isThere ? value : std::string(1, text.front());
        text.remove_prefix(isThere ? search.size() : 1);
    }
    return out;
}

void CheckPage(const FilledTemplate& filled, const Item& item, const TakingBrowser& browser)
{
    const std::string_view source = FindResource(item.site.page->resourceType, filled.name).value();
    std::string meant(source);
    std::size_t end = 0; // of the last thing that is replaced
    for (const Replacement& step : filled.replacements) {
        const std::size_t last = source.rfind(step.search);
        end = last == std::string_view::npos ? end : std::max(end, last + step.search.size());
        meant = Replaced(meant, step.search, ValueOf(step, item, browser.number));
    }
    const std::string& page = browser.files.at(filled.file);
    Require(page == EncodePageText(meant), "a page is its template with the fields in their places");
    for (const char mark : {'<', '>', '"', '\''})
        Require(std::ranges::count(page, mark) == std::ranges::count(meant, mark),
            "coding a page makes no markup");
    Require(
        page.starts_with(source.substr(0, source.find("<title>"))), "the policy stands before all fields");
    Require(page.ends_with(source.substr(end)), "a page ends as its template does");
}

// A store with this item alone.
class Show {
public:
    explicit Show(const Item& item) : item_(item)
    {
        registry_.CreateRegKey(RegRoot, RegPath);
        const bool isStored = !registry_.StoreTogether([&] {
            ItemStore(registry_, item.site).Rewrite(0, {item.stored}, {{TreeImage::New, true, "<UNREAD>"}});
        });
        Require(isStored, "an item is stored");
        const PageRecipe& page = *item.site.page;
        if (page.externalOption != nullptr)
            Set(*page.externalOption, item.isExternal);
        if (page.autoLinkOption != nullptr)
            Set(*page.autoLinkOption, item.isAutomatic);
        AddSiteRoots(tree_);
        LoadSiteItems(item.site, services_);
    }

    void Run()
    {
        static const std::filesystem::path folder = EmptyFolder("pages");
        TakingBrowser browser;
        PageDisplay display(browser, services_, folder);
        int shown = 0;
        display.ShowItemPage(item_.site, std::string(item_.site.prefix) + "1", [&] { ++shown; });
        for (int load = 0; load < 2; ++load)
            std::exchange(browser.waiting, nullptr)(PageBrowser::LoadEnd::Complete);
        Require(shown == 1 && std::filesystem::is_empty(folder), "a display ends, and no file stays");
        for (const FilledTemplate& filled : item_.site.page->filled)
            CheckPage(filled, item_, browser);
        const bool goes = item_.isAutomatic && item_.site.page->autoLinkOption != nullptr;
        Require(browser.sentTo == (goes ? AddressOfLink(item_.Value("Link")) : ""),
            "a page goes where its link says");
        Require(ItemStore(registry_, item_.site).ReadText(1, "Tag") == "<READ>", "what was shown is read");
    }

private:
    void Set(const Option& option, bool isOn)
    {
        registry_.WriteRegValue(RegRoot, RegPath, option.name, isOn ? 1 : 0, RegType::Dword);
    }

    const Item& item_;
    RegistryStore store_{NoPlace()};
    modRegistry registry_{store_};
    NewsTree tree_;
    FeedServices services_{registry_, tree_, [] {},
        [](std::string_view, const std::string& said) { Require(said.empty(), "all goes well"); }};
};

} // namespace

} // namespace vantro

// A byte for the site, one for the options, then the fields with bars between them.
void vantro::Try(std::string_view bytes)
{
    Input input(bytes);
    const Site& site = *Sites()[input.Below(Sites().size())];
    const std::uint8_t options = input.Byte();
    Item item{site, {}, (options & 1) != 0, (options & 2) != 0};
    for (std::size_t i = 0; i < site.taken.size(); ++i)
        item.stored.fields.push_back(DecodeFeedText(input.UpTo('|')));
    Show(item).Run();
}
