#include "downloader/DownloadEngine.h"
#include "feeds/ItemTag.h"
#include "tests/support/FeedFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/support/TestPump.h"

#include <algorithm>
#include <list>
#include <sstream>

using namespace std::literals;

namespace vantro {
using test::HttpText;
using Then = test::HttpServer::Then;

// A server that does one thing to whoever asks, and what a download from it tells its host.
struct Row {
    std::string events; // without the repeats of "Progress"; what is not "Error" ends with a file
    std::string text;
    Then then = Then::Close;
    std::string again = "x";
    enum class Way { Plain, FailsOnRedirect, Secure, Proxied } way = Way::Plain;
};
using Way = Row::Way;

const std::string ok = "HTTP/1.1 200 OK\r\n";
const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
const std::string full(1 << 20, 'x');
const std::string wide = "X: " + std::string(60 << 10, 'x') + "\r\n";
const std::string bomb // 2 GiB of zeros, compressed three times
    = "\37\213\10\0\0\0\0\0\2\3\223\357\346`\0\1&\346\267w\26\346MN\224h{X_\242\310\233\224\314\304z\322"
      "\242g\246\352\334\203\23\25f\250\3110<\24\210\330\264\300\300\324\272\357\254\202`\361\344\35y\353"
      "\330\35\4DCOs\275M\374\363\275t\245\377\376O'\247\377\376q\274\344F\225\331\317\342\335\333\277"
      "\377/4\254\337\365\317\272\326\20d\266r\371\307\2\313\233}\214\207o\237}t\267\275\30(\222\360\306N"
      "^\356\315{\267\306\343\376\353\317\317a\6\212\270\275\377\375\362\344\351\273\374\215W\267\353\377"
      ">\307\10\24Y\374=k\357\234\267\333\32v\237=\277\270\377\35X\244\134_\2d\236f\23\210wA\11\314\321\5"
      "s\4\224\2218\2432\2432\2432\2432\2432\2432\2432\2432\2432\2432\2432\2432\203E&\374\365\323\32k\326"
      "3u\371b\347\367\363\345\232\37\236}u\375\367\333\361B\377\31\336\207\271\371\26\334\224g\0\0\262Z$"
      "\235\225\15\0\0"s;

std::string Coded(const std::string& coding, const std::string& body)
{
    return HttpText("200 OK", body, "Content-Encoding: " + coding + "\r\n");
}
std::string To(const std::string& target)
{
    return HttpText("302 Found", "", "Location: " + target + "\r\n");
}
std::string Error(const std::string& sentence)
{
    return "Error 99 " + sentence + " | Complete 0";
}

const std::string begins = "Size 0 | Begin | ";
const std::string flows = begins + "Progress | ";
const std::string silent = Error("The server sent almost nothing for 4 seconds");
const std::string late = Error("The file had not arrived after 8 seconds");
const std::string large = Error("The file is larger than the 1 MiB allowed");
const std::string nothing = Error("127.0.0.1 closed the connection without an answer");
const std::string brokeOff = Error("The connection to 127.0.0.1 broke off");
const std::string inAnswer = Error("The connection broke off in the middle of the answer");
const std::string inFile = Error("The connection broke off before the whole file had arrived");
const std::string endless = Error("The header of the server's answer is too long");
const std::string noHttp = Error("The answer of 127.0.0.1 is not HTTP");
const std::string insecure = Error("No secure connection to 127.0.0.1 could be made");

const std::string malformed = Error("The server redirected to a malformed address");
const std::string noTunnel = Error("The proxy server made no connection to localhost");
std::string Elsewhere(const std::string& target, const std::string& told)
{
    return "Redirect " + target + " | "
        + Error("Redirected to " + told + ", which is neither http nor https");
}
std::string Unreadable(const std::string& coding)
{
    return Error("The server sent the file in a coding that cannot be read" + coding);
}

const Row rows[] = {
    // Breaking off.
    {nothing, ""},
    {brokeOff, "", Then::Reset},
    {nothing, "HTTP/1.1 200 O"},
    {inAnswer, ok + "Conte"},
    {inAnswer, "HTTP/1.1 100 Continue\r\n\r\n"},
    {"Size 9 | Begin | Progress | " + inFile, ok + "Content-Length: 9\r\n\r\nshort"},
    {"Size 9 | Begin | Progress | " + brokeOff, ok + "Content-Length: 9\r\n\r\nshort", Then::Reset},
    {flows + brokeOff, ok + "\r\nsizeless", Then::Reset},
    // Silence, and a trickle.
    {silent, "", Then::Stall},
    {begins + silent, ok + "\r\n", Then::Stall},
    {flows + silent, ok + "\r\n", Then::Drip},
    {flows + late, ok + "\r\n", Then::Patter},
    {flows + late, chunked, Then::Patter, "1\r\nx\r\n"},
    {"Size 5 | Begin | Progress | Complete 5", ok + "Content-Length: 5\r\n\r\nwhole", Then::Stall},
    // Without end.
    {flows + large, chunked, Then::Flood, "1\r\nx\r\n"},
    {endless, ok + "X: ", Then::Flood},
    {endless, "", Then::Flood, "HTTP/1.1 103 Early Hints\r\nLink: <a>\r\n\r\n"},
    {endless, "", Then::Flood, "HTTP/1.1 100 \r\n\r\n"},
    {begins + silent, chunked + "5;", Then::Flood},
    {begins + endless, chunked + "0\r\n", Then::Flood, "A: b\r\n"},
    {endless, ok + "X: " + std::string(200 << 10, 'x'), Then::Stall},
    // Lengths.
    {"Size 5 | Begin | Progress | Complete 5", ok + "Content-Length: 5\r\n\r\nshorter announced",
        Then::Stall},
    {large, ok + "Content-Length: 1048577\r\n\r\n", Then::Stall},
    {"Size 1048576 | Begin | Progress | Complete 1048576", HttpText("200 OK", full), Then::Stall},
    {flows + "Complete 5", ok + "Content-Length: 99999999999999999999\r\n\r\nhello"},
    {"Size 7 | Begin | Progress | Complete 7",
        ok + "Content-Length: 5\r\nContent-Length: 7\r\n\r\nhello, you"},
    {flows + "Complete 5",
        ok + "Content-Length: 7\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n"},
    {begins + noHttp, chunked + "FFFFFFFFFFFFFFFFF\r\nhello"},
    {flows + noHttp, chunked + "5\r\nhello, and no end of the line"},
    {flows + "Error 3 Zero bytes retrieved | Complete 0", chunked + "0\r\n\r\n"},
    // Heads.
    {noHttp, std::string(5000, '\0')},
    {noHttp, "HTTP/9.9 200 OK\r\n\r\nhello"},
    {Error("999 What"), "HTTP/1.1 999 What\r\n\r\nhello"},
    {noHttp, ok + "no colon\r\n: no name\r\n\r\nhello"},
    {noHttp, ok + "A: b\0c\r\n\r\nhello"s},
    {flows + "Error 3 Zero bytes retrieved | Complete 0", "HTTP/1.1 204 None\r\n\r\nhello"},
    {Error("101 Switching Protocols"), "HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\nhello"},
    {Error("401 Unauthorized"), "HTTP/1.1 401 \r\nWWW-Authenticate: Negotiate\r\n\r\n", Then::Stall},
    {Error("404 Gone ??"), "HTTP/1.1 404 Gone \xE9\x1B\r\nContent-Length: 9\r\n\r\n", Then::Stall},
    {Error("410 " + full.substr(0, 200)), "HTTP/1.1 410 " + full.substr(0, 300) + "\r\n\r\n"},
    {flows + "Complete 1", "HTTP/1.1 100 Continue\r\nLocation: /no\r\n\r\n" + chunked + "1\r\nx\r\n0\r\n\r\n",
        Then::Stall},
    // Redirects; "/f" is the same again.
    {"Error 2 Redirected to /f | Complete 0", To("/f"), Then::Stall, "", Way::FailsOnRedirect},
    {"Redirect /f | Redirect /f | Redirect /f | " + Error("Redirected more than 3 times"),
        HttpText("302 ", "", wide + wide + "Location: /f\r\n")},
    {Elsewhere("ftp://a/b", "ftp://a/b"), To("ftp://a/b")},
    {Elsewhere("file:///etc/passwd", "file:///etc/passwd"), To("file:///etc/passwd")},
    {Elsewhere("ftp://a/" + full.substr(0, 7000), "ftp://a/" + full.substr(0, 192) + "..."),
        To("ftp://a/" + full.substr(0, 7000))},
    {malformed, To("http://a/" + full.substr(0, 8200))},
    {"Redirect http://" + full.substr(0, 300) + ".invalid/ | "
            + Error("The server " + full.substr(0, 200) + "... could not be found"),
        To("http://" + full.substr(0, 300) + ".invalid/")},
    {Error("300 Multiple Choices"), HttpText("300 ", "hello")},
    // Codings.
    {flows + "Complete 5",
        Coded("gzip", "\x1f\x8b\x08\0\0\0\0\0\x02\x03\xcb\x48\xcd\xc9\xc9\x07\0\x86\xa6\x10\x36\x05\0\0\0"s)},
    {flows + "Complete 87", Coded("gzip", bomb.substr(0, 100))},
    {flows + large, Coded("gzip, gzip, gzip", bomb)},
    {Unreadable(""), Coded("gzip, gzip, gzip, gzip, gzip, gzip", bomb)},
    {begins + Unreadable(""), ok + "Transfer-Encoding: gzip, chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n"},
    {"Redirect /f%ff | " + nothing, To("/f\xff")},
    // TLS, and proxies before it.
    {insecure, "", Then::Close, "", Way::Secure},
    {Error("127.0.0.1 did not answer in time"), "", Then::Stall, "", Way::Secure},
    {insecure, HttpText("200 OK", "hello"), Then::Close, "", Way::Secure},
    {insecure, "\x15\x03\x01\0\2\2\x28"s, Then::Close, "", Way::Secure},
    {insecure, "\x16\x03\x03", Then::Flood, "\xff", Way::Secure},
    {Error("localhost did not answer in time"), "", Then::Stall, "", Way::Proxied},
    {noTunnel, "SSH-2.0\r\n\r\n", Then::Close, "", Way::Proxied},
    {noTunnel, "HTTP/1.1 407 No\r\n\r\n", Then::Close, "", Way::Proxied},
    {noTunnel, ok + "X: ", Then::Flood, "x", Way::Proxied},
    {Error("No secure connection to localhost could be made"), ok + "\r\n", Then::Flood, "x", Way::Proxied},
};

// A row, the server that does it, and the control that asks it.
struct Trial {
    const Row& row;
    test::HttpServer server{};
    std::string address{};
    std::string log{};
    std::int32_t bytes = 0;
    DownloadEngine engine;

