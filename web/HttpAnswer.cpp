#include "web/HttpAnswer.h"

#include "base/AsciiText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <system_error>
#include <utility>

namespace vantro {

namespace {

constexpr std::size_t kLongestText = 200;
constexpr int kSwitching = 101; // what follows is another protocol, and no further answer

constexpr std::array<std::pair<int, std::string_view>, 16> kReasons{{
    {300, "Multiple Choices"},
    {304, "Not Modified"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {406, "Not Acceptable"},
    {407, "Proxy Authentication Required"},
    {408, "Request Timeout"},
    {410, "Gone"},
    {429, "Too Many Requests"},
    {500, "Internal Server Error"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
}};

std::string Printable(std::string_view text)
{
    std::string result(text.substr(0, kLongestText));
    std::ranges::replace_if(
        result, [](unsigned char c) { return c < 0x20 || c > 0x7e; }, '?');
    return result;
}

} // namespace

bool HttpAnswer::TakeLine(std::string_view line)
{
    if (complete_)
        return false; // trailers of a chunked content
    line = line.substr(0, line.find_last_not_of("\r\n") + 1);
    if (line.starts_with("HTTP/")) {
        TakeStatus(line);
    } else if (!line.empty()) {
        TakeField(line);
    } else if (status_ / 100 == 1 && status_ != kSwitching) {
        *this = {};
    } else {
        complete_ = status_ != 0;
    }
    return complete_;
}

void HttpAnswer::TakeStatus(std::string_view line)
{
    *this = {};
    line = Trim(line.substr(std::min(line.find(' '), line.size())));
    const auto digits = std::from_chars(line.data(), line.data() + line.size(), status_);
    reason_ = Printable(Trim(line.substr(static_cast<std::size_t>(digits.ptr - line.data()))));
}

void HttpAnswer::TakeField(std::string_view line)
{
    const auto colon = line.find(':');
    if (colon == std::string_view::npos || line.front() == ' ' || line.front() == '\t')
        return; // a folded line goes on with the field before it, and no field read here is ever that long
    const std::string name = ToLowerAscii(Trim(line.substr(0, colon)));
    const std::string_view value = Trim(line.substr(colon + 1));
    if (name == "location")
        location_ = value;
    else if (name == "content-type")
        mimeType_ = Printable(Trim(value.substr(0, value.find(';'))));
    else if (name == "content-encoding" && ToLowerAscii(value) != "identity")
        coding_ = Printable(value);
    else if (name == "transfer-encoding")
        isChunked_ = true;
    else if (name == "content-length"
        && (std::from_chars(value.data(), value.data() + value.size(), length_).ec != std::errc{}
            || length_ < 0))
        length_ = 0;
}

std::string HttpAnswer::StatusText() const
{
    std::string text = std::to_string(status_);
    const auto* known = std::ranges::find(kReasons, status_, &std::pair<int, std::string_view>::first);
    if (!reason_.empty())
        text += " " + reason_;
    else if (known != kReasons.end())
        text.append(" ").append(known->second);
    return text;
}

} // namespace vantro
