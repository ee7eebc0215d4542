#include "platform/Transfer.h"

#include "base/Amounts.h"
#include "base/Words.h"
#include "platform/TransferFailure.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <limits>
#include <netdb.h>
#include <sys/socket.h>
#include <utility>
#include <variant>

namespace vantro {

namespace {

constexpr std::size_t kHeadLimit = 256UL * 1024; // bytes of header lines of one hop, interim answers included
// Bytes a second. A server that drips a byte a second counts as silent, or its transfer would never end.
constexpr long kSilentBelow = 10;
constexpr long kPieceSize = 256L * 1024; // bytes taken from the network at once
constexpr const char* kEndlessHead = Marked("The header of the server's answer is too long");
constexpr const char* kCutAnswer = Marked("The connection broke off in the middle of the answer");

std::int32_t Clamp32(std::int64_t bytes)
{
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(bytes, 0, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

Transfer::Transfer(const TransferSettings& settings, std::string address, std::string folder, Post post,
    AskProxies askProxies)
    : settings_(settings),
      folder_(std::move(folder)),
      post_(std::move(post)),
      askProxies_(std::move(askProxies)),
      deadline_(std::chrono::steady_clock::now() + settings.limits.total),
      address_(std::move(address)),
      headers_(curl_slist_append(nullptr, "Cache-Control: no-cache")),
      easy_(curl_easy_init())
{
    SetUp();
    StartHop();
}

Transfer::~Transfer()
{
    lookup_.request_stop();
    LeaveMulti();
}

template <class T>
void Transfer::Set(CURLoption option, T value)
{
    if (setUp_ == CURLE_OK)
        setUp_ = curl_easy_setopt(easy_.get(), option, value);
}

void Transfer::SetUp()
{
    if (!easy_ || !headers_) {
        setUp_ = CURLE_OUT_OF_MEMORY;
        return;
    }
    Set(CURLOPT_PROTOCOLS_STR, "http,https");
    Set(CURLOPT_FOLLOWLOCATION, 0L); // each hop waits for the client's consent
    Set(CURLOPT_NOSIGNAL, 1L);
    Set(CURLOPT_QUICK_EXIT, 1L);
    Set(CURLOPT_FRESH_CONNECT, 1L);
    Set(CURLOPT_FORBID_REUSE, 1L);
    Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    Set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L); // a proxy's answer is not the server's
    Set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(settings_.limits.connect.count()));
    Set(CURLOPT_LOW_SPEED_LIMIT, kSilentBelow);
    Set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(settings_.limits.silence.count()));
    Set(CURLOPT_USERAGENT, settings_.userAgent.c_str());
    Set(CURLOPT_HTTPHEADER, headers_.get());
    Set(CURLOPT_ACCEPT_ENCODING, "identity"); // also makes libcurl decode whatever comes
    Set(CURLOPT_COOKIEFILE, ""); // cookies, kept in this handle
    Set(CURLOPT_BUFFERSIZE, kPieceSize);
    Set(CURLOPT_PRIVATE, this);
    Set(CURLOPT_HEADERFUNCTION, &Transfer::TakeHeader);
    Set(CURLOPT_HEADERDATA, this);
    Set(CURLOPT_WRITEFUNCTION, &Transfer::TakeBody);
    Set(CURLOPT_WRITEDATA, this);
    Set(CURLOPT_OPENSOCKETFUNCTION, &Transfer::OpenSocket);
    Set(CURLOPT_OPENSOCKETDATA, this);
}

void Transfer::StartHop()
{
    if (!askProxies_) {
        Connect();
        return;
    }
    state_ = State::AsksProxies;
    lookupEnd_ = std::chrono::steady_clock::now() + settings_.limits.connect;
    askProxies_(OriginOf(address_), lookup_.get_token());
}

void Transfer::UseProxies(ProxyAnswer answer)
{
    if (state_ != State::AsksProxies)
        return;
    proxies_ = std::move(answer.proxies);
    if (answer.failure.empty())
        Connect();
    else
        Fail(answer.failure);
}

void Transfer::Connect()
{
    answer_ = {};
    stop_ = Stop::None;
    headSize_ = 0;
    addressReported_ = false;
    Set(CURLOPT_URL, address_.c_str());
    // What the environment excepts from its own proxy says nothing about another.
    Set(CURLOPT_PROXY, proxies_.empty() ? nullptr : proxies_.front().c_str());
    Set(CURLOPT_NOPROXY, proxies_.empty() ? nullptr : "");
    if (setUp_ != CURLE_OK) {
        Fail(curl_easy_strerror(setUp_));
        return;
    }
    const CURLMcode added = curl_multi_add_handle(settings_.multi, easy_.get());
    inMulti_ = added == CURLM_OK;
    if (inMulti_)
        state_ = State::Running;
    else
        Fail(curl_multi_strerror(added));
}

void Transfer::LeaveMulti()
{
    if (std::exchange(inMulti_, false))
        curl_multi_remove_handle(settings_.multi, easy_.get());
}

std::size_t Transfer::TakeHeader(char* data, std::size_t, std::size_t count, void* self) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        return transfer.OnHeader({data, count}) ? count : 0;
    } catch (const std::exception&) {
        transfer.stop_ = Stop::NoMemory;
        return 0;
    }
}

