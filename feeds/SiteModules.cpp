#include "feeds/SiteModules.h"

#include "feeds/modMAXCONSOLE.h"
#include "feeds/modVANTRO.h"
#include "feeds/modXBINS.h"
#include "feeds/modXBOXSCENE.h"

#include <algorithm>

namespace vantro {

const std::array<const SiteModule*, 4>& SiteModules()
{
    static constexpr std::array<const SiteModule*, 4> kModules
        = {&modVANTRO, &modXBINS, &modXBOXSCENE, &modMAXCONSOLE};
    return kModules;
}

const SiteModule* FindSiteModule(std::string_view nodeKey)
{
    const auto found = std::ranges::find(
        SiteModules(), nodeKey.substr(0, 4), [](const SiteModule* module) { return module->Row().prefix; });
    return found == SiteModules().end() ? nullptr : *found;
}

void AddSiteRoots(NewsTree& tree)
{
    constexpr Colour kRootBackColor{255, 255, 192};
    for (const SiteModule* module : {&modVANTRO, &modXBOXSCENE, &modMAXCONSOLE, &modXBINS}) {
        const Site& site = module->Row();
        const std::string name(site.displayName);
        tree.AddRoot({std::string(site.identifier), name, {site.image, false, name}}, kRootBackColor);
    }
}

} // namespace vantro
