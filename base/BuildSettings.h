#pragma once

#include <span>
#include <string_view>

namespace vantro {

// The base address that the build gives the feed of a site, without a slash at its end.
struct BuildHost {
    std::string_view key; // the site's identifier
    std::string_view address;
};

// What was decided when the program was configured for building. There before any other global is made.
struct BuildSettings {
    int versionMajor;
    int versionMinor;
    int versionRevision;
    std::span<const BuildHost> hosts; // of the sites that are not to have the address of their row
    std::string_view localeFolder; // of installed translations, seen from the folder above the program's
};

extern const BuildSettings kBuildSettings;

} // namespace vantro
