// Serves the sample feeds on this machine, for the demo and for tests: `feedserver --help` tells how.

#include "SampleFeeds.h"
#include "feeds/Sites.h"
#include "platform/Files.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <httplib.h>
#include <iostream>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vantro {

namespace {

constexpr const char* kAddress = "127.0.0.1";
constexpr std::int64_t kLongestPace = 1'000'000;

struct Options {
    int port = 0;
    std::string portFile;
    std::string feeds = "tools/feeds";
    std::string state;
    Pace pace;
    std::int64_t rate = 0; // bytes a second; 0 as fast as it goes
    bool sites = false;
    bool help = false;
};

std::string Usage()
{
    const Options options; // as they are when nothing is said
    return std::string("Usage: feedserver [--port N] [--port-file FILE] [--feeds DIR] [--state FILE]\n"
                       "                  [--every SECONDS | --every-requests N]\n"
                       "       feedserver --sites\n"
                       "\n"
                       "Serves a sample feed for each site, and the pages and pictures they link to, on ")
        + kAddress
        + ".\n"
          "\n"
          "  --port N            listen on port N; 0, which is the default, takes any free one\n"
          "  --port-file FILE    write the port's number into FILE; FILE is removed at the end\n"
          "  --feeds DIR         where the sample feeds are ("
        + options.feeds
        + ")\n"
          "  --state FILE        keep in FILE how many items have appeared, and go on from there\n"
          "  --every SECONDS     a further item appears in each feed after so many seconds\n"
          "  --every-requests N  a further item appears with every Nth request of a feed ("
        + std::to_string(options.pace.requests)
        + ")\n"
          "  --rate BYTES        send feeds no faster than so many bytes a second\n"
          "  --sites             print the key and the feed's path of each site, and serve nothing\n"
          "  --help              show this text\n";
}

std::int64_t ReadNumber(std::string_view name, std::string_view text, std::int64_t least, std::int64_t most)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
        throw std::invalid_argument(std::string(name) + " takes a number from " + std::to_string(least)
            + " to " + std::to_string(most));
    return number;
}

// Throws std::invalid_argument with a sentence for the user.
Options ReadOptions(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (name == "--help" || name == "--sites") {
            (name == "--help" ? options.help : options.sites) = true;
            return options;
        }
        if (i + 1 == argc)
            throw std::invalid_argument(std::string(name) + " is unknown or lacks its value");
        const std::string_view value = argv[++i];
        if (name == "--port")
            options.port = static_cast<int>(ReadNumber(name, value, 0, 65535));
        else if (name == "--port-file")
            options.portFile = value;
        else if (name == "--feeds")
            options.feeds = value;
        else if (name == "--state")
            options.state = value;
        else if (name == "--every")
            options.pace.time = std::chrono::seconds(ReadNumber(name, value, 1, kLongestPace));
        else if (name == "--every-requests")
            options.pace = {ReadNumber(name, value, 1, kLongestPace), std::chrono::seconds(0)};
        else if (name == "--rate")
            options.rate = ReadNumber(name, value, 1, kLongestPace);
        else
            throw std::invalid_argument(std::string(name) + " is unknown");
    }
    return options;
}

// Sends the body in twenty pieces a second.
void SendSlowly(httplib::Response& response, const SampleAnswer& answer, std::int64_t rate)
{
    const auto piece = static_cast<std::size_t>(std::max<std::int64_t>(1, rate / 20));
    response.set_content_provider(answer.body.size(), answer.contentType,
        [body = answer.body, piece](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            return sink.write(body.data() + offset, std::min(piece, length));
        });
}

void AddRoutes(httplib::Server& server, SampleFeeds& feeds, const std::string& base,
    const std::string& pictures, std::int64_t rate)
{
    for (const Site* site : Sites()) {
        const std::string path(site->feedPath);
        server.Get(path, [&feeds, base, path, rate](const httplib::Request&, httplib::Response& response) {
            const SampleAnswer answer = feeds.TakeFeed(path, base, std::chrono::steady_clock::now());
            response.set_header("Cache-Control", "no-store");
            if (rate > 0)
                SendSlowly(response, answer, rate);
            else
                response.set_content(answer.body, answer.contentType);
        });
    }
    server.Get(
        "/(nfo|news|home)/.+", [&feeds, base](const httplib::Request& request, httplib::Response& response) {
            if (const auto page = feeds.FindPage(request.path, base))
                response.set_content(page->body, page->contentType);
            else
                response.status = 404;
        });
    if (!server.set_mount_point("/pictures", pictures))
        throw std::runtime_error("Cannot find the folder " + pictures);
}

void Configure(httplib::Server& server)
{
    // Without these an idle connection would hold up the end of the server for seconds.
    server.set_keep_alive_max_count(1);
    server.set_keep_alive_timeout(1);
    // The library's own choice lets a second server share the port, and each would get some of the requests.
    server.set_socket_options([](socket_t socket) {
        const int on = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
}

int Bind(httplib::Server& server, int port)
{
    const int bound = port == 0               ? server.bind_to_any_port(kAddress)
        : server.bind_to_port(kAddress, port) ? port
                                              : -1;
    if (bound <= 0)
        throw std::runtime_error(std::string("Cannot listen on ") + kAddress + ":" + std::to_string(port));
    return bound;
}

// Returns once a signal has asked the server to end and it has ended. False if it could not serve.
bool ServeUntilSignalled(httplib::Server& server, const sigset_t& endSignals)
{
    std::atomic<bool> served = true;
    std::thread listener([&server, &served] {
        served = server.listen_after_bind();
        kill(getpid(), SIGTERM); // wakes the wait below if serving ended by itself
    });
    int received = 0;
    sigwait(&endSignals, &received);
    // A signal may come before the listener has begun, when stop() would still do nothing.
    while (served && !server.is_running())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    server.stop();
    listener.join();
    return served;
}

void PrintSites()
{
    for (const Site* site : Sites())
        std::cout << site->identifier << " " << site->feedPath << "\n";
}

int Run(const Options& options)
{
    // Every thread inherits this, so that the signals wait for sigwait.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGTERM);
    sigaddset(&endSignals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

    SampleFeeds feeds(options.feeds, options.pace, options.state, std::chrono::steady_clock::now());
    httplib::Server server;
    Configure(server);
    const int port = Bind(server, options.port);
    const std::string base = std::string("http://") + kAddress + ":" + std::to_string(port);
    AddRoutes(server, feeds, base, options.feeds + "/pictures", options.rate);
    if (!options.portFile.empty() && ReplaceFile(options.portFile, std::to_string(port) + "\n"))
        throw std::runtime_error("Cannot write " + options.portFile);
    std::cout << "Serving on " << base << std::endl;

    const bool served = ServeUntilSignalled(server, endSignals);
    if (!options.portFile.empty())
        unlink(options.portFile.c_str());
    return served ? 0 : 1;
}

} // namespace

} // namespace vantro

int main(int argc, char** argv)
{
    try {
        const vantro::Options options = vantro::ReadOptions(argc, argv);
        if (!options.help && !options.sites)
            return vantro::Run(options);
        if (options.help)
            std::cout << vantro::Usage();
        else
            vantro::PrintSites();
        return 0;
    } catch (const std::invalid_argument& wrong) {
        std::cerr << "feedserver: " << wrong.what() << "\n\n" << vantro::Usage();
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "feedserver: " << error.what() << "\n";
        return 1;
    }
}
