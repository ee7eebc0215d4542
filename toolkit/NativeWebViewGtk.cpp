#include "toolkit/NativeWebView.h"

#include "base/Owned.h"
#include "toolkit/DocumentWatchGtk.h"
#include "toolkit/NativeEngineGtk.h"
#include "toolkit/NativeMenuGtk.h"
#include "toolkit/NativeZoomGtk.h"

#include <gtk/gtk.h>
#include <utility>
#include <wx/nativewin.h>

namespace vantro {

namespace {

constexpr const char* kBlankPage = "about:blank"; // the one page that the engine loads without a resource
constexpr guint kMiddleButton = 2;
constexpr guint kBackButton = 8;
constexpr guint kForwardButton = 9;

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

Navigation NavigationOf(WebKitNavigationAction* action, bool newWindow)
{
    const bool aside = webkit_navigation_action_get_mouse_button(action) == kMiddleButton
        || (webkit_navigation_action_get_mouse_button(action) != 0
            && (webkit_navigation_action_get_modifiers(action) & (GDK_CONTROL_MASK | GDK_SHIFT_MASK)) != 0);
    return {webkit_uri_request_get_uri(webkit_navigation_action_get_request(action)),
        webkit_navigation_action_is_user_gesture(action) != FALSE,
        webkit_navigation_action_is_redirect(action) != FALSE, newWindow, aside,
        webkit_navigation_action_get_navigation_type(action) == WEBKIT_NAVIGATION_TYPE_BACK_FORWARD,
        webkit_navigation_action_get_navigation_type(action) == WEBKIT_NAVIGATION_TYPE_LINK_CLICKED};
}

} // namespace

struct NativeWebView::Implementation {
    Implementation(wxWindow* parent, Events given)
        : events(std::move(given)),
          serve(std::make_shared<Implementation*>(this)),
          engine(NewEngine([from = serve](const std::string& address) {
              return *from != nullptr ? (*from)->events.serve(address) : std::nullopt;
          })),
          view(WEBKIT_WEB_VIEW(webkit_web_view_new_with_context(engine.get()))),
          window(new wxNativeWindow(parent, wxID_ANY, GTK_WIDGET(view))),
          watch(view, [this](const DocumentEnd& end) { events.document(end); })
    {
        window->SetName("web");
        Restrict(webkit_web_view_get_settings(view));
        g_object_add_weak_pointer(G_OBJECT(view), WeakPointer());
        ConnectNavigation();
        ConnectInput();
        ConnectZoom(view);
        ConnectRequests();
    }

    ~Implementation()
    {
        *serve = nullptr;
        g_signal_handlers_disconnect_by_data(engine.get(), this);
        if (view == nullptr)
            return;
        g_signal_handlers_disconnect_by_data(view, this);
        g_object_remove_weak_pointer(G_OBJECT(view), WeakPointer());
    }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    gpointer* WeakPointer() { return reinterpret_cast<gpointer*>(&view); }

    void Connect(const char* signal, GCallback handler) { g_signal_connect(view, signal, handler, this); }

    void ConnectNavigation()
    {
        Connect("create",
            G_CALLBACK(
                +[](WebKitWebView*, WebKitNavigationAction* action, Implementation* self) -> GtkWidget* {
                    self->events.allow(NavigationOf(action, true));
                    return nullptr;
                }));
        Connect("decide-policy", G_CALLBACK(OnDecidePolicy));
        Connect("load-changed", G_CALLBACK(OnLoadChanged));
        Connect("load-failed", G_CALLBACK(OnLoadFailed));
        g_signal_connect(engine.get(), "download-started",
            G_CALLBACK(+[](WebKitWebContext*, WebKitDownload* download, Implementation* self) {
                const std::string address = webkit_uri_request_get_uri(webkit_download_get_request(download));
                webkit_download_cancel(download);
                self->events.document({DocumentEnd::Kind::NotAPage, address});
            }),
            this);
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
    }

    void ConnectInput()
    {
        Connect("button-press-event",
            G_CALLBACK(+[](GtkWidget*, GdkEventButton* event, Implementation* self) -> gboolean {
                if (event->button != kBackButton && event->button != kForwardButton) {
                    self->events.pressed();
                    return FALSE;
                }
                self->events.command(event->button == kBackButton ? Command::Back : Command::Forward, {});
                return TRUE;
            }));
        Connect("mouse-target-changed",
            G_CALLBACK(+[](WebKitWebView*, WebKitHitTestResult* under, guint, Implementation* self) {
                const char* link = webkit_hit_test_result_get_link_uri(under);
                self->pointedAt = link != nullptr ? link : "";
            }));
        Connect("button-release-event",
            G_CALLBACK(+[](GtkWidget*, GdkEventButton* event, Implementation* self) -> gboolean {
                if (event->button == GDK_BUTTON_PRIMARY && !self->pointedAt.empty())
                    self->events.clicked(self->pointedAt);
                return FALSE;
            }));
        Connect("key-press-event",
            G_CALLBACK(+[](GtkWidget*, GdkEventKey* event, Implementation* self) -> gboolean {
                const bool alt = (event->state & gtk_accelerator_get_default_mod_mask()) == GDK_MOD1_MASK;
                if (!alt || (event->keyval != GDK_KEY_Left && event->keyval != GDK_KEY_Right)) {
                    self->events.pressed();
                    return FALSE;
                }
                self->events.command(event->keyval == GDK_KEY_Left ? Command::Back : Command::Forward, {});
                return TRUE;
            }));
        Connect("context-menu",
            G_CALLBACK(+[](WebKitWebView*, WebKitContextMenu* menu, GdkEvent*, WebKitHitTestResult* under,
                            Implementation* self) -> gboolean {
                FillContextMenu(menu, under, {self->CanGo(-1), self->CanGo(1), self->events.command});
                return FALSE;
            }));
    }

