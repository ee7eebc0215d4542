#include "toolkit/NativeWebView.h"

#include "base/Owned.h"
#include "engine/DocumentWatchGtk.h"
#include "engine/FocusedLinkGtk.h"
#include "engine/NativeEngineGtk.h"
#include "engine/NativeMenuGtk.h"
#include "engine/NativeZoomGtk.h"
#include "engine/NetworkProcessGtk.h"
#include "platform/StartUpCode.h"
#include "toolkit/WebEngine.h"

#include <gtk/gtk.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <wx/nativewin.h>

namespace vantro {

namespace {

constexpr const char* kBlankPage = "about:blank"; // the one page that the engine loads without a resource
constexpr guint kStartLasts = 2; // seconds after the first page
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

class NativeWebViewGtk final : public NativeWebView {
public:
    NativeWebViewGtk(wxWindow* parent, Events given)
        : events_(std::move(given)),
          serve_(std::make_shared<NativeWebViewGtk*>(this)),
          engine_(NewEngine([from = serve_](const std::string& address) {
              return *from != nullptr ? (*from)->events_.serve(address) : std::nullopt;
          })),
          view_(WEBKIT_WEB_VIEW(webkit_web_view_new_with_context(engine_.get()))),
          window_(new wxNativeWindow(parent, wxID_ANY, GTK_WIDGET(view_))),
          watch_(view_, [this](const DocumentEnd& end) { events_.document(end); })
    {
        window_->SetName("web");
        Restrict(webkit_web_view_get_settings(view_));
        g_object_add_weak_pointer(G_OBJECT(view_), WeakPointer());
        ConnectNavigation();
        ConnectInput();
        ConnectZoom(view_);
        ConnectFocusedLink(view_, [this](const std::string& link) { events_.pointed(link); });
        ConnectRequests();
        ConnectDrawing();
    }

    ~NativeWebViewGtk() override
    {
        *serve_ = nullptr;
        DeleteSandboxFiles();
        g_signal_handlers_disconnect_by_data(engine_.get(), this);
        if (view_ == nullptr)
            return;
        g_signal_handlers_disconnect_by_data(view_, this);
        g_object_remove_weak_pointer(G_OBJECT(view_), WeakPointer());
    }
    NativeWebViewGtk(const NativeWebViewGtk&) = delete;
    NativeWebViewGtk& operator=(const NativeWebViewGtk&) = delete;

    wxWindow* Window() const override { return window_; }

    std::string Normalized(const std::string& address) const override
    {
        const Owned<WebKitURIRequest, g_object_unref> request(webkit_uri_request_new(address.c_str()));
        return webkit_uri_request_get_uri(request.get());
    }

    void Load(const std::string& address) override
    {
        page_ = address;
        loads_ = true;
        network_.Find();
        watch_.GiveUpOwn();
        webkit_web_view_load_uri(view_, address.c_str());
    }

    void Stop() override
    {
        watch_.GiveUp();
        webkit_web_view_stop_loading(view_);
    }

    bool ProcessResponds() const override
    {
        return webkit_web_view_get_is_web_process_responsive(view_) != FALSE;
    }

    void EndStoppedProcess() override { network_.EndIfStopped(); }

    void EndProcess() override { webkit_web_view_terminate_web_process(view_); }

    void LoadFrame(std::string_view frame, const std::string& address, bool replace) override
    {
        // Of the location of a stranger's page only these two may be used.
        const std::string script = "window.frames[" + Quoted(frame) + "].location"
            + (replace ? ".replace(" + Quoted(address) + ")" : " = " + Quoted(address)) + ";";
        Run(script);
    }

    void SetHeadHeight(int height) override
    {
        Run("document.body.rows = \"" + std::to_string(height) + ",*\";");
    }

    void Back() override
    {
        if (CanGo(-1))
            webkit_web_view_go_back(view_);
    }

    void Forward() override
    {
        if (CanGo(1))
            webkit_web_view_go_forward(view_);
    }

    bool IsReplaced() const override { return watch_.IsReplaced(); }

    void SetCookies(bool taken) override
    {
        webkit_cookie_manager_set_accept_policy(webkit_web_context_get_cookie_manager(engine_.get()),
            taken ? WEBKIT_COOKIE_POLICY_ACCEPT_ALWAYS : WEBKIT_COOKIE_POLICY_ACCEPT_NEVER);
    }

    void SetSilent(bool silent) override { silent_ = silent ? TRUE : FALSE; }

private:
    void Run(const std::string& script)
    {
        webkit_web_view_evaluate_javascript(view_, script.c_str(), static_cast<gssize>(script.size()),
            nullptr, nullptr, nullptr, nullptr, nullptr);
    }

    gpointer* WeakPointer() { return reinterpret_cast<gpointer*>(&view_); }

