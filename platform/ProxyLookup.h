#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

using GProxyResolver = struct _GProxyResolver; // NOLINT(bugprone-reserved-identifier): the name GIO gives it

namespace vantro {

// Which way to a server the user's settings name.
struct ProxyAnswer {
    // To be tried in this order, in libcurl's notation, "" for a direct connection. None at all when nothing
    // is known: the environment's http_proxy and its kin then decide.
    std::vector<std::string> proxies = {};
    std::string failure = {}; // a sentence, when the settings are there but cannot be read
};

// Answers for the server at `origin`, such as "http://a.example:8080/". Called on a thread of its own,
// several at a time; may block, and should return soon after `stop` was requested.
using ProxyResolver = std::function<ProxyAnswer(const std::string& origin, const std::stop_token& stop)>;

// Asks `resolver`. Nothing is known when it names no proxy at all.
[[nodiscard]] ProxyAnswer AskForProxies(
    GProxyResolver* resolver, const std::string& origin, const std::stop_token& stop);
// Asks the resolver that the desktop offers.
[[nodiscard]] ProxyAnswer AskDesktopForProxies(const std::string& origin, const std::stop_token& stop);

// Asks a resolver in the background.
class ProxyLookup {
public:
    explicit ProxyLookup(ProxyResolver resolver);

    // Whether there is a resolver to ask.
    [[nodiscard]] bool IsNeeded() const { return *resolver_ != nullptr; }
    // Returns at once. `answered` is called once, on a thread that nobody waits for: that may be long after
    // `stop` was requested and after this object has gone.
    void Ask(const std::string& origin, std::stop_token stop, std::function<void(ProxyAnswer)> answered);

private:
    std::shared_ptr<const ProxyResolver> resolver_; // shared with the threads that ask it, as is the next
    std::shared_ptr<std::atomic<int>> underWay_ = std::make_shared<std::atomic<int>>(0);
};

} // namespace vantro
