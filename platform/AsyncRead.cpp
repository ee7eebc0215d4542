#include "platform/AsyncRead.h"

#include "platform/Transfer.h"

#include <algorithm>
#include <csignal>
#include <deque>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

namespace vantro {
namespace {
constexpr int kIdlePollMs = 60'000; // an order wakes the poll; this is only how long it may sleep otherwise

struct Order {
    enum class Kind { Begin, Follow, Cancel };
    Kind kind;
    ReadTicket ticket;
    std::string address;
};

struct Note {
    ReadTicket ticket;
    bool isComplete;
    AsyncProperty property;
};

struct CurlLibrary {
    CurlLibrary() { curl_global_init(CURL_GLOBAL_DEFAULT); }
    ~CurlLibrary() { curl_global_cleanup(); }
    CurlLibrary(const CurlLibrary&) = delete;
    CurlLibrary& operator=(const CurlLibrary&) = delete;
};
} // namespace

// The worker thread and the two queues between it and the interface thread: orders in, notes out.
class AsyncRead::Worker {
public:
    Worker(std::function<void()> wake, const ReadLimits& limits, const std::string& userAgent);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Interface thread.
    [[nodiscard]] bool IsUsable() const { return multi_ != nullptr; }
    void Give(Order order);
    std::size_t CountWaiting();
    std::optional<Note> TakeNote();

private:
    using Transfers = std::map<ReadTicket, std::unique_ptr<Transfer>>;

    // Worker thread.
    void Run(const std::stop_token& stop);
    void Obey(Transfers& transfers);
    void EndHops();
    void Post(Note note);

    CurlLibrary library_;
    std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi_;
    TransferSettings settings_;
    const std::function<void()> wake_;

    std::mutex mutex_;
    std::deque<Order> orders_; // guarded by mutex_
    std::deque<Note> notes_; // guarded by mutex_
    bool wakeAsked_ = false; // guarded by mutex_

    std::jthread thread_; // last, so it is joined before what it uses goes
};

AsyncRead::Worker::Worker(std::function<void()> wake, const ReadLimits& limits, const std::string& userAgent)
    : multi_(curl_multi_init(), curl_multi_cleanup),
      settings_{multi_.get(), limits, userAgent},
      wake_(std::move(wake))
{
    if (multi_)
        thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

AsyncRead::Worker::~Worker()
{
    thread_.request_stop();
    if (multi_)
        curl_multi_wakeup(multi_.get());
}

void AsyncRead::Worker::Give(Order order)
{
    {
        const std::lock_guard lock(mutex_);
        orders_.push_back(std::move(order));
    }
    curl_multi_wakeup(multi_.get());
}

std::size_t AsyncRead::Worker::CountWaiting()
{
    const std::lock_guard lock(mutex_);
    wakeAsked_ = false;
    return notes_.size();
}

std::optional<Note> AsyncRead::Worker::TakeNote()
{
    const std::lock_guard lock(mutex_);
    if (notes_.empty())
        return std::nullopt;
    std::optional<Note> note(std::move(notes_.front()));
    notes_.pop_front();
    return note;
}

void AsyncRead::Worker::Run(const std::stop_token& stop)
{
    // The TLS library may write to a closed connection; the signal would end the program.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    Transfers transfers;
    while (!stop.stop_requested()) {
        Obey(transfers);
        int running = 0;
        CURLMcode code = curl_multi_perform(multi_.get(), &running);
        EndHops();
        std::erase_if(
            transfers, [](const auto& t) { return t.second->Standing() == Transfer::State::Ended; });
        if (code == CURLM_OK)
            code = curl_multi_poll(multi_.get(), nullptr, 0, kIdlePollMs, nullptr);
        if (code != CURLM_OK) {
            for (auto& [ticket, transfer] : transfers)
                transfer->Fail(curl_multi_strerror(code));
            transfers.clear();
        }
    }
}

void AsyncRead::Worker::Obey(Transfers& transfers)
{
    std::deque<Order> orders;
    {
        const std::lock_guard lock(mutex_);
        orders.swap(orders_);
    }
    for (Order& order : orders) {
        const ReadTicket ticket = order.ticket;
        const auto known = transfers.find(ticket);
        switch (order.kind) {
        case Order::Kind::Begin:
            transfers.emplace(ticket,
                std::make_unique<Transfer>(settings_, std::move(order.address),
                    [this, ticket](AsyncProperty&& property, bool isComplete) {
                        Post({ticket, isComplete, std::move(property)});
                    }));
            break;
        case Order::Kind::Follow:
            if (known != transfers.end())
                known->second->Follow();
            break;
        case Order::Kind::Cancel:
            if (known != transfers.end())
                transfers.erase(known);
            break;
        }
    }
}

void AsyncRead::Worker::EndHops()
{
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode result = message->data.result; // the message dies when its handle leaves
        char* transfer = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
        reinterpret_cast<Transfer*>(transfer)->HopEnded(result);
    }
}

void AsyncRead::Worker::Post(Note note)
{
    {
        const std::lock_guard lock(mutex_);
        if (note.property.StatusCode == ReadStatusCode::DataArriving) {
            const auto latest = std::find_if(notes_.rbegin(), notes_.rend(),
                [&](const Note& waiting) { return waiting.ticket == note.ticket; });
            if (latest != notes_.rend() && latest->property.StatusCode == ReadStatusCode::DataArriving) {
                *latest = std::move(note);
                return;
            }
        }
        notes_.push_back(std::move(note));
        if (std::exchange(wakeAsked_, true))
            return;
    }
    wake_();
}

AsyncRead::AsyncRead(std::function<void()> wake, const ReadLimits& limits, const std::string& userAgent)
    : worker_(std::make_unique<Worker>(std::move(wake), limits, userAgent))
{
}

AsyncRead::~AsyncRead() = default;

std::variant<ReadTicket, ReadRefused> AsyncRead::Begin(const std::string& address, AsyncReadClient& client)
{
    auto checked = CheckWebAddress(address);
    if (auto* refused = std::get_if<ReadRefused>(&checked))
        return std::move(*refused);
    if (!worker_->IsUsable())
        return ReadRefused{CURLE_FAILED_INIT, curl_easy_strerror(CURLE_FAILED_INIT)};
    const ReadTicket ticket = ++lastTicket_;
    clients_.emplace(ticket, &client);
    worker_->Give({Order::Kind::Begin, ticket, std::move(std::get<std::string>(checked))});
    return ticket;
}

void AsyncRead::Cancel(ReadTicket ticket)
{
    if (clients_.erase(ticket) != 0)
        worker_->Give({Order::Kind::Cancel, ticket, {}});
}

void AsyncRead::Deliver()
{
    for (std::size_t waiting = worker_->CountWaiting(); waiting > 0; --waiting) {
        const std::optional<Note> note = worker_->TakeNote();
        if (!note)
            return; // a Deliver() further down the stack took the rest
        const auto entry = clients_.find(note->ticket);
        if (entry == clients_.end())
            continue;
        AsyncReadClient& client = *entry->second;
        const ReadStatusCode code = note->property.StatusCode;
        if (note->isComplete || code == ReadStatusCode::Error)
            clients_.erase(entry); // before the call: the client may go inside it
        if (note->isComplete) {
            client.AsyncReadComplete(note->property);
            continue;
        }
        client.AsyncReadProgress(note->property);
        if (code == ReadStatusCode::Redirecting && clients_.contains(note->ticket))
            worker_->Give({Order::Kind::Follow, note->ticket, {}});
    }
}

} // namespace vantro
