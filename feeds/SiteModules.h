#pragma once

#include "feeds/SiteModule.h"

#include <array>

namespace vantro {

// All sites, in the order in which one operation runs for all of them.
[[nodiscard]] const std::array<const SiteModule*, 4>& SiteModules();

// The site whose item nodes have keys of this prefix; null when there is none. Letter case counts.
[[nodiscard]] const SiteModule* FindSiteModule(std::string_view nodeKey);

// Adds the root nodes to an empty tree.
void AddSiteRoots(NewsTree& tree);

} // namespace vantro
