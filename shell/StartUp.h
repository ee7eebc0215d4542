#pragma once

#include "feeds/SiteModule.h"

namespace vantro {

// The steps of start-up that run one operation for all sites, in the order of SiteModules().
void LoadStoredItems(const FeedServices& services);
void RefreshAllSiteCounts(const FeedServices& services);

} // namespace vantro
