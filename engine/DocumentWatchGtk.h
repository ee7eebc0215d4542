#pragma once

#include "base/Owned.h"
#include "web/DocumentEnd.h"

#include <functional>
#include <string>
#include <vector>
#include <webkit2/webkit2.h>

namespace vantro {

// Follows the document of the newest navigation that was allowed, in whatever frame, and those of our own
// scheme, of which several may be under way, and reports what becomes of them. The engine tells nothing else
// about the documents of frames than what happens to their resources.
class DocumentWatch {
public:
    // `report` runs in the middle of the engine's work. The view may go before the watch.
    DocumentWatch(WebKitWebView* view, std::function<void(const DocumentEnd&)> report);
    ~DocumentWatch();
    DocumentWatch(const DocumentWatch&) = delete;
    DocumentWatch& operator=(const DocumentWatch&) = delete;

    // A navigation to `address` was allowed: the document before it no longer counts, unless it was
    // redirected.
    void Expect(const std::string& address, bool redirect);
    // The address that was allowed last.
    [[nodiscard]] const std::string& Expected() const { return expected_; }
    // Whether the engine has put a page, be it an empty one, in the place where the document was to come.
    [[nodiscard]] bool IsReplaced() const;
    // Nothing is reported of the document any more.
    void GiveUp();
    // Nor of those of our own.
    void GiveUpOwn();
    // The server wants a password, which was refused.
    void PasswordWanted() { passwordWanted_ = true; }
    // The server has answered. True when the engine can show it, which it does only then.
    [[nodiscard]] bool Answered(WebKitResponsePolicyDecision* decision);

private:
    static void OnResource(
        WebKitWebView* view, WebKitWebResource* resource, WebKitURIRequest* request, DocumentWatch* self);
    void WatchOwn(WebKitWebResource* resource);
    void OnFailed(const GError& error);
    void ReportWatched(DocumentEnd::Kind kind, const char* reason = "");

    WebKitWebView* view_; // becomes null when it is destroyed
    std::function<void(const DocumentEnd&)> report_;
    std::string expected_;
    Owned<WebKitBackForwardListItem, g_object_unref> before_; // where the view stood then
    Owned<WebKitWebResource, g_object_unref> watched_;
    std::vector<std::string> own_; // that have not begun to come
    std::vector<Owned<WebKitWebResource, g_object_unref>> watchedOwn_;
    bool answered_ = false;
    bool passwordWanted_ = false;
};

} // namespace vantro
