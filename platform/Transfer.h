#pragma once

#include "base/Owned.h"
#include "platform/AsyncRead.h"
#include "platform/PartFile.h"
#include "platform/ProxyLookup.h"
#include "web/HttpAnswer.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <curl/curl.h>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// What all transfers of one reader have in common.
struct TransferSettings {
    CURLM* multi;
    ReadLimits limits;
    std::string userAgent;
};

// One transfer, hop by hop, on a libcurl handle of its own. Lives on the worker thread. Destroying it
// abandons what is in flight, at once: QUICK_EXIT leaves a stalled name lookup to end by itself.
class Transfer {
public:
    // AwaitsConsent lasts from a redirect to Follow(). Ended is final: the last notification has been posted.
    enum class State { AsksProxies, Running, AwaitsConsent, Ended };
    // Called on the worker thread, also from inside libcurl: it only hands the notification over.
    // `isComplete` tells AsyncReadComplete from AsyncReadProgress.
    using Post = std::function<void(AsyncProperty&& property, bool isComplete)>;

    // Asks for the proxies to use for a server; UseProxies() brings the answer, unless `stop` was requested.
    using AskProxies = std::function<void(const std::string& origin, std::stop_token stop)>;

    // Starts reading `address`, into `folder` if that is not "". `settings` must outlive the transfer.
    // Without `askProxies` the environment decides about them.
    Transfer(const TransferSettings& settings, std::string address, std::string folder, Post post,
        AskProxies askProxies);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    [[nodiscard]] State Standing() const { return state_; }
    // libcurl has finished the present hop with `code`. Ends the transfer, starts the next hop through
    // another proxy, or posts the redirect that is to be followed.
    void HopEnded(CURLcode code);
    // The client has seen the redirect and wants it. Nothing happens unless one is awaited; the same holds
    // for an answer about proxies, which may come late.
    void Follow();
    void UseProxies(ProxyAnswer answer);
    // Ends the transfer at once with an error that tells the client `sentence`.
    void Fail(const std::string& sentence);
    // Ends the transfer when its time is up: to be called from Deadline() on.
    void EndIfLate();
    [[nodiscard]] std::chrono::steady_clock::time_point Deadline() const;

private:
    enum class Stop { None, TooLarge, EndlessHead, NoMemory }; // why a callback made libcurl stop

    static std::size_t TakeHeader(char* data, std::size_t, std::size_t count, void* self) noexcept;
    static std::size_t TakeBody(char* data, std::size_t, std::size_t count, void* self) noexcept;
    static curl_socket_t OpenSocket(void* self, curlsocktype purpose, curl_sockaddr* address) noexcept;

    template <class T>
    void Set(CURLoption option, T value);
    void SetUp();
    void StartHop();
    void Connect();
    [[nodiscard]] bool MayTryNextProxy(CURLcode code) const;
    [[nodiscard]] bool HasSentRequest() const;
    void LeaveMulti();
    bool OnHeader(std::string_view line);
    bool OnHeadComplete();
    bool OnBody(std::string_view data);
    void Keep(std::string_view data);
    void OnRedirect();
    [[nodiscard]] std::string Describe(CURLcode code) const;
    [[nodiscard]] AsyncProperty Progress(ReadStatusCode code) const;

    const TransferSettings& settings_;
    const std::string folder_;
    const Post post_;
    const AskProxies askProxies_;
    const std::chrono::steady_clock::time_point deadline_;
    std::string address_; // of the present hop, or of the next one while consent is awaited
    State state_ = State::Running;
    int redirects_ = 0;
    CURLcode setUp_ = CURLE_OK; // the first option that libcurl did not take
    bool inMulti_ = false;

    // The present hop.
    std::stop_source lookup_; // of the proxies
    std::chrono::steady_clock::time_point lookupEnd_;
    std::vector<std::string> proxies_; // still to be tried, the present one first
    HttpAnswer answer_;
    Stop stop_ = Stop::None;
    std::size_t headSize_ = 0;
    bool addressReported_ = false;

    // The content: of a success alone, so only ever of the last hop.
    std::int64_t received_ = 0; // bytes
    std::shared_ptr<PartFile> file_; // made when the first byte comes
    std::string body_; // when there is no file

    Owned<curl_slist, curl_slist_free_all> headers_;
    Owned<CURL, curl_easy_cleanup> easy_; // last: it points into what stands above
};

} // namespace vantro
