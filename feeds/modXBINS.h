#pragma once

#include "feeds/SiteModule.h"

namespace vantro {

// The Xbins release list.
extern const SiteModule modXBINS;

} // namespace vantro