    void Connect(const char* signal, GCallback handler) { g_signal_connect(view_, signal, handler, this); }

    void ConnectNavigation()
    {
        Connect("create",
            G_CALLBACK(
                +[](WebKitWebView*, WebKitNavigationAction* action, NativeWebViewGtk* self) -> GtkWidget* {
                    self->events_.allow(NavigationOf(action, true));
                    return nullptr;
                }));
        Connect("decide-policy", G_CALLBACK(OnDecidePolicy));
        Connect("load-changed", G_CALLBACK(OnLoadChanged));
        Connect("load-failed", G_CALLBACK(OnLoadFailed));
        g_signal_connect(engine_.get(), "download-started",
            G_CALLBACK(+[](WebKitWebContext*, WebKitDownload* download, NativeWebViewGtk* self) {
                const std::string address = webkit_uri_request_get_uri(webkit_download_get_request(download));
                webkit_download_cancel(download);
                self->events_.document({DocumentEnd::Kind::NotAPage, address});
            }),
            this);
        Connect("web-process-terminated",
            G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason why, NativeWebViewGtk* self) {
                self->comesUp_ = TRUE;
                if (why != WEBKIT_WEB_PROCESS_TERMINATED_BY_API)
                    self->events_.processLost();
            }));
        Connect("notify::is-web-process-responsive",
            G_CALLBACK(+[](WebKitWebView* changed, GParamSpec*, NativeWebViewGtk* self) {
                if (webkit_web_view_get_is_web_process_responsive(changed) == FALSE)
                    self->events_.processHangs();
            }));
    }

    void ConnectInput()
    {
        Connect("button-press-event",
            G_CALLBACK(+[](GtkWidget*, GdkEventButton* event, NativeWebViewGtk* self) -> gboolean {
                if (event->button != kBackButton && event->button != kForwardButton) {
                    self->events_.pressed();
                    return FALSE;
                }
                self->events_.command(event->button == kBackButton ? Command::Back : Command::Forward, {});
                return TRUE;
            }));
        Connect("mouse-target-changed",
            G_CALLBACK(+[](WebKitWebView*, WebKitHitTestResult* under, guint, NativeWebViewGtk* self) {
                const char* link = webkit_hit_test_result_get_link_uri(under);
                self->events_.pointed(self->pointedAt_ = link != nullptr ? link : "");
            }));
        Connect("button-release-event",
            G_CALLBACK(+[](GtkWidget*, GdkEventButton* event, NativeWebViewGtk* self) -> gboolean {
                if (event->button == GDK_BUTTON_PRIMARY && !self->pointedAt_.empty())
                    self->events_.clicked(self->pointedAt_);
                return FALSE;
            }));
        Connect("key-press-event",
            G_CALLBACK(+[](GtkWidget*, GdkEventKey* event, NativeWebViewGtk* self) -> gboolean {
                const bool alt = (event->state & gtk_accelerator_get_default_mod_mask()) == GDK_MOD1_MASK;
                if (!alt || (event->keyval != GDK_KEY_Left && event->keyval != GDK_KEY_Right)) {
                    self->events_.pressed();
                    return FALSE;
                }
                self->events_.command(event->keyval == GDK_KEY_Left ? Command::Back : Command::Forward, {});
                return TRUE;
            }));
        Connect("context-menu",
            G_CALLBACK(+[](WebKitWebView*, WebKitContextMenu* menu, GdkEvent*, WebKitHitTestResult* under,
                            NativeWebViewGtk* self) -> gboolean {
                FillContextMenu(menu, under, {self->CanGo(-1), self->CanGo(1), self->events_.command});
                return FALSE;
            }));
    }

