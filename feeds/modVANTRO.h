#pragma once

#include "feeds/SiteModule.h"

namespace vantro {

// The program's own update feed.
extern const SiteModule modVANTRO;

} // namespace vantro
