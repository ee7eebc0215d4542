#include "platform/SessionBus.h"

#include <cstdlib>
#include <filesystem>
#include <glib.h>
#include <string_view>
#include <system_error>

namespace vantro {

bool IsSessionBusAnnounced()
{
    if (const char* address = std::getenv(kSessionBusVariable))
        return address != std::string_view(kNoSessionBus);
    std::error_code unreadable;
    return std::filesystem::exists(std::filesystem::path(g_get_user_runtime_dir()) / "bus", unreadable);
}

} // namespace vantro
