#include "base/Owned.h"
#include "platform/AsyncRead.h"
#include "tests/support/HttpServer.h"
#include "tests/support/TestPump.h"

#include <algorithm>
#include <dlfcn.h>
#include <gio/gio.h>
#include <list>
#include <netdb.h>
#include <optional>
#include <semaphore>

using namespace std::literals;

// Lookups of reserved names stand still until the test lets them go, as with a name server that is silent.
static std::counting_semaphore<> lookupsStalled{0};
static std::counting_semaphore<> lookupsLetGo{0};

static void Stall()
{
    lookupsStalled.release();
    (void)lookupsLetGo.try_acquire_for(10s);
}

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result)
{
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!std::string_view(node).ends_with(".invalid"))
        return real(node, service, hints, result);
    if (std::string_view(node) == "stalled.invalid")
        Stall();
    return EAI_NONAME;
}

namespace vantro {
using test::HttpText;
using Then = test::HttpServer::Then;

struct AsyncReadTest : ::testing::Test {
    // Keeps what it is told, a line for each step, but for the progress between them.
    struct Client : AsyncReadClient {
        std::string log;
        bool isOver = false;
        std::function<void()> atEnd = [] {};

        void AsyncReadProgress(const AsyncProperty& p) override
        {
            if (p.StatusCode != ReadStatusCode::DataArriving)
                log += std::to_string(static_cast<int>(p.StatusCode)) + " " + p.Status + p.Value
                    + (p.BytesRead > 0 ? std::to_string(p.BytesRead) + " of " : "")
                    + (p.BytesMax > 0 ? std::to_string(p.BytesMax) : "") + "\n";
            isOver = p.StatusCode == ReadStatusCode::Error;
            EXPECT_TRUE(p.BytesMax == 0 || p.BytesRead <= p.BytesMax);
        }
        void AsyncReadComplete(const AsyncProperty& p) override
        {
            log += "complete " + p.Value.substr(0, 20) + "\n";
            isOver = true;
            atEnd();
        }
    };

    test::HttpServer server;
    test::TestPump pump;
    std::list<Client> clients;
    const std::function<void()> wake = [this] { pump.Post([this] { reader->Deliver(); }); };
    ReadLimits limits{.connect = 300ms, .silence = 2s, .size = 2 << 20};
    std::optional<AsyncRead> reader{std::in_place, wake, limits, "Vantro/1.0"};

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
    server.Serve("/a/0", HttpText("302 Found", "moved", "Set-Cookie: a=b; Path=/\r\nLocation: 1?q=x y\r\n"),
        Then::Stall);
    server.Serve("/a/1?q=x+y", HttpText("308 ", "", "location:../b\r\n"));
    server.Serve("/b", HttpText("200 OK", "there", "Content-Type: text/xml; charset=utf-8\r\n"));
    EXPECT_EQ(Read(server.Address("/a/0")),
        "2 127.0.0.1\n3 " + server.Address("/a/1?q=x+y") + "\n2 127.0.0.1\n3 " + server.Address("/b")
            + "\n2 127.0.0.1\n13 text/xml\n4 5\n6 5 of 5\ncomplete there\n");
    for (const char* line :
        {"User-Agent: Vantro/1.0", "Cache-Control: no-cache", "Accept-Encoding: identity", "Cookie: a=b"})
        EXPECT_NE(server.LastRequest().find(line + "\r\n"s), std::string::npos) << line;
    Read(server.Address("/b"));
    EXPECT_EQ(server.LastRequest().find("Cookie"), std::string::npos) << "kept for longer than its transfer";
}

TEST_F(AsyncReadTest, EveryEndIsAnEventOfItsOwnEvenInsideAnother)
{
    server.Serve("/", HttpText("200 OK", "x"), Then::Stall);
    const auto over = [this] { return std::ranges::count_if(clients, &Client::isOver); };
    for (int i = 0; i < 5; ++i)
        Begin(server.Address("/"));
    while (server.Ended("/") < 5)
        std::this_thread::yield();
    const auto awaitEvent = [&](int ends) {
        const auto before = over();
        pump.RunUntil([&] { return over() > before; });
        EXPECT_EQ(over(), before + ends);
    };
    for (Client& client : clients)
        client.atEnd = [&] { over() == 2 ? awaitEvent(1) : void(); };
    for (const int ends : {1, 2, 1, 1})
        awaitEvent(ends);
}

TEST_F(AsyncReadTest, AsksForTheProxiesOfEveryHopAndTriesThemInOrder)
{
    const char* direct[] = {"127.0.0.1", nullptr};
    const Owned<GProxyResolver, g_object_unref> settings(
        g_simple_proxy_resolver_new(server.Address("").c_str(), const_cast<char**>(direct)));
    ProxyAnswer answer{.proxies = {"http://127.0.0.1:1", server.Address("")}};
    reader.emplace(wake, limits, "", [&](const std::string& origin, const std::stop_token& stop) {
        return origin == "http://b.invalid:81/" ? answer : AskForProxies(settings.get(), origin, stop);
    });
    server.Serve("http://a.invalid/x", HttpText("302 ", "", "Location: http://b.invalid:81/\r\n"));
    server.Serve("http://b.invalid:81/", HttpText("200 OK", "proxied"));
    EXPECT_TRUE(Read("http://u:p@a.invalid/x").ends_with("complete proxied\n")) << clients.back().log;
    answer = {.failure = "No settings"};
    EXPECT_EQ(Read("http://b.invalid:81/"), "0 No settings\n");
    server.Serve("/", HttpText("200 OK", "direct"));
    EXPECT_TRUE(Read(server.Address("/")).ends_with("complete direct\n"));
    answer = {}; // knows nothing
    setenv("http_proxy", server.Address("").c_str(), 1);
    unsetenv("no_proxy");
    EXPECT_TRUE(Read("http://b.invalid:81/").ends_with("complete proxied\n")) << clients.back().log;
    unsetenv("http_proxy");
    setenv("no_proxy", "*", 1);
}

TEST_F(AsyncReadTest, AStalledLookupOrServerHoldsUpNeitherTheOthersNorTheEnd)
{
    reader.emplace(wake, limits, "", [](const std::string& origin, const std::stop_token&) {
        if (origin == "http://asleep.invalid/")
            Stall();
        return ProxyAnswer();
    });
    server.Serve("/", HttpText("200 OK", "quick"));
    EXPECT_EQ(Read("http://127.0.0.1:1/"), "2 127.0.0.1\n0 No connection to 127.0.0.1 could be made\n");
    EXPECT_EQ(Read("http://none.invalid/"), "0 The server none.invalid could not be found\n");
    EXPECT_EQ(Read("http://stalled.invalid/"), "0 stalled.invalid did not answer in time\n");
    EXPECT_TRUE(Read("http://asleep.invalid/").starts_with("0 The desktop did not say in time"));
    Begin("http://stalled.invalid/");
    Begin("http://asleep.invalid/");
    server.Serve("/silent", "HTTP/1.1 200 OK\r\n", Then::Stall);
    Begin(server.Address("/silent"));
    for (int stalls = 0; stalls < 4; ++stalls)
        EXPECT_TRUE(lookupsStalled.try_acquire_for(10s));
    EXPECT_TRUE(Read(server.Address("/")).ends_with("complete quick\n"));
    while (server.Hits("/silent") == 0)
        std::this_thread::yield();

    const auto start = std::chrono::steady_clock::now();
    reader.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    lookupsLetGo.release(4);
}

} // namespace vantro
