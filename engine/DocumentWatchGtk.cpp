#include "engine/DocumentWatchGtk.h"

#include "web/DisplayAddress.h"

#include <utility>

namespace vantro {

namespace {

constexpr unsigned kNoContent = 204;
constexpr unsigned kResetContent = 205;

WebKitBackForwardListItem* CurrentItem(WebKitWebView* view)
{
    return webkit_back_forward_list_get_current_item(webkit_web_view_get_back_forward_list(view));
}

} // namespace

DocumentWatch::DocumentWatch(WebKitWebView* view, std::function<void(const DocumentEnd&)> report)
    : view_(view), report_(std::move(report))
{
    g_object_add_weak_pointer(G_OBJECT(view_), reinterpret_cast<gpointer*>(&view_));
    g_signal_connect(view_, "resource-load-started", G_CALLBACK(OnResource), this);
}

DocumentWatch::~DocumentWatch()
{
    GiveUp();
    GiveUpOwn();
    if (view_ == nullptr)
        return;
    g_signal_handlers_disconnect_by_data(view_, this);
    g_object_remove_weak_pointer(G_OBJECT(view_), reinterpret_cast<gpointer*>(&view_));
}

void DocumentWatch::Expect(const std::string& address, bool redirect)
{
    expected_ = address;
    if (redirect)
        return;
    GiveUp();
    if (IsOwnAddress(address))
        own_.push_back(address);
    WebKitBackForwardListItem* now = CurrentItem(view_);
    if (now != nullptr)
        g_object_ref(now);
    before_.reset(now);
}

bool DocumentWatch::IsReplaced() const
{
    return before_.get() != CurrentItem(view_);
}

void DocumentWatch::GiveUp()
{
    if (!watched_)
        return;
    g_signal_handlers_disconnect_by_data(watched_.get(), this);
    watched_.reset();
}

bool DocumentWatch::Answered(WebKitResponsePolicyDecision* decision)
{
    WebKitURIResponse* response = webkit_response_policy_decision_get_response(decision);
    const std::string address = webkit_uri_response_get_uri(response);
    const unsigned status = webkit_uri_response_get_status_code(response);
    DocumentEnd::Kind kind = DocumentEnd::Kind::Answered;
    if (status == kNoContent || status == kResetContent)
        kind = DocumentEnd::Kind::NothingToShow;
    else if (webkit_response_policy_decision_is_mime_type_supported(decision) == FALSE)
        kind = DocumentEnd::Kind::NotAPage; // the engine would download it
    answered_ = true;
    report_({kind, address, status});
    return kind == DocumentEnd::Kind::Answered;
}

void DocumentWatch::OnResource(
    WebKitWebView* /*view*/, WebKitWebResource* resource, WebKitURIRequest* request, DocumentWatch* self)
{
    const char* address = webkit_uri_request_get_uri(request);
    if (std::erase(self->own_, address) != 0)
        self->WatchOwn(resource);
    if (IsOwnAddress(address) || self->watched_ || self->expected_ != address)
        return;
    self->watched_.reset(WEBKIT_WEB_RESOURCE(g_object_ref(resource)));
    self->answered_ = self->passwordWanted_ = false;
    const auto connect
        = [&](const char* signal, GCallback handler) { g_signal_connect(resource, signal, handler, self); };
    connect("finished", G_CALLBACK(+[](WebKitWebResource*, DocumentWatch* to) {
        to->ReportWatched(DocumentEnd::Kind::Finished);
    }));
    connect("failed-with-tls-errors",
        G_CALLBACK(+[](WebKitWebResource*, GTlsCertificate*, GTlsCertificateFlags, DocumentWatch* to) {
            to->ReportWatched(DocumentEnd::Kind::BadCertificate);
        }));
    connect("failed",
        G_CALLBACK(+[](WebKitWebResource*, GError* error, DocumentWatch* to) { to->OnFailed(*error); }));
}

void DocumentWatch::WatchOwn(WebKitWebResource* resource)
{
    watchedOwn_.emplace_back(WEBKIT_WEB_RESOURCE(g_object_ref(resource)));
    g_signal_connect(resource, "finished", G_CALLBACK(+[](WebKitWebResource* own, DocumentWatch* to) {
        to->report_({DocumentEnd::Kind::Finished, webkit_web_resource_get_uri(own)});
    }),
        this);
    g_signal_connect(resource, "failed", G_CALLBACK(+[](WebKitWebResource* own, GError*, DocumentWatch* to) {
        to->report_({DocumentEnd::Kind::Unreachable, webkit_web_resource_get_uri(own)});
    }),
        this);
}

void DocumentWatch::GiveUpOwn()
{
    for (const auto& resource : watchedOwn_)
        g_signal_handlers_disconnect_by_data(resource.get(), this);
    watchedOwn_.clear();
    own_.clear();
}

void DocumentWatch::OnFailed(const GError& error)
{
    if (answered_)
        GiveUp(); // told before, or it broke off in the middle
    else if (error.domain == WEBKIT_POLICY_ERROR)
        ReportWatched(DocumentEnd::Kind::NoWebAddress); // a port or a scheme that the engine bars
    else if (passwordWanted_)
        ReportWatched(DocumentEnd::Kind::WantsPassword);
    else if (g_error_matches(&error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED))
        ReportWatched(DocumentEnd::Kind::ForbidsFrames); // by nobody here: the engine does so then
    else
        ReportWatched(DocumentEnd::Kind::Unreachable, error.message);
}

void DocumentWatch::ReportWatched(DocumentEnd::Kind kind, const char* reason)
{
    const std::string address = webkit_web_resource_get_uri(watched_.get());
    GiveUp();
    report_({kind, address, 0, reason});
}

} // namespace vantro
