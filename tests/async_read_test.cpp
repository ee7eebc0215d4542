#include "platform/AsyncRead.h"

#include "tests/support/HttpServer.h"
#include "tests/support/TestPump.h"

#include <algorithm>
#include <condition_variable>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <list>
#include <netdb.h>
#include <optional>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {
// Lookups of one reserved name stand still until the test lets them go, as with a name server that does not
// answer.
class StalledLookup {
public:
    void Enter()
    {
        std::unique_lock lock(mutex_);
        entered_ = true;
        changed_.notify_all();
        changed_.wait_for(lock, 10s, [this] { return isReleased_; });
    }
    bool WaitUntilEntered()
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 10s, [this] { return entered_; });
    }
    void Hold(bool hold)
    {
        const std::lock_guard lock(mutex_);
        isReleased_ = !hold;
        entered_ = false;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool entered_ = false;
    bool isReleased_ = true;
};
StalledLookup stalledLookup;
} // namespace

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result)
{
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!node || std::string_view(node) != "stalled.invalid")
        return real(node, service, hints, result);
    stalledLookup.Enter();
    return EAI_AGAIN;
}

namespace vantro {
namespace {
using test::HttpServer;
using test::HttpText;
using Then = HttpServer::Then;

// Keeps what it is told: one line for each notification, progress by its latest state.
struct Client : AsyncReadClient {
    std::string log;
    std::string content;
    int dataArriving = 0;
    bool isOver = false;
    std::function<void(const AsyncProperty&)> onProgress = [](const AsyncProperty&) {};

    void AsyncReadProgress(const AsyncProperty& p) override
    {
        dataArriving += p.StatusCode == ReadStatusCode::DataArriving ? 1 : 0;
        if (p.StatusCode != ReadStatusCode::DataArriving)
            log += std::to_string(static_cast<int>(p.StatusCode)) + " " + p.Status + p.Value
                + (p.StatusCode == ReadStatusCode::EndOfData ? std::to_string(p.BytesRead) + "/" : "")
                + (p.BytesMax ? std::to_string(p.BytesMax) : "") + "\n";
        isOver = p.StatusCode == ReadStatusCode::Error;
        onProgress(p);
    }
    void AsyncReadComplete(const AsyncProperty& p) override
    {
        log += "complete\n";
        content = p.Value;
        isOver = true;
    }
};

struct AsyncReadTest : ::testing::Test {
    HttpServer server;
    test::TestPump pump;
    std::optional<AsyncRead> reader{std::in_place, [this] { pump.Post([this] { reader->Deliver(); }); },
        ReadLimits{.connect = 300ms, .silence = 1s, .size = 2 << 20, .redirects = 10}, "Vantro/1.0"};
    Client client;

