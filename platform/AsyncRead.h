#pragma once

#include "platform/ProxyLookup.h"
#include "web/WebAddress.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>

namespace vantro {

class PartFile;

// Where a transfer stands. The numbers are those of the URL moniker's binding status, with 0 for an error.
enum class ReadStatusCode : int {
    Error = 0, // `Value` holds the sentence; nothing follows
    Connecting = 2, // `Status`: the server's numeric address, the first one tried
    Redirecting = 3, // `Status`: the absolute target; the transfer waits until the client has returned
    BeginningData = 4, // `BytesMax`: the announced size, 0 when none was announced or the content is coded
    DataArriving = 5, // `BytesRead`, `BytesMax`
    EndOfData = 6, // `BytesRead`, `BytesMax`
    MimeTypeKnown = 13, // `Status`: such as "text/xml"; left out when the server names none
    CacheFileKnown = 14 // `Status`: a file name; this facility keeps no cache and never reports it
};

// One notification of a transfer. Sizes are bytes of decoded content; what exceeds 32 bits is reported as the
// largest number.
struct AsyncProperty {
    ReadStatusCode StatusCode = ReadStatusCode::Error;
    std::string Status = {};
    std::int32_t BytesRead = 0;
    std::int32_t BytesMax = 0;
    std::string Value = {}; // on completion the received content, on an error its description
    std::shared_ptr<PartFile> File = {}; // on completion holds the content in place of `Value`: see Begin()
};

// Receives the notifications of its transfers, on the interface thread, inside AsyncRead::Deliver():
// Connecting and Redirecting for every hop, then MimeTypeKnown, BeginningData, any number of DataArriving,
// EndOfData, and at last AsyncReadComplete; or, at any point, Error as the last one.
class AsyncReadClient {
public:
    virtual ~AsyncReadClient() = default;
    virtual void AsyncReadProgress(const AsyncProperty& property) = 0;
    virtual void AsyncReadComplete(const AsyncProperty& property) = 0;
};

// What a transfer may take. Tests shorten these.
struct ReadLimits {
    std::chrono::milliseconds connect
        = std::chrono::seconds(30); // name lookup, connection and TLS of one hop; also the proxy lookup
    std::chrono::seconds silence = std::chrono::seconds(60); // no data, or a mere trickle, for so long
    std::chrono::seconds total = std::chrono::minutes(10); // all hops, however fast the data comes
    std::int64_t size = 64LL * 1024 * 1024; // bytes of content, decoded
    int redirects = 10;
};

using ReadTicket = std::uint64_t; // 0 names no transfer

// Reads addresses in the background: all transfers share one worker thread that owns the libcurl handles; the
// notifications wait in a queue until the interface thread takes them out with Deliver(). DataArriving is
// merged while it waits, so a fast server cannot fill the queue, and wakes at most 30 times a second. Every
// member but the constructor's callback is used on the interface thread.
class AsyncRead {
public:
    // `wake` is called whenever notifications wait, on the worker thread or inside Deliver(); it must only
    // see to it that the interface thread calls Deliver() soon, in an event of its own. `userAgent` is the
    // name servers see, such as "Vantro/1.0".
    // `proxies` is asked before every hop; without it the environment decides, as it does where it knows
    // nothing.
    explicit AsyncRead(std::function<void()> wake, const ReadLimits& limits = {},
        const std::string& userAgent = "Vantro", ProxyResolver proxies = {});
    // Abandons what is in flight, without notification, and joins the worker; well under a second, whatever
    // the servers do. REQUIRES: not called from inside Deliver().
    ~AsyncRead();
    AsyncRead(const AsyncRead&) = delete;
    AsyncRead& operator=(const AsyncRead&) = delete;

    // Starts reading `address` (http or https only) from its server, never from a cache. Content is asked for
    // as it is; what comes compressed all the same is decoded. Cookies live as long as the transfer.
    // Redirects are followed one by one: the next request is sent only after the client has seen the
    // Redirecting notification and has not cancelled. `client` must stay alive until the transfer ended or
    // was cancelled. With a `folder` the content is written to a file there as it arrives, closed at the end;
    // where none can be made, it is kept in memory all the same. What fails later shows when it is saved.
    [[nodiscard]] std::variant<ReadTicket, ReadRefused> Begin(
        const std::string& address, AsyncReadClient& client, const std::string& folder = {});

    // Stops a transfer: no notification of it follows, not even one already queued. An unknown ticket is
    // ignored.
    void Cancel(ReadTicket ticket);

    // Hands the notifications that wait now to their clients, in order, up to the first that ends a transfer:
    // its client may have much to do, so the rest is left to another wake. What arrives meanwhile has its own
    // wake, too. Received content is destroyed by the worker, which takes long when it is much. A client may
    // begin or cancel transfers, and may call Deliver() again (through an event pump), from inside a
    // notification.
    void Deliver();

private:
    class Worker;
    std::map<ReadTicket, AsyncReadClient*> clients_; // transfers that have neither ended nor been cancelled
    ReadTicket lastTicket_ = 0;
    std::unique_ptr<Worker> worker_;
};

} // namespace vantro
