#include "platform/AsyncRead.h"

#include "base/Owned.h"
#include "platform/ReadQueues.h"
#include "platform/Transfer.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

namespace vantro {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::minutes kIdlePoll(1); // an order wakes the poll; this is only how long it may sleep

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
    Worker(std::function<void()> wake, const ReadLimits& limits, const std::string& userAgent,
        ProxyResolver proxies);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Interface thread.
    [[nodiscard]] bool IsUsable() const { return isUsable_; }
    void Give(ReadOrder order) { orders_->Give(std::move(order)); }
    void Release(ReadNote& note);
    [[nodiscard]] NoteQueue& Notes() { return notes_; }

private:
    using Transfers = std::map<ReadTicket, std::unique_ptr<Transfer>>;

    // Worker thread.
    void Run(const std::stop_token& stop);
    void Obey(Transfers& transfers);
    [[nodiscard]] std::unique_ptr<Transfer> Begin(ReadOrder& order);
    void EndHops();
    [[nodiscard]] int PollTime(const Transfers& transfers);

    CurlLibrary library_;
    Owned<CURLM, curl_multi_cleanup> multi_;
    // Without the means to wake it, for want of descriptors, the worker would sleep through every order.
    const bool isUsable_;
    TransferSettings settings_;
    ProxyLookup proxies_;
    const std::shared_ptr<OrderQueue> orders_; // proxy lookups may outlive us
    NoteQueue notes_;
    std::jthread thread_; // last, so it is joined before what it uses goes
};

AsyncRead::Worker::Worker(
    std::function<void()> wake, const ReadLimits& limits, const std::string& userAgent, ProxyResolver proxies)
    : multi_(curl_multi_init()),
      isUsable_(multi_ && curl_multi_wakeup(multi_.get()) == CURLM_OK),
      settings_{multi_.get(), limits, userAgent},
      proxies_(std::move(proxies)),
      orders_(std::make_shared<OrderQueue>(multi_.get())),
      notes_(std::move(wake))
{
    if (isUsable_)
        thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

AsyncRead::Worker::~Worker()
{
    thread_.request_stop();
    orders_->Close();
}

void AsyncRead::Worker::Release(ReadNote& note)
{
    if (note.isComplete)
        Give({.kind = ReadOrder::Kind::Release, .ticket = note.ticket, .content = std::move(note.property)});
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
        for (auto& [ticket, transfer] : transfers)
            transfer->EndIfLate();
        std::erase_if(
            transfers, [](const auto& t) { return t.second->Standing() == Transfer::State::Ended; });
        notes_.WakeIfDue();
        if (code == CURLM_OK)
            code = curl_multi_poll(multi_.get(), nullptr, 0, PollTime(transfers), nullptr);
        if (code != CURLM_OK) {
            for (auto& [ticket, transfer] : transfers)
                transfer->Fail(curl_multi_strerror(code));
            transfers.clear();
            orders_->Wait(stop); // or the loop would spin for as long as the fault lasts
        }
    }
}

int AsyncRead::Worker::PollTime(const Transfers& transfers)
{
    const auto now = Clock::now();
    auto end = notes_.Due().value_or(now + kIdlePoll);
    for (const auto& [ticket, transfer] : transfers)
        end = std::min(end, transfer->Deadline());
    end = std::clamp(end, now, now + kIdlePoll);
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - now).count());
}

std::unique_ptr<Transfer> AsyncRead::Worker::Begin(ReadOrder& order)
{
    const auto ask = [this, ticket = order.ticket](const std::string& origin, std::stop_token stop) {
        proxies_.Ask(origin, std::move(stop), [orders = orders_, ticket](ProxyAnswer answer) {
            orders->Give(
                {.kind = ReadOrder::Kind::UseProxies, .ticket = ticket, .proxies = std::move(answer)});
        });
    };
    return std::make_unique<Transfer>(
        settings_, std::move(order.address), std::move(order.folder),
        [this, ticket = order.ticket, flows = false](AsyncProperty&& property, bool isComplete) mutable {
            const bool isData = property.StatusCode == ReadStatusCode::DataArriving;
            notes_.Post({ticket, isComplete, std::move(property)}, isData && !std::exchange(flows, true));
        },
        proxies_.IsNeeded() ? Transfer::AskProxies(ask) : nullptr);
}

void AsyncRead::Worker::Obey(Transfers& transfers)
{
    for (ReadOrder& order : orders_->TakeAll()) {
        const auto known = transfers.find(order.ticket);
        switch (order.kind) {
        case ReadOrder::Kind::Begin: transfers.emplace(order.ticket, Begin(order)); break;
        case ReadOrder::Kind::Follow:
            if (known != transfers.end())
                known->second->Follow();
            break;
        case ReadOrder::Kind::UseProxies:
            if (known != transfers.end())
                known->second->UseProxies(std::move(order.proxies));
            break;
        case ReadOrder::Kind::Cancel:
            if (known != transfers.end())
                transfers.erase(known);
            break;
        case ReadOrder::Kind::Release: break; // goes with the order
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

AsyncRead::AsyncRead(
    std::function<void()> wake, const ReadLimits& limits, const std::string& userAgent, ProxyResolver proxies)
    : worker_(std::make_unique<Worker>(std::move(wake), limits, userAgent, std::move(proxies)))
{
}

AsyncRead::~AsyncRead() = default;

std::variant<ReadTicket, ReadRefused> AsyncRead::Begin(
    const std::string& address, AsyncReadClient& client, const std::string& folder)
{
    auto checked = CheckWebAddress(address);
    if (auto* refused = std::get_if<ReadRefused>(&checked))
        return std::move(*refused);
    if (!worker_->IsUsable())
        return ReadRefused{CURLE_FAILED_INIT, curl_easy_strerror(CURLE_FAILED_INIT)};
    const ReadTicket ticket = ++lastTicket_;
    clients_.emplace(ticket, &client);
    worker_->Give({ReadOrder::Kind::Begin, ticket, std::move(std::get<std::string>(checked)), folder});
    return ticket;
}

void AsyncRead::Cancel(ReadTicket ticket)
{
    if (clients_.erase(ticket) != 0)
        worker_->Give({ReadOrder::Kind::Cancel, ticket});
}

void AsyncRead::Deliver()
{
    NoteQueue& notes = worker_->Notes();
    for (std::size_t waiting = notes.CountWaiting(); waiting > 0; --waiting) {
        std::optional<ReadNote> note = notes.Take();
        if (!note)
            return; // a Deliver() further down the stack took the rest
        const auto entry = clients_.find(note->ticket);
        if (entry == clients_.end()) {
            worker_->Release(*note);
            continue;
        }
        AsyncReadClient& client = *entry->second;
        if (note->IsLast()) {
            clients_.erase(entry); // before the call: the client may go inside it
            notes.WakeForRest(); // before the call: the client may wait for another transfer inside it
            note->isComplete ? client.AsyncReadComplete(note->property)
                             : client.AsyncReadProgress(note->property);
            worker_->Release(*note);
            return;
        }
        client.AsyncReadProgress(note->property);
        if (note->property.StatusCode == ReadStatusCode::Redirecting && clients_.contains(note->ticket))
            worker_->Give({ReadOrder::Kind::Follow, note->ticket});
    }
}

} // namespace vantro