    // What pages ask the user for; the answer is no.
    void ConnectRequests()
    {
        Connect("script-dialog",
            G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog*, NativeWebViewGtk* self) -> gboolean {
                return self->silent_;
            }));
        Connect("authenticate",
            G_CALLBACK(+[](WebKitWebView*, WebKitAuthenticationRequest* request,
                            NativeWebViewGtk* self) -> gboolean {
                if (self->silent_ == FALSE)
                    return FALSE;
                self->watch_.PasswordWanted();
                webkit_authentication_request_cancel(request);
                return TRUE;
            }));
        Connect("permission-request",
            G_CALLBACK(+[](WebKitWebView*, WebKitPermissionRequest* request, NativeWebViewGtk*) -> gboolean {
                webkit_permission_request_deny(request);
                return TRUE;
            }));
        Connect("print",
            G_CALLBACK(
                +[](WebKitWebView*, WebKitPrintOperation*, NativeWebViewGtk*) -> gboolean { return TRUE; }));
        Connect("run-file-chooser",
            G_CALLBACK(+[](WebKitWebView*, WebKitFileChooserRequest* request, NativeWebViewGtk*) -> gboolean {
                webkit_file_chooser_request_cancel(request);
                return TRUE;
            }));
    }

    // Asked to draw, the view waits up to half a second for the process of the pages, which while it comes up
    // waits for us: it is not asked before it has begun to show something.
    void ConnectDrawing()
    {
        Connect("draw", G_CALLBACK(+[](GtkWidget*, cairo_t* canvas, NativeWebViewGtk* self) -> gboolean {
            if (self->comesUp_ != FALSE) {
                cairo_set_source_rgb(canvas, 1, 1, 1);
                cairo_paint(canvas);
            }
            return self->comesUp_;
        }));
    }

    static gboolean OnDecidePolicy(WebKitWebView* /*view*/, WebKitPolicyDecision* decision,
        WebKitPolicyDecisionType type, NativeWebViewGtk* self)
    {
        if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
            return self->OnResponse(decision);
        WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
            WEBKIT_NAVIGATION_POLICY_DECISION(decision));
        const Navigation navigation
            = NavigationOf(action, type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION);
        if (!self->events_.allow(navigation)) {
            if (navigation.redirect)
                self->watch_.GiveUp(); // the engine gives up what was sent on
            webkit_policy_decision_ignore(decision);
            return TRUE;
        }
        self->watch_.Expect(navigation.address, navigation.redirect);
        return FALSE;
    }

    gboolean OnResponse(WebKitPolicyDecision* decision)
    {
        if (watch_.Answered(WEBKIT_RESPONSE_POLICY_DECISION(decision)))
            return FALSE;
        webkit_policy_decision_ignore(decision);
        return TRUE;
    }

    static void OnLoadChanged(WebKitWebView* view, WebKitLoadEvent event, NativeWebViewGtk* self)
    {
        if (event == WEBKIT_LOAD_STARTED && !std::exchange(self->loads_, false)) {
            const std::string address = self->watch_.Expected();
            self->watch_.GiveUp();
            webkit_web_view_stop_loading(view);
            self->events_.wantsAll(address);
        }
        if (event == WEBKIT_LOAD_COMMITTED && std::exchange(self->comesUp_, FALSE) != FALSE)
            gtk_widget_queue_draw(GTK_WIDGET(view));
        if (event != WEBKIT_LOAD_FINISHED)
            return;
        self->network_.Find();
        if (!std::exchange(self->hasStarted_, true))
            g_timeout_add_seconds_full(
                G_PRIORITY_LOW, kStartLasts,
                [](gpointer) -> gboolean {
                    ForgetStartUpCode();
                    return G_SOURCE_REMOVE;
                },
                nullptr, nullptr);
        // The view's own address is already that of the newest load when the end of an older one is reported.
        WebKitWebResource* document = webkit_web_view_get_main_resource(view);
        self->events_.finished(document != nullptr ? webkit_web_resource_get_uri(document) : kBlankPage);
    }

    static gboolean OnLoadFailed(WebKitWebView* /*view*/, WebKitLoadEvent /*event*/, const char* address,
        GError* error, NativeWebViewGtk* self)
    {
        if (!g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED))
            self->events_.failed(address);
        return FALSE;
    }

    // A page with frames stays the document of the view, whatever is followed in it.
    bool CanGo(int steps)
    {
        WebKitBackForwardList* list = webkit_web_view_get_back_forward_list(view_);
        if (steps > 0)
            return webkit_back_forward_list_get_forward_item(list) != nullptr;
        const Owned<GList, g_list_free> items(webkit_back_forward_list_get_back_list(list));
        bool found = false;
        for (const GList* item = items.get(); item != nullptr; item = item->next)
            found = found
                || page_ == webkit_back_forward_list_item_get_uri(WEBKIT_BACK_FORWARD_LIST_ITEM(item->data));
        return found && IsOwnAddress(page_);
    }

    Events events_;
    std::shared_ptr<NativeWebViewGtk*> serve_; // outlives this one in the engine
    Engine engine_;
    WebKitWebView* view_; // becomes null when the window library destroys it
    wxWindow* window_;
    DocumentWatch watch_;
    NetworkProcess network_{[this] { events_.networkLost(); }};
    std::string page_; // loaded last
    std::string pointedAt_; // the link under the mouse
    bool hasStarted_ = false; // a page has come
    bool loads_ = false; // of the next load of the whole view: the program has asked for it
    gboolean silent_ = FALSE;
    gboolean comesUp_ = TRUE; // the process of the pages, from its start to its first page
};

} // namespace

bool vantro_prepare_engine()
{
    return SandboxWorks();
}

NativeWebView* vantro_new_view(wxWindow* parent, NativeWebView::Events* events)
{
    return new NativeWebViewGtk(parent, std::move(*events));
}

} // namespace vantro
