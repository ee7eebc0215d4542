#include "feeds/ItemStore.h"
#include "feeds/ItemTag.h"
#include "feeds/SiteOperations.h"
#include "settings/Options.h"

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
    std::vector<NodeData> items;
    for (std::int32_t i = 1; i <= count; ++i) {
        std::string tag = store.ReadText(i, "Tag");
        const bool unread = IsUnread(tag);
        items.push_back({NodeKey(site, i), store.ReadText(i, "Title"),
            {unread ? TreeImage::ItemUnread : TreeImage::ItemRead, unread, std::move(tag)}});
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
