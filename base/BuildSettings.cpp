#include "base/BuildSettings.h"

#include <array>

namespace vantro {

namespace {

constexpr auto kHosts = std::to_array<BuildHost>({VANTRO_HOSTS{}});

} // namespace

constinit const BuildSettings kBuildSettings{
    VANTRO_VERSION_MAJOR, VANTRO_VERSION_MINOR, VANTRO_VERSION_REVISION, kHosts, VANTRO_LOCALE_FOLDER};

} // namespace vantro
