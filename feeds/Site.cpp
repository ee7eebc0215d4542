#include "feeds/Site.h"

#include "base/BuildSettings.h"
#include "settings/modRegistry.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace vantro {

std::string_view BuiltInHost(const Site& site)
{
    const auto given = std::ranges::find(kBuildSettings.hosts, site.identifier, &BuildHost::key);
    return given == kBuildSettings.hosts.end() ? site.host : given->address;
}

std::string DownloadName(const Site& site)
{
    if (site.strip)
        return "download(" + std::to_string(*site.strip) + ")";
    return std::string(site.displayName) + "_Download";
}

std::string SiteKey(const Site& site)
{
    return std::string(RegPath) + "\\" + std::string(site.identifier);
}

std::string ItemKey(const Site& site, std::int32_t item)
{
    return SiteKey(site) + "\\" + std::to_string(item);
}

std::string NodeKey(const Site& site, std::int32_t item)
{
    return std::string(site.prefix) + std::to_string(item);
}

std::int32_t ItemNumber(std::string_view nodeKey)
{
    if (nodeKey.size() <= kPrefixLength)
        return 0;
    std::int32_t number = 0;
    const auto result
        = std::from_chars(nodeKey.data() + kPrefixLength, nodeKey.data() + nodeKey.size(), number);
    return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::int32_t>::max() : number;
}

} // namespace vantro
