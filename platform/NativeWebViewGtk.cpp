#include "platform/NativeWebView.h"

#include <glib.h>
#include <string_view>
#include <utility>
#include <vector>
#include <webkit2/webkit2.h>
#include <wx/webview.h>

namespace vantro {

namespace {

constexpr const char* kBlankPage = "about:blank"; // the one page that the engine loads without a resource

// True when the tool behind the engine's sandbox can set one up here; in some containers it cannot, and the
// engine would then end the program.
bool SandboxWorks()
{
    std::vector<const char*> command{
        "bwrap", "--ro-bind", "/", "/", "--proc", "/proc", "--dev", "/dev", "--unshare-all", "true", nullptr};
    gint status = 1;
    const gboolean ran
        = g_spawn_sync(nullptr, const_cast<char**>(command.data()), nullptr, // NOLINT: a C interface
            static_cast<GSpawnFlags>(
                G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL),
            nullptr, nullptr, nullptr, nullptr, &status, nullptr);
    gchar* proxy = g_find_program_in_path("xdg-dbus-proxy"); // the sandbox needs it as well
    const bool works = ran != FALSE && status == 0 && proxy != nullptr;
    g_free(proxy);
    return works;
}

// The text as a JavaScript literal.
std::string Quoted(std::string_view text)
{
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        if (static_cast<unsigned char>(c) >= 0x20)
            out += c;
    }
    return out + '"';
}

void CancelDownload(WebKitWebContext* /*context*/, WebKitDownload* download, gpointer /*data*/)
{
    webkit_download_cancel(download);
}

} // namespace

struct NativeWebView::Implementation {
    Implementation(wxWebView& owner, Events given)
        : view(WEBKIT_WEB_VIEW(owner.GetNativeBackend())), events(std::move(given))
    {
        // The window library (3.2) answers "create" with the same view, which aborts the program on
        // window.open(), and its own policy handler would be asked before this one. Its other handlers stay.
        for (const char* signal : {"create", "decide-policy"}) {
            g_signal_handlers_disconnect_matched(view,
                static_cast<GSignalMatchType>(G_SIGNAL_MATCH_ID | G_SIGNAL_MATCH_DATA),
                g_signal_lookup(signal, WEBKIT_TYPE_WEB_VIEW), 0, nullptr, nullptr, &owner);
        }
        Connect("create",
            G_CALLBACK(
                +[](WebKitWebView*, WebKitNavigationAction* action, Implementation* self) -> GtkWidget* {
                    self->events.allow(NavigationOf(action, true));
                    return nullptr;
                }));
        Connect("decide-policy", G_CALLBACK(OnDecidePolicy));
        Connect("load-changed", G_CALLBACK(OnLoadChanged));
        Connect("load-failed", G_CALLBACK(OnLoadFailed));
        Connect("web-process-terminated",
            G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason why, Implementation* self) {
                if (why != WEBKIT_WEB_PROCESS_TERMINATED_BY_API)
                    self->events.processLost();
            }));
        Connect("notify::is-web-process-responsive",
            G_CALLBACK(+[](WebKitWebView* changed, GParamSpec*, Implementation* self) {
                if (webkit_web_view_get_is_web_process_responsive(changed) == FALSE)
                    self->events.processHangs();
            }));
        Connect("script-dialog",
            G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog*, Implementation* self) -> gboolean {
                return self->silent;
            }));
        Connect("authenticate",
            G_CALLBACK(
                +[](WebKitWebView*, WebKitAuthenticationRequest* request, Implementation* self) -> gboolean {
                    if (self->silent)
                        webkit_authentication_request_cancel(request);
                    return self->silent;
                }));
        Connect("permission-request",
            G_CALLBACK(+[](WebKitWebView*, WebKitPermissionRequest* request, Implementation*) -> gboolean {
                webkit_permission_request_deny(request);
                return TRUE;
            }));
        Connect("print", G_CALLBACK(+[](WebKitWebView*, WebKitPrintOperation*, Implementation*) -> gboolean {
            return TRUE;
        }));
        Connect("run-file-chooser",
            G_CALLBACK(+[](WebKitWebView*, WebKitFileChooserRequest* request, Implementation*) -> gboolean {
                webkit_file_chooser_request_cancel(request);
                return TRUE;
            }));
        Restrict(webkit_web_view_get_settings(view));
        g_object_add_weak_pointer(G_OBJECT(view), WeakPointer());
    }

    ~Implementation()
    {
        if (view == nullptr)
            return;
        g_signal_handlers_disconnect_by_data(view, this);
        g_object_remove_weak_pointer(G_OBJECT(view), WeakPointer());
    }

    gpointer* WeakPointer() { return reinterpret_cast<gpointer*>(&view); } // NOLINT: a C interface

    void Connect(const char* signal, GCallback handler) { g_signal_connect(view, signal, handler, this); }

    // Most of these are the engine's defaults; they are said because pages of strangers depend on them.
    static void Restrict(WebKitSettings* settings)
    {
        g_object_set(settings, "allow-file-access-from-file-urls", FALSE,
            "allow-universal-access-from-file-urls", FALSE, "javascript-can-open-windows-automatically",
            FALSE, "javascript-can-access-clipboard", FALSE, "enable-dns-prefetching", FALSE,
            "enable-page-cache", FALSE, "enable-developer-extras", FALSE, "enable-html5-database", FALSE,
            "enable-html5-local-storage", FALSE, "enable-fullscreen", FALSE, nullptr);
    }

    static Navigation NavigationOf(WebKitNavigationAction* action, bool newWindow)
    {
        return {webkit_uri_request_get_uri(webkit_navigation_action_get_request(action)),
            webkit_navigation_action_is_user_gesture(action) != FALSE,
            webkit_navigation_action_is_redirect(action) != FALSE, newWindow};
    }

    static gboolean OnDecidePolicy(WebKitWebView* /*view*/, WebKitPolicyDecision* decision,
        WebKitPolicyDecisionType type, Implementation* self)
    {
        if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
            // What the engine cannot show it would download.
            if (webkit_response_policy_decision_is_mime_type_supported(
                    WEBKIT_RESPONSE_POLICY_DECISION(decision))
                != FALSE)
                return FALSE;
            webkit_policy_decision_ignore(decision);
            return TRUE;
        }
        auto* asked = WEBKIT_NAVIGATION_POLICY_DECISION(decision);
        WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(asked);
        if (self->events.allow(NavigationOf(action, type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION)))
            return FALSE;
        webkit_policy_decision_ignore(decision);
        return TRUE;
    }

    static void OnLoadChanged(WebKitWebView* view, WebKitLoadEvent event, Implementation* self)
    {
        if (event != WEBKIT_LOAD_FINISHED)
            return;
        // The view's own address is already that of the newest load when the end of an older one is reported.
        WebKitWebResource* document = webkit_web_view_get_main_resource(view);
        self->events.finished(document != nullptr ? webkit_web_resource_get_uri(document) : kBlankPage);
    }

    static gboolean OnLoadFailed(WebKitWebView* /*view*/, WebKitLoadEvent /*event*/, const char* address,
        GError* error, Implementation* self)
    {
        if (!g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED))
            self->events.failed(address);
        return FALSE;
    }

    WebKitWebView* view; // becomes null when the window library destroys it
    Events events;
    gboolean silent = FALSE;
};

