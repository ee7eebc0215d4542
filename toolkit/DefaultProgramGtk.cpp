#include "toolkit/DefaultProgram.h"

#include "base/Owned.h"
#include "toolkit/WebEngine.h"

#include <gtk/gtk.h>

namespace vantro {

bool OpenInDefaultProgram(const std::string& address)
{
    const Owned<GdkAppLaunchContext, g_object_unref> context(
        gdk_display_get_app_launch_context(gdk_display_get_default()));
    auto* launch = G_APP_LAUNCH_CONTEXT(context.get());
    for (const char* variable : EngineEnvironment())
        g_app_launch_context_unsetenv(launch, variable);
    if (g_app_info_launch_default_for_uri(address.c_str(), launch, nullptr) != FALSE)
        return true;
    // Knows more ways.
    const Owned<GAppInfo, g_object_unref> opener(
        g_app_info_create_from_commandline("xdg-open", nullptr, G_APP_INFO_CREATE_SUPPORTS_URIS, nullptr));
    GList only{const_cast<char*>(address.c_str()), nullptr, nullptr};
    return opener && g_app_info_launch_uris(opener.get(), &only, launch, nullptr) != FALSE;
}

} // namespace vantro
