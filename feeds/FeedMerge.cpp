#include "base/Amounts.h"
#include "base/Words.h"
#include "feeds/ItemStore.h"
#include "feeds/MergePlan.h"
#include "feeds/SiteOperations.h"
#include "feeds/modXML.h"
#include "platform/Files.h"
#include "settings/modRegistry.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantro {

namespace {

struct FeedItems {
    std::vector<FeedItem> taken;
    std::string notice; // that it was not all, in sentences; empty when it was
};

// Of at most kLongestText bytes, and without a part of a character at its end.
std::string_view BeginningOf(std::string_view text)
{
    if (text.size() <= kLongestText)
        return text;
    std::size_t end = kLongestText;
    while (end > kLongestText - 3 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80)
        --end;
    return text.substr(0, end);
}

FeedItems TakeItems(const Site& site, std::string_view file)
{
    std::vector<std::string_view> elements;
    for (const SiteField& field : site.taken)
        elements.push_back(field.element);
    std::vector<std::string_view> rows = CutItems(file.substr(0, kMostRead), kMostItems + 1, elements);
    const std::size_t width = 1 + elements.size();
    const std::size_t count = std::min(rows.size() / width, kMostItems);
    FeedItems items;
    items.taken.reserve(count);
    bool isCut = false;
    for (std::size_t text = 0; items.taken.size() < count;) {
        const auto fields = std::span(rows).subspan(items.taken.size() * width + 1, elements.size());
        for (std::string_view& field : fields) {
            isCut = isCut || field.size() > kLongestText;
            field = BeginningOf(field);
            text += field.size();
        }
        if (text > kMostText)
            break;
        items.taken.push_back(DecodeItem(fields));
    }
    const std::string name(site.displayName);
    if (items.taken.size() < count || (file.size() > kMostRead && count < kMostItems)) {
        items.notice = Words("%1 sent too much text; its last items were left out.", {name});
    } else if (rows.size() / width > count) {
        const std::string most = std::to_string(kMostItems);
        items.notice = Words("%1 sent more than %2 items; the first %2 were taken.", {name, most});
    }
    if (isCut)
        items.notice += std::string(items.notice.empty() ? "" : " ")
            + Words(
                "%1 sent a text of more than %2; its beginning was taken.", {name, SizeText(kLongestText)});
    return items;
}

// Nothing when the file cannot be read, which is said.
std::optional<FeedItems> ReadItems(
    const Site& site, const FeedServices& services, const std::filesystem::path& file)
{
    if (const std::optional<std::string> text = ReadWholeFile(file, kMostRead + 1))
        return TakeItems(site, *text);
    services.say(
        site.identifier, Words("The downloaded news list of %1 cannot be read.", {site.displayName}));
    return std::nullopt;
}

// The stored items that have a node; one without counts as not stored.
std::vector<KeptItem> ReadKept(const Site& site, const FeedServices& services, std::int32_t count)
{
    std::vector<std::string> titles = ItemStore(services.registry, site).ReadTexts(count, "Title");
    std::vector<KeptItem> kept;
    kept.reserve(titles.size());
    for (std::int32_t j = 1; std::string & title : titles) {
        if (const NewsNode* node = services.tree.Find(NodeKey(site, j++)))
            kept.push_back({std::move(title), node->State()});
    }
    return kept;
}

void RebuildBranch(const Site& site, NewsTree& tree, const std::vector<FeedItem>& items, MergePlan plan)
{
    std::vector<NodeData> nodes;
    nodes.reserve(items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        nodes.push_back(
            {NodeKey(site, static_cast<std::int32_t>(i + 1)), items[i].Title(), std::move(plan.states[i])});
    if (NewsNode* root = tree.Find(site.identifier))
        tree.ReplaceBranch(*root, std::move(nodes));
}

// The number of new items, with which the list was stored; nothing when it could not be, which is said.
std::optional<std::size_t> Merge(
    const Site& site, const FeedServices& services, const std::vector<FeedItem>& items)
{
    std::vector<std::string_view> titles;
    titles.reserve(items.size());
    for (const FeedItem& item : items)
        titles.push_back(item.Title());

    MergePlan plan;
    const auto failure = services.registry.StoreTogether([&] {
        ItemStore store(services.registry, site);
        const std::int32_t oldCount = store.Count();
        plan = PlanMerge(ReadKept(site, services, oldCount), titles);
        if (plan.newItems > 0)
            store.Rewrite(oldCount, items, plan.states);
    });
    if (plan.newItems == 0)
        return 0;
    if (failure) {
        services.say(site.identifier,
            Words("The news list of %1 could not be stored: %2", {site.displayName, *failure}));
        return std::nullopt;
    }
    const std::size_t newItems = plan.newItems;
    RebuildBranch(site, services.tree, items, std::move(plan));
    return newItems;
}

} // namespace

std::size_t MergeFeed(const Site& site, const FeedServices& services, const std::filesystem::path& file)
{
    const std::optional<FeedItems> items = ReadItems(site, services, file);
    const std::optional<std::size_t> newItems = items ? Merge(site, services, items->taken) : std::nullopt;
    DeleteFileIfExists(file);
    if (newItems)
        services.say(site.identifier, items->notice);
    if (newItems > 0)
        UpdateSiteCounts(site, services);
    return newItems.value_or(0);
}

} // namespace vantro
