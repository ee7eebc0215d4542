#include "shell/StartUp.h"

#include "feeds/SiteOperations.h"
#include "platform/RegistryStore.h"

namespace vantro {

void LoadStoredItems(const FeedServices& services)
{
    // Nothing is written; but inside one transaction a read costs a third, and a failure shows.
    RegistryStore::Batch oneView(services.store);
    for (const Site* site : Sites())
        LoadSiteItems(*site, services);
    if (const auto failure = oneView.Commit())
        services.say("Stored news could not be read: " + *failure);
}

void RefreshAllSiteCounts(const FeedServices& services)
{
    for (const Site* site : Sites())
        UpdateSiteCounts(*site, services);
}

} // namespace vantro
