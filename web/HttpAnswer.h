#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantro {

// The head of one HTTP answer, gathered line by line. What it holds came from outside: texts are cut to a
// sensible length and hold printable ASCII only, except Location(), which is exactly what the server sent.
class HttpAnswer {
public:
    // Takes the next line of the head, with or without its line end. True when it was the empty line that
    // ends the head of a final answer; interim answers (status 1xx) are forgotten. Lines after that are
    // ignored.
    bool TakeLine(std::string_view line);

    // Whether the head of a final answer is complete; what follows is true only then.
    [[nodiscard]] bool IsComplete() const { return complete_; }
    [[nodiscard]] bool IsSuccess() const { return status_ / 100 == 2; }
    [[nodiscard]] bool IsRedirect() const { return status_ / 100 == 3 && !location_.empty(); }
    [[nodiscard]] const std::string& Location() const { return location_; }
    // Such as "text/xml", without parameters; may be empty.
    [[nodiscard]] const std::string& MimeType() const { return mimeType_; }
    // Announced size of the content in bytes, 0 when none was announced. The size of a coded content says
    // nothing about what it holds, so it counts as none.
    [[nodiscard]] std::int64_t Length() const { return isChunked_ || !coding_.empty() ? 0 : length_; }
    // How the content is coded, such as "gzip"; empty when it is not.
    [[nodiscard]] const std::string& Coding() const { return coding_; }
    // Such as "404 Not Found", with the usual words when the server gave none.
    [[nodiscard]] std::string StatusText() const;

private:
    void TakeStatus(std::string_view line);
    void TakeField(std::string_view line);

    bool complete_ = false;
    bool isChunked_ = false;
    int status_ = 0;
    std::int64_t length_ = 0;
    std::string reason_;
    std::string location_;
    std::string mimeType_;
    std::string coding_;
};

} // namespace vantro
