#pragma once

#include "feeds/SiteModule.h"

namespace vantro {

// Xbox-Scene news.
extern const SiteModule modXBOXSCENE;

} // namespace vantro
