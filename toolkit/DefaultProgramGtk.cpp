#include "toolkit/DefaultProgram.h"

#include "base/Owned.h"
#include "platform/SessionBus.h"
#include "toolkit/WebEngine.h"

#include <gtk/gtk.h>
#include <wx/log.h>
#include <wx/utils.h>

namespace vantro {

bool OpenInDefaultProgram(const std::string& address)
{
    const Owned<GdkAppLaunchContext, g_object_unref> context(
        gdk_display_get_app_launch_context(gdk_display_get_default()));
    for (const EngineVariable& variable : kEngineEnvironment)
        g_app_launch_context_unsetenv(G_APP_LAUNCH_CONTEXT(context.get()), variable.name);
    if (!IsSessionBusAnnounced())
        g_app_launch_context_unsetenv(G_APP_LAUNCH_CONTEXT(context.get()), kSessionBusVariable);
    if (g_app_info_launch_default_for_uri(address.c_str(), G_APP_LAUNCH_CONTEXT(context.get()), nullptr)
        != FALSE)
        return true;
    const wxLogNull noBox; // the caller says it
    return wxLaunchDefaultBrowser(wxString::FromUTF8(address)); // knows more ways
}

} // namespace vantro
