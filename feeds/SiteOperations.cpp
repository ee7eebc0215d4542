#include "feeds/SiteOperations.h"

#include <algorithm>
#include <vector>

namespace vantro {

const Site* FindSite(std::string_view nodeKey)
{
    const auto found = std::ranges::find(
        Sites(), nodeKey.substr(0, kPrefixLength), [](const Site* site) { return site->prefix; });
    return found == Sites().end() ? nullptr : *found;
}

void AddSiteRoots(NewsTree& tree)
{
    constexpr Colour kRootBackColor{255, 255, 192};
    std::vector<const Site*> roots(Sites().begin(), Sites().end());
    std::ranges::stable_sort(roots, {}, [](const Site* site) { return site->rootPlace; });
    for (const Site* site : roots) {
        const std::string name(site->displayName);
        tree.AddRoot({std::string(site->identifier), name, {site->image, false, name}}, kRootBackColor);
    }
}

} // namespace vantro
