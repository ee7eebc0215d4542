#pragma once

#include "feeds/ItemState.h"
#include "feeds/PageRecipe.h"
#include "settings/Options.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vantro {

// An element of a feed item and the value it is stored as.
struct SiteField {
    std::string_view element;
    std::string_view value;
};

inline constexpr std::size_t kPrefixLength = 4;

// All that makes a site different from the others. Whatever is done for sites (SiteOperations.h, the refresh
// cycle, the window, the sample feeds) stands once and reads this row.
struct Site {
    std::string_view identifier; // key of its root node, of its store key and of its address in vantro.ini
    std::string_view prefix; // kPrefixLength characters in front of an item's number in its node key
    std::string_view displayName; // text and tag of its root node
    TreeImage image; // of its root node
    int rootPlace; // the roots stand in the order of these numbers
    std::string_view host; // base address unless the build or vantro.ini has another; no slash at its end
    std::string_view feedPath; // where the feed is on that host
    // Which download strip, counted in the order of Sites(). A site without one fetches out of sight and
    // fails in silence.
    std::optional<int> strip;
    std::span<const SiteField> taken; // in the order they are taken from an item
    std::span<const SiteField> stored; // the same in the order they are written
    const PageRecipe* page;
    OptionFrame optionFrame = {}; // under the display name; without any there is no frame
};

// The site's base address as it was built in: that of the build settings, else the row's.
[[nodiscard]] std::string_view BuiltInHost(const Site& site);
// The name of the site's download control: "download(0)" with a strip, "Vantro_Download" without.
[[nodiscard]] std::string DownloadName(const Site& site);
// "Software\Vantro\XBINS", and "Software\Vantro\XBINS\12" for an item.
[[nodiscard]] std::string SiteKey(const Site& site);
[[nodiscard]] std::string ItemKey(const Site& site, std::int32_t item);
// "xbin12".
[[nodiscard]] std::string NodeKey(const Site& site, std::int32_t item);
// The number in a node key: the digits from its fifth character on; 0 when there are none, the largest number
// when it does not fit.
[[nodiscard]] std::int32_t ItemNumber(std::string_view nodeKey);

} // namespace vantro
