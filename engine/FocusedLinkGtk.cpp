#include "engine/FocusedLinkGtk.h"

#include "base/Owned.h"

#include <utility>

namespace vantro {

namespace {

using Focused = std::function<void(const std::string&)>;

// The engine tells only of the mouse. This runs beside the pages' own scripts, in a world that they do not
// see, and whatever their policy is.
constexpr const char* kWorld = "vantro";
constexpr const char* kHandler = "focused";
constexpr const char* kScript
    = "const tell = link => window.webkit.messageHandlers.focused.postMessage(link);"
      "addEventListener('focusin', event => tell(event.target.href || ''));"
      "addEventListener('focusout', () => tell(''));";

void OnMessage(WebKitUserContentManager* /*manager*/, WebKitJavascriptResult* message, Focused* focused)
{
    const Owned<char, g_free> link(jsc_value_to_string(webkit_javascript_result_get_js_value(message)));
    (*focused)(link.get());
}

} // namespace

void ConnectFocusedLink(WebKitWebView* view, std::function<void(const std::string& link)> focused)
{
    WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(view);
    g_signal_connect_data(
        manager, "script-message-received::focused", G_CALLBACK(OnMessage), new Focused(std::move(focused)),
        [](gpointer data, GClosure*) { delete static_cast<Focused*>(data); }, GConnectFlags{});
    webkit_user_content_manager_register_script_message_handler_in_world(manager, kHandler, kWorld);
    const Owned<WebKitUserScript, webkit_user_script_unref> script(
        webkit_user_script_new_for_world(kScript, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
            WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, kWorld, nullptr, nullptr));
    webkit_user_content_manager_add_script(manager, script.get());
}

} // namespace vantro
