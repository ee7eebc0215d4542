#pragma once

#include "feeds/Site.h"

#include <span>

namespace vantro {

extern const Site modVANTRO; // the program's own update feed
extern const Site modXBINS; // the Xbins release list
extern const Site modXBOXSCENE; // Xbox-Scene news
extern const Site modMAXCONSOLE; // Max Console news

// All sites, in the order in which one operation runs for all of them. They live as long as the program.
[[nodiscard]] inline std::span<const Site* const> Sites()
{
    static constexpr const Site* kSites[] = {
        &modVANTRO,
        &modXBINS,
        &modXBOXSCENE,
        &modMAXCONSOLE,
    };
    return kSites;
}

} // namespace vantro
