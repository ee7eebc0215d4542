#pragma once

#include "feeds/SiteOperations.h"

namespace vantro {

// The steps of start-up that run one operation for all sites, in the order of Sites(). Interface thread; need
// AddSiteRoots(). A failure to read is said, and the branches show what could be read.
void LoadStoredItems(const FeedServices& services);
void RefreshAllSiteCounts(const FeedServices& services);

} // namespace vantro
