#include "shell/StartUp.h"

#include "feeds/SiteModules.h"

namespace vantro {

void LoadStoredItems(const FeedServices& services)
{
    // Nothing is written; but inside one transaction a read costs a third, and a failure shows.
    RegistryStore::Batch oneView(services.store);
    for (const SiteModule* module : SiteModules())
        module->LoadSiteItems(services);
    if (const auto failure = oneView.Commit())
        services.say("Stored news could not be read: " + *failure);
}

void RefreshAllSiteCounts(const FeedServices& services)
{
    for (const SiteModule* module : SiteModules())
        module->UpdateSiteCounts(services);
}

} // namespace vantro
