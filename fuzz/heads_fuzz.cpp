// Heads of HTTP answers, and the addresses that servers send.

#include "fuzz/Fuzz.h"
#include "web/DisplayAddress.h"
#include "web/HttpAnswer.h"
#include "web/WebAddress.h"

#include <algorithm>
#include <string>
#include <variant>

namespace vantro {

namespace {

bool IsShownText(const std::string& text)
{
    constexpr std::size_t kLongest = 220; // with the number of a status
    return text.size() <= kLongest
        && std::ranges::all_of(text, [](unsigned char c) { return c >= 0x20 && c < 0x7f; });
}

void CheckAddress(const std::string& address)
{
    const auto checked = CheckWebAddress(address);
    const std::string* requested = std::get_if<std::string>(&checked);
    if (requested == nullptr)
        return;
    Require(IsWebAddress(*requested), "what is requested is of the web");
    const auto again = CheckWebAddress(*requested);
    const std::string* same = std::get_if<std::string>(&again);
    Require(same != nullptr && *same == *requested, "an address that may be requested is left as it is");
    Require(HostOf(*requested) == HostOf(address), "checking an address does not change its host");
    Require(HasBarredPort(*requested) == HasBarredPort(address), "nor its port");
}

} // namespace

} // namespace vantro

void vantro::Try(std::string_view bytes)
{
    HttpAnswer answer;
    Input input(bytes);
    bool isComplete = false;
    while (!input.IsAtEnd() && !isComplete)
        isComplete = answer.TakeLine(input.UpTo('\n'));
    Require(answer.IsComplete() == isComplete, "the line that ends a head says so");
    if (isComplete) {
        const std::string status = answer.StatusText();
        Require(!answer.TakeLine("HTTP/1.1 200 OK") && answer.StatusText() == status,
            "what comes behind the head changes nothing");
    }
    Require(answer.Length() >= 0, "no size is negative");
    Require(
        IsShownText(answer.StatusText()) && IsShownText(answer.MimeType()) && IsShownText(answer.Coding()),
        "texts of a head are short and can be shown");
    Require(bytes.find(answer.Location()) != std::string_view::npos, "a location is what the server sent");
    const auto target = ResolveRedirect("http://a.example/b/c?d", answer.Location());
    Require(!target
            || (target->find(':') != std::string::npos
                && target->find_first_of(" \r\n") == std::string::npos),
        "a redirect leads to an absolute address in one word");
    CheckAddress(target.value_or(answer.Location()));
}
