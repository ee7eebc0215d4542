#include "web/WebAddress.h"

#include "base/Owned.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <curl/curl.h>

namespace vantro {

namespace {

constexpr unsigned kEncode = CURLU_ALLOW_SPACE | CURLU_URLENCODE;
constexpr std::size_t kLongestRedirect = 8UL * 1024;

constexpr auto kBarredPorts = std::to_array<int>({0, 1, 7, 9, 11, 13, 15, 17, 19, 20, 21, 22, 23, 25, 37, 42,
    43, 53, 69, 77, 79, 87, 95, 101, 102, 103, 104, 109, 110, 111, 113, 115, 117, 119, 123, 135, 137, 139,
    143, 161, 179, 389, 427, 465, 512, 513, 514, 515, 526, 530, 531, 532, 540, 548, 554, 556, 563, 587, 601,
    636, 989, 990, 993, 995, 1719, 1720, 1723, 2049, 3659, 4045, 4190, 5060, 5061, 6000, 6566, 6665, 6666,
    6667, 6668, 6669, 6679, 6697, 10080});

using Url = Owned<CURLU, curl_url_cleanup>;

std::string Part(CURLU* url, CURLUPart part)
{
    char* text = nullptr;
    if (curl_url_get(url, part, &text, 0) != CURLUE_OK)
        return {};
    const Owned<char, curl_free> owner(text);
    return text;
}

CURLUcode SetUrl(CURLU* url, const std::string& text, unsigned flags)
{
    if (!url)
        return CURLUE_OUT_OF_MEMORY;
    if (text.find('\0') != std::string::npos)
        return CURLUE_MALFORMED_INPUT; // libcurl would read the part before it
    return curl_url_set(url, CURLUPART_URL, text.c_str(), flags);
}

} // namespace

std::variant<std::string, ReadRefused> CheckWebAddress(const std::string& address)
{
    const Url url(curl_url());
    CURLUcode code = SetUrl(url.get(), address, kEncode);
    if (code == CURLUE_OK) {
        const std::string scheme = Part(url.get(), CURLUPART_SCHEME);
        if (scheme == "http" || scheme == "https")
            return Part(url.get(), CURLUPART_URL);
        code = CURLUE_UNSUPPORTED_SCHEME;
    }
    return ReadRefused{static_cast<std::int32_t>(code), curl_url_strerror(code)};
}

std::string HostOf(const std::string& address)
{
    const Url url(curl_url());
    return SetUrl(url.get(), address, kEncode) == CURLUE_OK ? Part(url.get(), CURLUPART_HOST) : "";
}

bool HasBarredPort(const std::string& address)
{
    const Url url(curl_url());
    if (SetUrl(url.get(), address, kEncode) != CURLUE_OK)
        return false;
    const std::string port = Part(url.get(), CURLUPART_PORT);
    return !port.empty() && std::ranges::binary_search(kBarredPorts, std::stoi(port));
}

std::string OriginOf(const std::string& address)
{
    const Url url(curl_url());
    if (SetUrl(url.get(), address, kEncode) != CURLUE_OK)
        return {};
    const std::string port = Part(url.get(), CURLUPART_PORT);
    return Part(url.get(), CURLUPART_SCHEME) + "://" + Part(url.get(), CURLUPART_HOST)
        + (port.empty() ? "" : ":" + port) + "/";
}

std::optional<std::string> ResolveRedirect(const std::string& base, const std::string& location)
{
    const Url url(curl_url());
    if (SetUrl(url.get(), base, kEncode) != CURLUE_OK
        || SetUrl(url.get(), location, kEncode | CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK)
        return std::nullopt;
    std::string target = Part(url.get(), CURLUPART_URL);
    const auto isPlain = [](unsigned char c) { return c > 0x20 && c < 0x7f; };
    if (target.empty() || target.size() > kLongestRedirect || !std::ranges::all_of(target, isPlain))
        return std::nullopt;
    return target;
}

} // namespace vantro