    // What pages ask the user for; the answer is no.
    void ConnectRequests()
    {
        Connect("script-dialog",
            G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog*, Implementation* self) -> gboolean {
                return self->silent;
            }));
        Connect("authenticate",
            G_CALLBACK(
                +[](WebKitWebView*, WebKitAuthenticationRequest* request, Implementation* self) -> gboolean {
                    if (self->silent == FALSE)
                        return FALSE;
                    self->watch.PasswordWanted();
                    webkit_authentication_request_cancel(request);
                    return TRUE;
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
    }

    static gboolean OnDecidePolicy(WebKitWebView* /*view*/, WebKitPolicyDecision* decision,
        WebKitPolicyDecisionType type, Implementation* self)
    {
        if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
            return self->OnResponse(decision);
        WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
            WEBKIT_NAVIGATION_POLICY_DECISION(decision));
        const Navigation navigation
            = NavigationOf(action, type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION);
        if (!self->events.allow(navigation)) {
            if (navigation.redirect)
                self->watch.GiveUp(); // the engine gives up what was sent on
            webkit_policy_decision_ignore(decision);
            return TRUE;
        }
        self->watch.Expect(navigation.address, navigation.redirect);
        return FALSE;
    }

    gboolean OnResponse(WebKitPolicyDecision* decision)
    {
        if (watch.Answered(WEBKIT_RESPONSE_POLICY_DECISION(decision)))
            return FALSE;
        webkit_policy_decision_ignore(decision);
        return TRUE;
    }

    static void OnLoadChanged(WebKitWebView* view, WebKitLoadEvent event, Implementation* self)
    {
        if (event == WEBKIT_LOAD_STARTED && !std::exchange(self->loads, false)) {
            const std::string address = self->watch.Expected();
            self->watch.GiveUp();
            webkit_web_view_stop_loading(view);
            self->events.wantsAll(address);
        }
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

    // A page with frames stays the document of the view, whatever is followed in it.
    bool CanGo(int steps)
    {
        WebKitBackForwardList* list = webkit_web_view_get_back_forward_list(view);
        if (steps > 0)
            return webkit_back_forward_list_get_forward_item(list) != nullptr;
        const Owned<GList, g_list_free> items(webkit_back_forward_list_get_back_list(list));
        bool found = false;
        for (const GList* item = items.get(); item != nullptr; item = item->next)
            found = found
                || page == webkit_back_forward_list_item_get_uri(WEBKIT_BACK_FORWARD_LIST_ITEM(item->data));
        return found && IsOwnAddress(page);
    }

    Events events;
    std::shared_ptr<Implementation*> serve; // outlives this one in the engine
    Engine engine;
    WebKitWebView* view; // becomes null when the window library destroys it
    wxWindow* window;
    DocumentWatch watch;
    std::string page; // loaded last
    std::string pointedAt; // the link under the mouse
    bool loads = false; // of the next load of the whole view: the program has asked for it
    gboolean silent = FALSE;
};

NativeWebView::NativeWebView(wxWindow* parent, Events events)
    : implementation_(std::make_unique<Implementation>(parent, std::move(events)))
{
}

NativeWebView::~NativeWebView() = default;

wxWindow* NativeWebView::Window() const
{
    return implementation_->window;
}

std::string NativeWebView::Normalized(const std::string& address)
{
    const Owned<WebKitURIRequest, g_object_unref> request(webkit_uri_request_new(address.c_str()));
    return webkit_uri_request_get_uri(request.get());
}

void NativeWebView::Load(const std::string& address)
{
    implementation_->page = address;
    implementation_->loads = true;
    webkit_web_view_load_uri(implementation_->view, address.c_str());
}

void NativeWebView::Stop()
{
    implementation_->watch.GiveUp();
    webkit_web_view_stop_loading(implementation_->view);
}

bool NativeWebView::ProcessResponds() const
{
    return webkit_web_view_get_is_web_process_responsive(implementation_->view) != FALSE;
}

void NativeWebView::EndProcess()
{
    webkit_web_view_terminate_web_process(implementation_->view);
}

void NativeWebView::LoadFrame(std::string_view frame, const std::string& address, bool replace)
{
    // Of the location of a stranger's page only these two may be used.
    const std::string script = "window.frames[" + Quoted(frame) + "].location"
        + (replace ? ".replace(" + Quoted(address) + ")" : " = " + Quoted(address)) + ";";
    webkit_web_view_evaluate_javascript(implementation_->view, script.c_str(),
        static_cast<gssize>(script.size()), nullptr, nullptr, nullptr, nullptr, nullptr);
}

void NativeWebView::Back()
{
    if (implementation_->CanGo(-1))
        webkit_web_view_go_back(implementation_->view);
}

void NativeWebView::Forward()
{
    if (implementation_->CanGo(1))
        webkit_web_view_go_forward(implementation_->view);
}

bool NativeWebView::IsReplaced() const
{
    return implementation_->watch.IsReplaced();
}

void NativeWebView::SetCookies(bool taken)
{
    webkit_cookie_manager_set_accept_policy(
        webkit_web_context_get_cookie_manager(implementation_->engine.get()),
        taken ? WEBKIT_COOKIE_POLICY_ACCEPT_ALWAYS : WEBKIT_COOKIE_POLICY_ACCEPT_NEVER);
}

void NativeWebView::SetSilent(bool silent)
{
    implementation_->silent = silent ? TRUE : FALSE;
}

} // namespace vantro