    auto Logged(const char* event)
    {
        return [this, event](const auto&... values) {
            std::ostringstream line;
            line << event;
            ((line << " " << values), ...);
            log += (log.empty() ? "" : " | ") + line.str();
        };
    }
    Trial(const Row& given, const std::string& path, const std::string& folder, AsyncRead& reader,
        EventPump& pump)
        : row(given), address(server.Address(path)), engine(reader, pump)
    {
        const std::string secure = "https" + address.substr(4),
                          named = ReplaceAll(secure, "127.0.0.1", "localhost");
        const std::string tunnel = named.substr(8, named.size() - 8 - path.size());
        engine.SetFileURL(row.way == Way::Secure ? secure : row.way == Way::Proxied ? named : address);
        server.Serve(row.way == Way::Secure ? ""
                : row.way == Way::Proxied   ? tunnel
                                            : path,
            ReplaceAll(row.text, "/f", path), row.then, row.again);
        engine.SetSaveFilePath(folder);
        engine.SetFailOnRedirect(row.way == Way::FailsOnRedirect);
        engine.SetRenameOnRedirect(false);
        engine.Events = {[this](float, std::int32_t read, std::int32_t total) { Progressed(read, total); },
            Logged("Canceled"), Logged("Error"), Logged("Complete"), Logged("Connected"), Logged("Redirect"),
            Logged("Cached"), Logged("Type"), Logged("Size"), Logged("Begin")};
    }
    void Progressed(std::int32_t read, std::int32_t total)
    {
        EXPECT_TRUE(read >= bytes && (total == 0 || read <= total)) << row.events;
        bytes = read;
        if (!log.ends_with("Progress"))
            log += " | Progress";
    }
    [[nodiscard]] std::string Told() const
    {
        return ReplaceAll(ReplaceAll(log, address, "/f"), "Connected 127.0.0.1 | ", "");
    }
};

TEST(HostileServer, EveryMisbehaviourEndsInTheEventsThatTellIt)
{
    const TemporaryFolder folder;
    test::TestPump pump;
    const ReadLimits limits{.connect = 6s, .silence = 4s, .total = 8s, .size = 1 << 20, .redirects = 3};
    std::optional<AsyncRead> direct(
        std::in_place, [&] { pump.Post([&] { direct->Deliver(); }); }, limits);
    std::optional<AsyncRead> proxied(
        std::in_place, [&] { pump.Post([&] { proxied->Deliver(); }); }, limits, "",
        [](const std::string& origin, const std::stop_token&) {
            return ProxyAnswer{.proxies = {ReplaceAll("http" + origin.substr(5), "localhost", "127.0.0.1")}};
        });
    std::list<Trial> trials;
    for (const Row& row : rows)
        EXPECT_TRUE(trials
                        .emplace_back(row, "/" + std::to_string(trials.size()), folder.Path(),
                            row.way == Way::Proxied ? *proxied : *direct, pump)
                        .engine.BeginDownload());
    pump.RunUntil([&] {
        return std::ranges::none_of(trials, [](const Trial& trial) { return trial.engine.Downloading(); });
    });
    for (const Trial& trial : trials)
        EXPECT_EQ(trial.Told(), trial.row.events) << trial.row.text.substr(0, 100);
    const auto saved = std::ranges::count_if(trials, [](const Trial& trial) { return trial.engine.Saved(); });
    trials.clear();
    direct.reset();
    proxied.reset();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), saved);
}

} // namespace vantro
