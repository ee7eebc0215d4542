#include "platform/AsyncRead.h"

#include "tests/support/HttpServer.h"
#include "tests/support/TestPump.h"

#include <dlfcn.h>
#include <list>
#include <netdb.h>
#include <optional>
#include <semaphore>

using namespace std::chrono_literals;

// Lookups of one reserved name stand still until the test lets them go, as with a name server that is silent.
static std::counting_semaphore<> lookupsStalled{0};
static std::counting_semaphore<> lookupsLetGo{0};

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result)
{
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!node || std::string_view(node) != "stalled.invalid")
        return real(node, service, hints, result);
    lookupsStalled.release();
    (void)lookupsLetGo.try_acquire_for(10s);
    return EAI_AGAIN;
}

namespace vantro {
namespace {
using test::HttpText;
using Then = test::HttpServer::Then;

// Keeps what it is told: a line for each step, a mere count of the progress between them.
struct Client : AsyncReadClient {
    std::string log;
    int progress = 0;
    bool isOver = false;

    void AsyncReadProgress(const AsyncProperty& p) override
    {
        if (p.StatusCode == ReadStatusCode::DataArriving)
            ++progress;
        else
            log += std::to_string(static_cast<int>(p.StatusCode)) + " " + p.Status + p.Value
                + (p.BytesRead > 0 ? std::to_string(p.BytesRead) + " of " : "")
                + (p.BytesMax > 0 ? std::to_string(p.BytesMax) : "") + "\n";
        isOver = p.StatusCode == ReadStatusCode::Error;
    }
    void AsyncReadComplete(const AsyncProperty& p) override
    {
        log += "complete " + p.Value.substr(0, 20) + "\n";
        isOver = true;
    }
};

struct AsyncReadTest : ::testing::Test {
    test::HttpServer server;
    test::TestPump pump;
    std::list<Client> clients;
    std::optional<AsyncRead> reader{std::in_place, [this] { pump.Post([this] { reader->Deliver(); }); },
        ReadLimits{.connect = 300ms, .silence = 2s, .size = 2 << 20, .redirects = 10}, "Vantro/1.0"};

    Client& Begin(const std::string& address)
    {
        Client& client = clients.emplace_back();
        EXPECT_TRUE(std::holds_alternative<ReadTicket>(reader->Begin(address, client)));
        return client;
    }
    std::string Read(const std::string& address)
    {
        const Client& client = Begin(address);
        pump.RunUntil([&] { return client.isOver; });
        return client.log;
    }
};

TEST_F(AsyncReadTest, AsksForAFreshUncompressedFileAndReportsEveryStepInOrder)
{
    server.Serve("/a/0", HttpText("302 Found", "moved", "Location: 1?q=x y\r\n"), Then::Stall);
    server.Serve("/a/1?q=x+y", HttpText("308 ", "", "location:../b\r\n"));
    server.Serve("/b", HttpText("200 OK", "there", "Content-Type: text/xml; charset=utf-8\r\n"));
    EXPECT_EQ(Read(server.Address("/a/0")),
        "2 127.0.0.1\n3 " + server.Address("/a/1?q=x+y") + "\n2 127.0.0.1\n3 " + server.Address("/b")
            + "\n2 127.0.0.1\n13 text/xml\n4 5\n6 5 of 5\ncomplete there\n");
    const std::string request = server.LastRequest();
    EXPECT_NE(request.find("User-Agent: Vantro/1.0\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("Cache-Control: no-cache\r\n"), std::string::npos) << request;
    EXPECT_EQ(request.find("Accept-Encoding"), std::string::npos) << request;
}

TEST_F(AsyncReadTest, EndsEveryAnswerWithItsContentOrASentence)
{
    const std::string ok = "HTTP/1.1 200 OK\r\n";
    const struct {
        std::string text;
        Then then;
        std::string end;
    } cases[] = {
        {ok + "\r\nuntil the end", Then::Close, "4 \n6 13 of \ncomplete until the end\n"},
        {ok + "Content-Length: 5\r\n\r\nshorter announced", Then::Stall, "4 5\n6 5 of 5\ncomplete short\n"},
        {"HTTP/1.1 100 Continue\r\nLocation: /no\r\n\r\n" + ok + "\r\nx", Then::Close,
            "6 1 of \ncomplete x\n"},
        {ok + "Transfer-Encoding: chunked\r\n\r\n1\r\nx\r\n0\r\n\r\n", Then::Stall, "6 1 of \ncomplete x\n"},
        {"HTTP/1.1 404 Gone \xE9\x1B\r\nContent-Length: 9\r\n\r\n", Then::Stall, "0 404 Gone ??\n"},
        {ok + "Content-Length: 9\r\n\r\nshort", Then::Close, "off before the whole file had arrived\n"},
        {ok + "Conte", Then::Close, "0 The connection broke off in the middle of the answer\n"},
        {"", Then::Stall, "0 The server sent almost nothing for 2 seconds\n"},
        {ok + "\r\n", Then::Drip, "0 The server sent almost nothing for 2 seconds\n"},
        {ok + "\r\n", Then::Flood, "0 The file is larger than the 2 MiB allowed\n"},
        {HttpText("302 ", "", "Location: file:///etc/passwd\r\n"), Then::Close, "neither http nor https\n"},
        {HttpText("302 ", "", "Location: /11\r\n"), Then::Close, "0 Redirected more than 10 times\n"},
    };
    for (const auto& row : cases) {
        const std::string path = "/" + std::to_string(clients.size());
        server.Serve(path, row.text, row.then);
        Begin(server.Address(path));
    }
    pump.RunUntil([this] { return std::ranges::all_of(clients, &Client::isOver); });
    for (const auto& row : cases) {
        EXPECT_TRUE(clients.front().log.ends_with(row.end)) << row.end << "not in " << clients.front().log;
        clients.pop_front();
    }
    EXPECT_EQ(server.Hits("/11"), 11);
}

TEST_F(AsyncReadTest, MergesProgressThatNobodyHasTakenYet)
{
    server.Serve("/", HttpText("200 OK", std::string(2 << 20, 'x')), Then::Stall);
    const Client& client = Begin(server.Address("/"));
    while (server.Ended("/") == 0) // the reader leaves when it has all
        std::this_thread::yield();
    pump.RunUntil([&] { return client.isOver; });
    EXPECT_EQ(client.progress, 1);
}

TEST_F(AsyncReadTest, AStalledNameLookupHoldsUpNeitherTheOthersNorTheEnd)
{
    server.Serve("/", HttpText("200 OK", "quick"));
    EXPECT_NE(Read("http://stalled.invalid/").find("0 Resolving timed out"), std::string::npos);
    Begin("http://stalled.invalid/");
    EXPECT_TRUE(lookupsStalled.try_acquire_for(10s) && lookupsStalled.try_acquire_for(10s));
    EXPECT_TRUE(Read(server.Address("/")).ends_with("complete quick\n"));

    const auto start = std::chrono::steady_clock::now();
    reader.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
    lookupsLetGo.release(2);
}

} // namespace
} // namespace vantro
