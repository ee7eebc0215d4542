#pragma once

#include "feeds/Site.h"

#include <filesystem>
#include <map>
#include <string>

namespace vantro {

struct FeedHosts {
    // The base address of each site's feed, without a slash at its end.
    std::map<const Site*, std::string> addresses;
    // A sentence for the user about what could not be used; empty when all is well.
    std::string notice;
};

// Reads group [Hosts] of the file, whose keys are the identifiers of the sites. A missing file or key gives
// the built-in address; so does a value that is no http or https address to which a path can be added, and a
// file that is not of this form or no regular file, and `notice` says so.
[[nodiscard]] FeedHosts ReadHostsFile(const std::filesystem::path& file);

} // namespace vantro
