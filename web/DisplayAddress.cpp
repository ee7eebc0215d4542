#include "web/DisplayAddress.h"

#include "base/AsciiText.h"
#include "web/WebAddress.h"

#include <algorithm>
#include <cstddef>
#include <variant>

namespace vantro {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

bool HasScheme(std::string_view address, std::string_view scheme)
{
    const std::size_t colon = address.find(':');
    return colon != std::string_view::npos && IsSameIgnoringCase(address.substr(0, colon), scheme);
}

// An address with "//", cut before the path, the query or the fragment, whichever comes first.
struct Cut {
    std::string_view authority;
    std::string_view rest;
};
Cut CutAfterHost(std::string_view address)
{
    const std::size_t slashes = address.find("//");
    if (slashes == std::string_view::npos)
        return {};
    const std::string_view authority = address.substr(slashes + 2);
    const std::size_t end = std::min(authority.find_first_of("/?#"), authority.size());
    return {authority.substr(0, end), authority.substr(end)};
}

} // namespace

DisplayAddress::DisplayAddress(std::uint64_t display, std::string_view link)
    : number_(std::to_string(display))
{
    const auto checked = CheckWebAddress(std::string(Trim(link, kBlanks)));
    const auto* address = std::get_if<std::string>(&checked);
    if (address == nullptr)
        return;
    const Cut cut = CutAfterHost(*address);
    origin_ = address->substr(0, address->size() - cut.rest.size());
    place_ = cut.rest.substr(0, cut.rest.find('#'));
    if (!place_.starts_with('/'))
        place_.insert(0, "/");
}

// No host of the web ends so.
std::string DisplayAddress::StoryHost() const
{
    return "story-" + number_ + "." + std::string(kPageScheme);
}

std::string DisplayAddress::OfFile(std::string_view file) const
{
    return std::string(kPageScheme) + "://" + number_ + "/" + std::string(file);
}

std::string DisplayAddress::OfStory() const
{
    return std::string(kPageScheme) + "://" + StoryHost() + place_;
}

std::string DisplayAddress::WebAddressOf(std::string_view address) const
{
    const auto [host, rest] = CutAfterHost(address);
    if (!IsOwnAddress(address) || host.empty()
        || host.find_first_not_of("0123456789") == std::string_view::npos)
        return {};
    if (host == StoryHost())
        return origin_.empty() ? std::string() : origin_ + std::string(rest);
    return "https://" + std::string(host) + std::string(rest);
}

bool IsOwnAddress(std::string_view address)
{
    return HasScheme(address, kPageScheme);
}

bool IsWebAddress(std::string_view address)
{
    return HasScheme(address, "http") || HasScheme(address, "https");
}

bool MayLeave(std::string_view address)
{
    return IsWebAddress(address) || HasScheme(address, "mailto");
}

} // namespace vantro
