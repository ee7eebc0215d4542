#include "feeds/ReadMarks.h"

#include "base/Words.h"
#include "feeds/ItemStore.h"
#include "feeds/ItemTag.h"
#include "feeds/SiteOperations.h"
#include "settings/modRegistry.h"

#include <string_view>
#include <utility>

namespace vantro {

namespace {

constexpr std::string_view kSubject = "mark";

void Mark(const FeedServices& services, NewsNode& node, ItemState state)
{
    if (const Site* site = FindSite(node.Key())) {
        if (const auto failure = services.registry.StoreTogether(
                [&] { ItemStore(services.registry, *site).WriteTag(ItemNumber(node.Key()), state.tag); })) {
            services.say(kSubject, Words("The read mark could not be stored: %1", {*failure}));
            return;
        }
        services.say(kSubject, {});
    }
    services.tree.SetState(node, std::move(state));
}

} // namespace

void MarkRead(const FeedServices& services, NewsNode& node)
{
    Mark(services, node, {TreeImage::ItemRead, false, MarkedRead(node.Tag())});
}

void MarkUnread(const FeedServices& services, NewsNode& node)
{
    Mark(services, node, {TreeImage::ItemUnread, true, MarkedUnread(node.Tag())});
}

} // namespace vantro
