#include "feeds/ItemStore.h"
#include "feeds/ItemTag.h"
#include "feeds/SiteOperations.h"
#include "settings/Options.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vantro {

void LoadSiteItems(const Site& site, const FeedServices& services)
{
    NewsNode* root = services.tree.Find(site.identifier);
    const ItemStore store(services.registry, site);
    const std::int32_t count = store.Count();
    if (root == nullptr || count <= 0)
        return;
    std::vector<std::string> titles = store.ReadTexts(count, "Title");
    std::vector<std::string> tags = store.ReadTexts(count, "Tag");
    std::vector<NodeData> items;
    items.reserve(titles.size());
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const bool unread = IsUnread(tags[i]);
        items.push_back({NodeKey(site, static_cast<std::int32_t>(i + 1)), std::move(titles[i]),
            {unread ? TreeImage::ItemUnread : TreeImage::ItemRead, unread, std::move(tags[i])}});
    }
    services.tree.ReplaceBranch(*root, std::move(items));
}

void UpdateSiteCounts(const Site& site, const FeedServices& services)
{
    services.paint();
    NewsNode* root = services.tree.Find(site.identifier);
    if (root == nullptr)
        return;
    const std::int32_t total = ItemStore(services.registry, site).Total();
    int fresh = 0;
    int unread = 0;
    for (const auto& node : root->Children()) {
        if (ItemNumber(node->Key()) > total)
            break;
        unread += IsUnread(node->Tag()) ? 1 : 0;
        fresh += node->Image() == TreeImage::New ? 1 : 0;
    }
    services.tree.SetCaption(*root,
        root->Tag() + " (" + std::to_string(fresh) + " New, " + std::to_string(unread) + " Unread, "
            + std::to_string(total) + " Total)",
        fresh > 0);
    if (fresh > 0 && IsOn(services.registry, kAutoExpandNew))
        services.tree.SetExpanded(*root, true);
}

} // namespace vantro
