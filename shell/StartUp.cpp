#include "shell/StartUp.h"

#include "base/Words.h"
#include "feeds/SiteOperations.h"
#include "settings/modRegistry.h"

namespace vantro {

void LoadStoredItems(const FeedServices& services)
{
    // Nothing is written; but a failure to read shows, and it is quicker.
    const auto failure = services.registry.StoreTogether([&] {
        for (const Site* site : Sites())
            LoadSiteItems(*site, services);
    });
    services.say("stored news", failure ? Words("Stored news could not be read: %1", {*failure}) : "");
}

void RefreshAllSiteCounts(const FeedServices& services)
{
    for (const Site* site : Sites())
        UpdateSiteCounts(*site, services);
}

} // namespace vantro
