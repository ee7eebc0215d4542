#include "platform/ProxyLookup.h"

#include "base/Owned.h"
#include "base/Words.h"

#include <gio/gio.h>
#include <string_view>
#include <utility>

namespace vantro {

namespace {

constexpr int kMostUnderWay = 16; // more are never needed: the others hang, and so would the next

struct Question {
    std::shared_ptr<const ProxyResolver> resolver;
    std::shared_ptr<std::atomic<int>> underWay;
    std::string origin;
    std::stop_token stop;
    std::function<void(ProxyAnswer)> answered;
};

gpointer Answer(gpointer data) noexcept
{
    const std::unique_ptr<Question> question(static_cast<Question*>(data));
    question->answered((*question->resolver)(question->origin, question->stop));
    --*question->underWay;
    return nullptr;
}

// GLib names what its own connections would do: they let a SOCKS 5 server look names up, and try that first
// where only "socks" is said.
std::string InNotationOfLibcurl(std::string_view proxy)
{
    if (proxy.starts_with("direct:"))
        return "";
    for (const std::string_view scheme : {"socks:", "socks5:"})
        if (proxy.starts_with(scheme))
            return "socks5h:" + std::string(proxy.substr(scheme.size()));
    return std::string(proxy);
}

} // namespace

ProxyAnswer AskForProxies(GProxyResolver* resolver, const std::string& origin, const std::stop_token& stop)
{
    const Owned<GCancellable, g_object_unref> cancellable(g_cancellable_new());
    const std::stop_callback cancel(stop, [&] { g_cancellable_cancel(cancellable.get()); });
    GError* failure = nullptr;
    const Owned<char*, g_strfreev> found(
        g_proxy_resolver_lookup(resolver, origin.c_str(), cancellable.get(), &failure));
    if (!found) {
        const Owned<GError, g_error_free> owner(failure);
        return {.failure = Words("The desktop's proxy settings cannot be used: %1", {failure->message})};
    }
    ProxyAnswer answer;
    for (char** proxy = found.get(); *proxy; ++proxy)
        answer.proxies.push_back(InNotationOfLibcurl(*proxy));
    // GLib says "direct" also where nobody has set anything, and only some resolvers read the environment.
    if (answer.proxies.size() == 1 && answer.proxies.front().empty())
        answer.proxies.clear();
    return answer;
}

ProxyAnswer AskDesktopForProxies(const std::string& origin, const std::stop_token& stop)
{
    return AskForProxies(g_proxy_resolver_get_default(), origin, stop);
}

ProxyLookup::ProxyLookup(ProxyResolver resolver)
    : resolver_(std::make_shared<const ProxyResolver>(std::move(resolver)))
{
}

void ProxyLookup::Ask(
    const std::string& origin, std::stop_token stop, std::function<void(ProxyAnswer)> answered)
{
    auto question = std::make_unique<Question>(
        Question{resolver_, underWay_, origin, std::move(stop), std::move(answered)});
    if (++*underWay_ <= kMostUnderWay) {
        // Joining it could take as long as the settings' script, bus or server likes to.
        if (GThread* thread = g_thread_try_new("proxy", Answer, question.get(), nullptr)) {
            (void)question.release(); // the thread's
            g_thread_unref(thread);
            return;
        }
    }
    --*underWay_;
    question->answered({.failure = Words("The desktop does not say which proxy server to use")});
}

} // namespace vantro
