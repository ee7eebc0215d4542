#include "base/modMain.h"

#include "base/BuildSettings.h"

#include <string>

namespace vantro {

const std::string VersionLine = MakeVersionLine(
    kBuildSettings.versionMajor, kBuildSettings.versionMinor, kBuildSettings.versionRevision);

std::string MakeVersionLine(int major, int minor, int revision)
{
    const std::string digits = "0000" + std::to_string(revision);
    return "v" + std::to_string(major) + "." + std::to_string(minor) + " build "
        + digits.substr(digits.size() - 4);
}

} // namespace vantro
