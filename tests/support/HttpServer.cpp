#include "tests/support/HttpServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace vantro::test {
namespace {
// The tests speak to this machine only, whatever proxy its user has set. Before any thread reads the
// environment.
[[maybe_unused]] const int kNoProxy = setenv("no_proxy", "*", 1);

bool Send(int connection, std::string_view data)
{
    while (!data.empty()) {
        const auto sent = send(connection, data.data(), data.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        data.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

// False when the other side has gone first.
bool Wait(int connection, int milliseconds)
{
    pollfd waiting{connection, POLLIN | POLLRDHUP, 0};
    return poll(&waiting, 1, milliseconds) == 0;
}

std::string ReceiveHead(int connection)
{
    std::string head;
    char part[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
        const auto received = recv(connection, part, sizeof part, 0);
        if (received <= 0)
            return {};
        head.append(part, static_cast<std::size_t>(received));
    }
    return head;
}
} // namespace

HttpServer::HttpServer() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, any, size) != 0 || listen(listener_, 64) != 0
        || getsockname(listener_, any, &size) != 0)
        throw std::runtime_error("no listening socket");
    port_ = ntohs(address.sin_port);
    accepting_ = std::jthread([this] { Accept(); });
}

HttpServer::~HttpServer()
{
    shutdown(listener_, SHUT_RDWR);
    accepting_.join();
    {
        const std::lock_guard lock(mutex_);
        for (const int connection : connections_)
            shutdown(connection, SHUT_RDWR);
    }
    handlers_.clear();
    for (const int connection : connections_)
        close(connection);
    close(listener_);
}

void HttpServer::Serve(const std::string& path, std::string text, Then then)
{
    const std::lock_guard lock(mutex_);
    answers_[path] = {std::move(text), then};
}

std::string HttpServer::Address(const std::string& path) const
{
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

int HttpServer::Hits(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    return answers_[path].hits;
}

int HttpServer::Ended(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    return answers_[path].ended;
}

std::string HttpServer::LastRequest()
{
    const std::lock_guard lock(mutex_);
    return lastRequest_;
}

void HttpServer::Accept()
{
    for (int connection = 0; (connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        {
            const std::lock_guard lock(mutex_);
            connections_.push_back(connection);
        }
        handlers_.emplace_back([this, connection] {
            Handle(connection);
            shutdown(connection, SHUT_RDWR);
        });
    }
}

void HttpServer::Handle(int connection)
{
    const std::string head = ReceiveHead(connection);
    const std::string path = head.substr(std::min<std::size_t>(4, head.size()), head.find(' ', 4) - 4);
    std::unique_lock lock(mutex_);
    lastRequest_ = head;
    const auto known = answers_.find(path);
    if (known == answers_.end())
        return;
    ++known->second.hits;
    const Answer answer = known->second;
    lock.unlock();
    Follow(connection, answer);
    lock.lock();
    ++answers_[path].ended;
}

void HttpServer::Follow(int connection, const Answer& answer)
{
    const std::string block(answer.then == Then::Flood ? 64 * 1024 : 1, 'x');
    if (!Send(connection, answer.text))
        return;
    switch (answer.then) {
    case Then::Close:
        break;
    case Then::Stall:
        Wait(connection, -1);
        break;
    case Then::Drip:
        while (Wait(connection, 1000) && Send(connection, block)) { }
        break;
    case Then::Flood:
        while (Send(connection, block)) { }
        break;
    }
}

std::string HttpText(std::string_view status, std::string_view body, std::string_view headerLines)
{
    std::string text = "HTTP/1.1 ";
    text.append(status).append("\r\n").append(headerLines);
    return text.append("Content-Length: " + std::to_string(body.size()) + "\r\n\r\n").append(body);
}

} // namespace vantro::test