std::size_t Transfer::TakeBody(char* data, std::size_t, std::size_t count, void* self) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        return transfer.OnBody({data, count}) ? count : 0;
    } catch (const std::exception&) {
        transfer.stop_ = Stop::NoMemory;
        return 0;
    }
}

curl_socket_t Transfer::OpenSocket(void* self, curlsocktype, curl_sockaddr* address) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        std::array<char, NI_MAXHOST> host{};
        if (!std::exchange(transfer.addressReported_, true)
            && getnameinfo(
                   &address->addr, address->addrlen, host.data(), host.size(), nullptr, 0, NI_NUMERICHOST)
                == 0)
            transfer.post_({.StatusCode = ReadStatusCode::Connecting, .Status = host.data()}, false);
    } catch (const std::exception&) {
        transfer.stop_ = Stop::NoMemory;
        return CURL_SOCKET_BAD;
    }
    // Programs that ours starts must not hold the connection open.
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

bool Transfer::OnHeader(std::string_view line)
{
    headSize_ += line.size();
    if (headSize_ > kHeadLimit) {
        stop_ = Stop::EndlessHead;
        return false;
    }
    return !answer_.TakeLine(line) || OnHeadComplete();
}

bool Transfer::OnHeadComplete()
{
    if (!answer_.IsSuccess())
        return false; // nothing in the body of such an answer is wanted
    if (answer_.Length() > settings_.limits.size) {
        stop_ = Stop::TooLarge;
        return false;
    }
    if (!answer_.MimeType().empty())
        post_({.StatusCode = ReadStatusCode::MimeTypeKnown, .Status = answer_.MimeType()}, false);
    post_(Progress(ReadStatusCode::BeginningData), false);
    return true;
}

bool Transfer::OnBody(std::string_view data)
{
    if (std::cmp_greater(data.size(), settings_.limits.size - received_)) {
        stop_ = Stop::TooLarge;
        return false;
    }
    Keep(data);
    post_(Progress(ReadStatusCode::DataArriving), false);
    return true;
}

void Transfer::Keep(std::string_view data)
{
    if (received_ == 0 && !folder_.empty()) {
        auto file = std::make_shared<PartFile>(folder_);
        if (file->IsOpen())
            file_ = std::move(file);
    }
    if (file_)
        file_->Append(data);
    else
        body_.append(data);
    received_ += static_cast<std::int64_t>(data.size());
}

AsyncProperty Transfer::Progress(ReadStatusCode code) const
{
    return {.StatusCode = code, .BytesRead = Clamp32(received_), .BytesMax = Clamp32(answer_.Length())};
}

void Transfer::HopEnded(CURLcode code)
{
    const std::string failure = code == CURLE_OK ? "" : Describe(code);
    const bool isNext = MayTryNextProxy(code);
    LeaveMulti();
    if (isNext) {
        proxies_.erase(proxies_.begin());
        Connect();
        return;
    }
    if (stop_ == Stop::None && answer_.IsComplete() && answer_.IsRedirect()) {
        OnRedirect();
    } else if (stop_ == Stop::None && answer_.IsComplete() && !answer_.IsSuccess()) {
        Fail(answer_.StatusText());
    } else if (!failure.empty()) {
        Fail(failure);
    } else if (!answer_.IsComplete()) {
        Fail(Words(kCutAnswer)); // which libcurl calls a success
    } else {
        state_ = State::Ended;
        AsyncProperty end = Progress(ReadStatusCode::EndOfData);
        post_(AsyncProperty(end), false);
        if (file_)
            file_->Close();
        end.File = std::move(file_);
        end.Value = std::move(body_);
        post_(std::move(end), true);
    }
}