    ReadTicket Begin(const std::string& address)
    {
        client.isOver = false;
        return std::get<ReadTicket>(reader->Begin(address, client));
    }
    std::string Read(const std::string& address)
    {
        client.log.clear();
        (void)Begin(address);
        pump.RunUntil([this] { return client.isOver; });
        return client.log;
    }
};

TEST_F(AsyncReadTest, ReportsEveryStepInOrderAndAsksForAFreshUncompressedFile)
{
    server.Serve("/a.xml", HttpText("200 OK", "hello", "Content-Type: text/xml; charset=utf-8\r\n"));
    EXPECT_EQ(Read(server.Address("/a.xml")), "2 127.0.0.1\n13 text/xml\n4 5\n6 5/5\ncomplete\n");
    EXPECT_EQ(client.content, "hello");
    const std::string request = server.LastRequest();
    EXPECT_NE(request.find("User-Agent: Vantro/1.0\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("Cache-Control: no-cache\r\n"), std::string::npos) << request;
    EXPECT_EQ(request.find("Accept-Encoding"), std::string::npos) << request;
}

TEST_F(AsyncReadTest, TakesContentThatIsAnnouncedLooselyOrNotAtAll)
{
    const struct {
        const char *text, *steps, *content;
    } cases[] = {
        {"HTTP/1.1 200 OK\r\n\r\nuntil the end", "4 \n6 13/\n", "until the end"},
        {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nshorter announced", "4 5\n6 5/5\n", "short"},
        {"HTTP/1.1 204 No Content\r\n\r\n", "4 \n6 0/\n", ""},
        {"HTTP/1.1 100 Continue\r\nLocation: /no\r\n\r\nHTTP/1.1 200 OK\r\n\r\nafter", "4 \n6 5/\n", "after"},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nContent-Length: 9\r\n\r\n3\r\nabc\r\n0\r\nX: "
         "y\r\n\r\n",
            "4 \n6 3/\n", "abc"},
    };
    for (const auto& row : cases) {
        server.Serve("/", row.text);
        EXPECT_EQ(Read(server.Address("/")), std::string("2 127.0.0.1\n") + row.steps + "complete\n")
            << row.text;
        EXPECT_EQ(client.content, row.content);
    }
}

TEST_F(AsyncReadTest, EndsEveryBadAnswerWithASentence)
{
    const std::string head = "HTTP/1.1 200 OK\r\n";
    const struct {
        std::string text;
        Then then;
        std::string sentence;
    } cases[] = {
        {HttpText("404 Not Found", "sorry"), Then::Close, "0 404 Not Found\n"},
        {"HTTP/1.1 404 Gone \xE9\x1B\r\nContent-Length: 9\r\n\r\n", Then::Stall, "0 404 Gone ??\n"},
        {"HTTP/1.1 503\r\n\r\n", Then::Flood, "0 503 Service Unavailable\n"},
        {HttpText("304 "), Then::Close, "0 304 Not Modified\n"},
        {head + "Content-Length: 9\r\n\r\nshort", Then::Close,
            "broke off before the whole file had arrived\n"},
        {head + "Conte", Then::Close, "0 The connection broke off in the middle"},
        {"garbage", Then::Close, "0 "},
        {"", Then::Close, "0 Empty reply from server\n"},
        {"", Then::Stall, "0 The server sent almost nothing for 1 seconds\n"},
        {head + "\r\n", Then::Drip, "0 The server sent almost nothing for 1 seconds\n"},
        {head + "\r\nsome", Then::Stall, "0 The server sent almost nothing for 1 seconds\n"},
        {head + "\r\n", Then::Flood, "0 The file is larger than the 2 MiB allowed\n"},
        {HttpText("200 OK", std::string((2 << 20) + 1, 'x')), Then::Close, "larger than the 2 MiB allowed\n"},
        {head + "X: ", Then::Flood, "0 "},
        {HttpText("302 Found", "", "Location: http://\xE9\xE8\x01/\r\n"), Then::Close, "malformed address\n"},
        {HttpText("302 Found", "", "Location: file:///etc/passwd\r\n"), Then::Close,
            "3 file:///etc/passwd\n0 Redirected to file:///etc/passwd, which is neither http nor https\n"},
    };
    std::list<Client> clients;
    for (const auto& row : cases) {
        const std::string path = "/" + std::to_string(clients.size());
        server.Serve(path, row.text, row.then);
        (void)reader->Begin(server.Address(path), clients.emplace_back());
    }
    pump.RunUntil([&] { return std::ranges::all_of(clients, &Client::isOver); });
    for (const auto& row : cases) {
        const std::string log = std::exchange(clients.front().log, {});
        EXPECT_NE(log.find(row.sentence), std::string::npos) << row.text.substr(0, 80) << " gave " << log;
        EXPECT_EQ(log.find("complete"), std::string::npos) << log;
        clients.pop_front();
    }
}

TEST_F(AsyncReadTest, FollowsTenRedirectsAndNoMore)
{
    server.Serve("/", HttpText("301 Moved", "", "Location: /\r\n"));
    EXPECT_TRUE(Read(server.Address("/")).ends_with("0 Redirected more than 10 times\n")) << client.log;
    EXPECT_EQ(server.Hits("/"), 11);
}

TEST_F(AsyncReadTest, FollowsRelativeRedirectsOneByOne)
{
    server.Serve("/a/0", HttpText("302 Found", "moved", "Location: 1?q=x y\r\n"), Then::Stall);
    server.Serve("/a/1?q=x+y", HttpText("308 ", "", "location:../b\r\n"));
    server.Serve("/b", HttpText("200 OK", "there"));
    EXPECT_EQ(Read(server.Address("/a/0")),
        "2 127.0.0.1\n3 " + server.Address("/a/1?q=x+y") + "\n2 127.0.0.1\n3 " + server.Address("/b")
            + "\n2 127.0.0.1\n4 5\n6 5/5\ncomplete\n");
}

TEST_F(AsyncReadTest, SendsNothingToARedirectTargetThatTheClientDoesNotWant)
{
    server.Serve("/from", HttpText("302 Found", "", "Location: /to\r\n"));
    server.Serve("/to", HttpText("200 OK", "there"));
    server.Serve("/next", HttpText("200 OK", "next"));
    const ReadTicket unwanted = Begin(server.Address("/from"));
    client.onProgress = [&](const AsyncProperty& p) {
        if (p.StatusCode != ReadStatusCode::Redirecting)
            return;
        reader->Cancel(unwanted);
        (void)Begin(server.Address("/next"));
    };
    pump.RunUntil([this] { return client.isOver; });
    EXPECT_EQ(client.content, "next");
    EXPECT_EQ(server.Hits("/to"), 0);
}

TEST_F(AsyncReadTest, MergesProgressThatNobodyHasTakenYet)
{
    server.Serve("/", HttpText("200 OK", std::string(2 << 20, 'x')), Then::Stall);
    (void)Begin(server.Address("/"));
    const auto deadline = Clock::now() + 10s;
    while (server.Ended("/") == 0 && Clock::now() < deadline) // the client leaves when it has all
        std::this_thread::yield();
    pump.RunUntil([this] { return client.isOver; });
    EXPECT_EQ(client.dataArriving, 1);
    EXPECT_EQ(client.content.size(), 2U << 20);
}

TEST_F(AsyncReadTest, RefusesWhatIsNoWebAddress)
{
    using namespace std::string_literals;
    for (const auto& address : {""s, "www.vantro.example/a.xml"s, "ftp://vantro.example/a"s,
             "file:///etc/passwd"s, "http://a\0b/"s, "http://"s}) {
        const auto begun = reader->Begin(address, client);
        ASSERT_TRUE(std::holds_alternative<ReadRefused>(begun)) << address;
        EXPECT_NE(std::get<ReadRefused>(begun).number, 0) << address;
        EXPECT_NE(std::get<ReadRefused>(begun).description, "") << address;
    }
}

TEST_F(AsyncReadTest, AStalledNameLookupHoldsUpNeitherTheOthersNorTheEnd)
{
    stalledLookup.Hold(true);
    server.Serve("/", HttpText("200 OK", "quick"));
    EXPECT_NE(Read("http://stalled.invalid/").find("0 Resolving timed out"), std::string::npos) << client.log;
    Client other;
    (void)reader->Begin("http://stalled.invalid/", other);
    EXPECT_TRUE(stalledLookup.WaitUntilEntered());
    EXPECT_TRUE(Read(server.Address("/")).ends_with("complete\n")) << client.log;

    const auto start = Clock::now();
    reader.reset();
    EXPECT_LT(Clock::now() - start, 1s);
    stalledLookup.Hold(false);
}

} // namespace
} // namespace vantro
