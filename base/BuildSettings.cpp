#include "base/BuildSettings.h"

namespace vantro {

constinit const BuildSettings kBuildSettings{VANTRO_VERSION_MAJOR, VANTRO_VERSION_MINOR,
    VANTRO_VERSION_REVISION, VANTRO_HOST_VANTRO, VANTRO_HOST_XBINS, VANTRO_HOST_XBOXSCENE,
    VANTRO_HOST_MAXCONSOLE};

} // namespace vantro
