#pragma once

#include <string_view>

namespace vantro {

// What was decided when the program was configured for building.
struct BuildSettings {
    int versionMajor;
    int versionMinor;
    int versionRevision;
    // Base addresses of the feeds, without a slash at the end.
    std::string_view hostVantro;
    std::string_view hostXbins;
    std::string_view hostXboxScene;
    std::string_view hostMaxConsole;
};

extern const BuildSettings kBuildSettings;

} // namespace vantro
