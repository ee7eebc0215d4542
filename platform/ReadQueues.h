#pragma once

#include "platform/AsyncRead.h"
#include "platform/ProxyLookup.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <curl/curl.h>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>

namespace vantro {

// What the interface thread, or one that looked up proxies, wants of the worker of an AsyncRead.
struct ReadOrder {
    enum class Kind { Begin, Follow, Cancel, UseProxies, Release };
    Kind kind;
    ReadTicket ticket;
    std::string address = {}; // of Begin
    std::string folder = {}; // of Begin
    ProxyAnswer proxies = {}; // of UseProxies
    AsyncProperty content = {}; // of Release
};

// What the worker has to tell a client.
struct ReadNote {
    ReadTicket ticket;
    bool isComplete;
    AsyncProperty property;

    // The last of its transfer: its client has the most to do then.
    [[nodiscard]] bool IsLast() const { return isComplete || property.StatusCode == ReadStatusCode::Error; }
};

// The way in. Used by any thread, except as said.
class OrderQueue {
public:
    // An order also ends a curl_multi_poll() of `multi`, which must live until Close().
    explicit OrderQueue(CURLM* multi) : multi_(multi) { }

    // Does nothing after Close().
    void Give(ReadOrder order);
    // Ends a curl_multi_poll() for the last time.
    void Close();
    [[nodiscard]] std::deque<ReadOrder> TakeAll();
    // Sleeps until there is an order or `stop` is requested.
    void Wait(const std::stop_token& stop);

private:
    std::mutex mutex_;
    CURLM* multi_; // guarded by mutex_; null when closed
    std::condition_variable_any given_;
    std::deque<ReadOrder> orders_; // guarded by mutex_
};

// The way out. It asks the interface thread to come when notes wait: at once, but for DataArriving at most
// every 33 milliseconds, or a server that sends byte by byte would keep that thread busy.
class NoteQueue {
public:
    using Clock = std::chrono::steady_clock;

    // `wake` as for AsyncRead.
    explicit NoteQueue(std::function<void()> wake) : wake_(std::move(wake)) { }

    // Worker thread. DataArriving takes the place of one of its transfer that waits as the latest. The first
    // of a transfer is as urgent as any other note.
    void Post(ReadNote note, bool isFirst);
    // Worker thread. When WakeIfDue() has something to do, if it has.
    [[nodiscard]] std::optional<Clock::time_point> Due();
    void WakeIfDue();

    // Interface thread. How many notes wait; what is posted from now on has its own wake.
    [[nodiscard]] std::size_t CountWaiting();
    [[nodiscard]] std::optional<ReadNote> Take();
    // Asks for another wake if notes are left.
    void WakeForRest();

private:
    bool Merge(ReadNote& note);

    const std::function<void()> wake_;
    std::mutex mutex_;
    std::deque<ReadNote> notes_; // guarded by mutex_, as is the rest
    bool wakeAsked_ = false;
    bool isHeldBack_ = false; // a wake waits for nextProgress_
    Clock::time_point nextProgress_; // from when on DataArriving may wake again
};

} // namespace vantro
