#include "shell/StartUp.h"

#include "feeds/SiteModules.h"

namespace vantro {

void LoadStoredItems(const FeedServices& services)
{
    for (const SiteModule* module : SiteModules())
        module->LoadSiteItems(services);
}

void RefreshAllSiteCounts(const FeedServices& services)
{
    for (const SiteModule* module : SiteModules())
        module->UpdateSiteCounts(services);
}

} // namespace vantro
