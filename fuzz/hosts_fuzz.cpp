// vantro.ini, as a user or a stranger may have written it.

#include "base/TextCoding.h"
#include "feeds/HostsFile.h"
#include "feeds/Sites.h"
#include "fuzz/Fuzz.h"
#include "web/DisplayAddress.h"

#include <algorithm>

void vantro::Try(std::string_view bytes)
{
    const FeedHosts hosts = ReadHostsFile(Write("vantro.ini", bytes));
    Require(hosts.addresses.size() == Sites().size(), "every site has an address");
    for (const auto& [site, address] : hosts.addresses) {
        Require(IsWebAddress(address), "every address is of the web");
        Require(!address.ends_with('/') && address.find_first_of("?#") == std::string::npos,
            "a path can be added to every address");
    }
    Require(IsUtf8(hosts.notice), "what is said is UTF-8");
    Require(std::ranges::none_of(hosts.notice, [](unsigned char c) { return c < 0x20 || c == 0x7f; }),
        "what is said is one line");
}
