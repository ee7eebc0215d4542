#pragma once

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace vantro::test {

// A server on 127.0.0.1 that misbehaves as it is told. It answers every connection on a thread of its own,
// and ends them all when it goes.
class HttpServer {
public:
    // Reset or close the connection; say nothing more until the client goes; or say the same again as fast as
    // it goes, or after each so many milliseconds.
    enum class Then { Reset = -3, Close = -2, Stall = -1, Flood = 0, Patter = 1, Drip = 200 };

    HttpServer();

    // Answers requests of `path` with exactly `text`, then does as said. Unknown paths get no answer at all.
    // The path of a client that begins with TLS is "".
    void Serve(const std::string& path, std::string text, Then then = Then::Close, std::string again = "x");
    // Such as "http://127.0.0.1:40123/path".
    [[nodiscard]] std::string Address(const std::string& path) const;
    [[nodiscard]] int Hits(const std::string& path) { return Find(path).hits; }
    [[nodiscard]] int Ended(const std::string& path) { return Find(path).ended; } // connections that are over
    [[nodiscard]] std::string LastRequest(); // the head, as it came
    [[nodiscard]] std::string Requests(); // all heads

private:
    struct Answer {
        std::shared_ptr<const std::string> text;
        Then then = Then::Close;
        std::string again;
        int hits = 0;
        int ended = 0;
    };
    [[nodiscard]] Answer Find(const std::string& path);
    void Accept(int listener);
    void Handle(int socket);

    int port_ = 0;
    std::mutex mutex_;
    std::map<std::string, Answer> answers_; // guarded by mutex_
    std::string lastRequest_; // guarded by mutex_
    std::string requests_; // guarded by mutex_
    std::list<std::jthread> handlers_; // the accepting thread's
    std::jthread accepting_;
};

// A well-formed answer: `status` such as "200 OK", extra header lines each ending in "\r\n".
std::string HttpText(
    const std::string& status, const std::string& body = {}, const std::string& headerLines = {});

} // namespace vantro::test
