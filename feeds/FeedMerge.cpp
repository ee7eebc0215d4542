#include "feeds/ItemStore.h"
#include "feeds/MergePlan.h"
#include "feeds/SiteModule.h"
#include "feeds/modXML.h"
#include "shell/modMain.h"

#include <optional>

namespace vantro {

namespace {

std::vector<FeedItem> TakeItems(const Site& site, std::string_view feedText)
{
    const std::vector<std::string_view> texts = SplitItems(feedText);
    std::vector<FeedItem> items;
    items.reserve(texts.size());
    for (const std::string_view text : texts)
        items.push_back(TakeItem(site, text));
    return items;
}

// The stored items that have a node; one without counts as not stored.
std::vector<KeptItem> ReadKept(const Site& site, const FeedServices& services, std::int32_t count)
{
    const ItemStore store(services.registry, site);
    std::vector<KeptItem> kept;
    for (std::int32_t j = 1; j <= count; ++j) {
        if (const NewsNode* node = services.tree.Find(NodeKey(site, j)))
            kept.push_back({store.ReadText(j, "Title"), node->State()});
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

// True when the site has a new list.
bool Merge(const Site& site, const FeedServices& services, const std::filesystem::path& file)
{
    const std::optional<std::string> text = ReadWholeFile(file);
    if (!text) {
        services.say("The downloaded news list of " + std::string(site.displayName) + " cannot be read.");
        return false;
    }
    const std::vector<FeedItem> items = TakeItems(site, *text);
    std::vector<std::string> titles;
    titles.reserve(items.size());
    for (const FeedItem& item : items)
        titles.push_back(item.Title());

    // Opened before the old list is read, as reading inside of it costs a third.
    RegistryStore::Batch batch(services.store);
    ItemStore store(services.registry, site);
    const std::int32_t oldCount = store.Count();
    MergePlan plan = PlanMerge(ReadKept(site, services, oldCount), titles);
    if (!plan.anythingNew)
        return false;
    store.Rewrite(oldCount, items, plan.states);
    if (const auto failure = batch.Commit()) {
        services.say(
            "The news list of " + std::string(site.displayName) + " could not be stored: " + *failure);
        return false;
    }
    RebuildBranch(site, services.tree, items, std::move(plan));
    return true;
}

} // namespace

void SiteModule::MergeFeed(const FeedServices& services, const std::filesystem::path& file) const
{
    const bool changed = Merge(site_, services, file);
    DeleteFileIfExists(file);
    if (changed)
        UpdateSiteCounts(services);
}

} // namespace vantro