void NativeWebView::PrepareEngine(const std::filesystem::path& pageFolder)
{
    static bool prepared = false;
    if (std::exchange(prepared, true))
        return;
    WebKitWebContext* context = webkit_web_context_get_default();
    g_signal_connect(context, "download-started", G_CALLBACK(CancelDownload), nullptr);
    if (!SandboxWorks())
        return;
    webkit_web_context_set_sandbox_enabled(context, TRUE);
    webkit_web_context_add_path_to_sandbox(context, pageFolder.c_str(), TRUE);
}

NativeWebView::NativeWebView(wxWebView& view, Events events)
    : implementation_(std::make_unique<Implementation>(view, std::move(events)))
{
}

NativeWebView::~NativeWebView() = default;

std::string NativeWebView::Normalized(const std::string& address)
{
    gchar* local = address.starts_with('/') ? g_filename_to_uri(address.c_str(), nullptr, nullptr) : nullptr;
    WebKitURIRequest* request = webkit_uri_request_new(local != nullptr ? local : address.c_str());
    std::string normalized = webkit_uri_request_get_uri(request);
    g_object_unref(request);
    g_free(local);
    return normalized;
}

void NativeWebView::Load(const std::string& address)
{
    webkit_web_view_load_uri(implementation_->view, address.c_str());
}

bool NativeWebView::ProcessResponds() const
{
    return webkit_web_view_get_is_web_process_responsive(implementation_->view) != FALSE;
}

void NativeWebView::EndProcess()
{
    webkit_web_view_terminate_web_process(implementation_->view);
}

void NativeWebView::LoadFrame(const std::string& frame, const std::string& address)
{
    // The engine's own call, without a callback: the window library's RunScript waits in a loop of its own.
    const std::string script = "window.frames[" + Quoted(frame) + "].location = " + Quoted(address) + ";";
    webkit_web_view_evaluate_javascript(implementation_->view, script.c_str(),
        static_cast<gssize>(script.size()), nullptr, nullptr, nullptr, nullptr, nullptr);
}

void NativeWebView::SetSilent(bool silent)
{
    implementation_->silent = silent ? TRUE : FALSE;
}

} // namespace vantro