void Transfer::OnRedirect()
{
    auto target = ResolveRedirect(address_, answer_.Location());
    if (!target) {
        Fail(Words("The server redirected to a malformed address"));
    } else if (++redirects_ > settings_.limits.redirects) {
        Fail(CountedWords(
            "Redirected more than %1 time", "Redirected more than %1 times", settings_.limits.redirects));
    } else {
        address_ = std::move(*target);
        state_ = State::AwaitsConsent;
        post_({.StatusCode = ReadStatusCode::Redirecting, .Status = address_}, false);
    }
}

void Transfer::Follow()
{
    if (state_ != State::AwaitsConsent)
        return;
    if (std::holds_alternative<std::string>(CheckWebAddress(address_)))
        StartHop();
    else
        Fail(Words("Redirected to %1, which is neither http nor https", {Shortened(address_)}));
}

void Transfer::Fail(const std::string& sentence)
{
    state_ = State::Ended;
    lookup_.request_stop();
    LeaveMulti();
    post_({.StatusCode = ReadStatusCode::Error, .Value = sentence}, false);
}

std::chrono::steady_clock::time_point Transfer::Deadline() const
{
    return state_ == State::AsksProxies ? std::min(lookupEnd_, deadline_) : deadline_;
}

void Transfer::EndIfLate()
{
    const auto now = std::chrono::steady_clock::now();
    if (state_ == State::Ended || now < Deadline())
        return;
    if (now >= deadline_)
        Fail(Words("The file had not arrived after %1", {TimeText(settings_.limits.total)}));
    else
        Fail(Words("The desktop did not say in time which proxy server to use"));
}

bool Transfer::HasSentRequest() const
{
    curl_off_t untilRequest = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_PRETRANSFER_TIME_T, &untilRequest);
    return untilRequest > 0;
}

bool Transfer::MayTryNextProxy(CURLcode code) const
{
    return code != CURLE_OK && stop_ == Stop::None && proxies_.size() > 1 && !HasSentRequest();
}

std::string Transfer::Describe(CURLcode code) const
{
    switch (stop_) {
    case Stop::TooLarge:
        return Words("The file is larger than the %1 allowed", {SizeText(settings_.limits.size)});
    case Stop::EndlessHead: return Words(kEndlessHead);
    case Stop::NoMemory: return Words("Not enough memory for the file");
    case Stop::None: break;
    }
    if (code == CURLE_OPERATION_TIMEDOUT && HasSentRequest())
        return Words("The server sent almost nothing for %1", {TimeText(settings_.limits.silence)});
    if (code == CURLE_OUT_OF_MEMORY && HasSentRequest() && !answer_.IsComplete())
        return Words(kEndlessHead); // one line longer than libcurl keeps
    if (code == CURLE_GOT_NOTHING && headSize_ > 0)
        return Words(kCutAnswer); // there was an interim one
    if (code == CURLE_BAD_CONTENT_ENCODING)
        return answer_.Coding().empty()
            ? Words("The server sent the file in a coding that cannot be read")
            : Words("The server sent the file in a coding that cannot be read: %1", {answer_.Coding()});
    long systemError = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_OS_ERRNO, &systemError);
    if (code == CURLE_RECV_ERROR && systemError == 0 && answer_.IsComplete() && address_.starts_with("http:"))
        code = CURLE_WEIRD_SERVER_REPLY; // chunks that are none; of TLS this may be a connection that broke
    long proxyStatus = 0; // of a tunnel through the proxy
    curl_easy_getinfo(easy_.get(), CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
    const bool isOfTransfer
        = code == CURLE_RECV_ERROR || code == CURLE_SEND_ERROR || code == CURLE_OUT_OF_MEMORY;
    if (proxyStatus >= 300 || (isOfTransfer && !HasSentRequest()))
        code = CURLE_PROXY;
    return FailureSentence(code, Shortened(HostOf(address_)));
}

} // namespace vantro
