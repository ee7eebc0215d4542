#include "tests/support/HttpServer.h"

#include <arpa/inet.h>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace vantro::test {

namespace {

// The tests speak to this machine only, whatever proxy its user has set in the environment or the desktop.
// Before any thread reads the environment.
[[maybe_unused]] const int kNoProxy
    = setenv("no_proxy", "*", 1) + setenv("GIO_USE_PROXY_RESOLVER", "dummy", 1);

bool Send(int socket, std::string_view data)
{
    return send(socket, data.data(), data.size(), MSG_NOSIGNAL) == std::ssize(data);
}

// False when the other side has gone first.
bool Wait(int socket, int milliseconds)
{
    pollfd waiting{socket, POLLIN | POLLRDHUP, 0};
    return poll(&waiting, 1, milliseconds) == 0;
}

std::string ReceiveHead(int socket)
{
    constexpr char kTlsHandshake = 0x16;
    std::string head;
    for (char next = 0; !head.ends_with("\r\n\r\n"); head += next) {
        if (recv(socket, &next, 1, 0) != 1)
            return {};
        if (next == kTlsHandshake) {
            std::array<char, 4096> rest{};
            (void)recv(socket, rest.data(), rest.size(), 0);
            return {};
        }
    }
    return head;
}

void Reset(int socket)
{
    const linger atOnce{1, 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

// Takes the socket over. The work ends when it is done or the thread object goes.
std::jthread WorkOn(int socket, std::function<void()> work)
{
    return std::jthread([socket, work = std::move(work)](const std::stop_token& stop) {
        {
            const std::stop_callback end(stop, [socket] { shutdown(socket, SHUT_RDWR); });
            work();
        }
        close(socket);
    });
}

} // namespace

HttpServer::HttpServer()
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, any, size) != 0 || listen(listener, 64) != 0 || getsockname(listener, any, &size) != 0)
        throw std::runtime_error("no listening socket");
    port_ = ntohs(address.sin_port);
    accepting_ = WorkOn(listener, [this, listener] { Accept(listener); });
}

void HttpServer::Serve(const std::string& path, std::string text, Then then, std::string again)
{
    const std::lock_guard lock(mutex_);
    answers_[path] = {std::make_shared<const std::string>(std::move(text)), then, std::move(again)};
}

std::string HttpServer::Address(const std::string& path) const
{
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

std::string HttpServer::LastRequest()
{
    const std::lock_guard lock(mutex_);
    return lastRequest_;
}

std::string HttpServer::Requests()
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

HttpServer::Answer HttpServer::Find(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    return answers_[path];
}

void HttpServer::Accept(int listener)
{
    for (int socket = 0; (socket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;)
        handlers_.push_back(WorkOn(socket, [this, socket] { Handle(socket); }));
}

void HttpServer::Handle(int socket)
{
    const std::string head = ReceiveHead(socket);
    const std::size_t begin = head.find(' ') + 1; // of the path; 0 without a head
    const std::string path = head.substr(begin, head.find(' ', begin) - begin);
    std::unique_lock lock(mutex_);
    lastRequest_ = head;
    requests_ += head;
    ++answers_[path].hits;
    const auto [text, then, again, hits, ended] = answers_[path];
    lock.unlock();
    if (then == Then::Reset)
        Reset(socket);
    if ((!text || Send(socket, *text)) && then > Then::Close) {
        std::string block = again;
        while (then == Then::Flood && block.size() < 32UL * 1024)
            block += block;
        while (Wait(socket, static_cast<int>(then)) && Send(socket, block)) { }
    }
    lock.lock();
    ++answers_[path].ended;
}

std::string HttpText(const std::string& status, const std::string& body, const std::string& headerLines)
{
    const std::string length = "Content-Length: " + std::to_string(body.size());
    return "HTTP/1.1 " + status + "\r\n" + headerLines + length + "\r\n\r\n" + body;
}

} // namespace vantro::test
