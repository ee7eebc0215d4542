#pragma once

#include "feeds/SiteModule.h"

namespace vantro {

// Max Console news.
extern const SiteModule modMAXCONSOLE;

} // namespace vantro
