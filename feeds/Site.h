#pragma once

#include "feeds/ItemState.h"
#include "feeds/PageRecipe.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vantro {

// An element of a feed item and the value it is stored as.
struct SiteField {
    std::string_view element;
    std::string_view value;
};

// All that makes a site different from the others. The operations (SiteModule.h) stand once and read this
// row.
struct Site {
    std::string_view identifier; // key of its root node and of its store key
    std::string_view prefix; // four characters in front of an item's number in its node key
    std::string_view displayName; // text and tag of its root node
    TreeImage image; // of its root node
    std::span<const SiteField> taken; // in the order they are taken from an item
    std::span<const SiteField> stored; // the same in the order they are written
    const PageRecipe* page;
};

// "Software\Vantro\XBINS", and "Software\Vantro\XBINS\12" for an item.
[[nodiscard]] std::string SiteKey(const Site& site);
[[nodiscard]] std::string ItemKey(const Site& site, std::int32_t item);
// "xbin12".
[[nodiscard]] std::string NodeKey(const Site& site, std::int32_t item);
// The number in a node key: the digits from its fifth character on; 0 when there are none, the largest number
// when it does not fit.
[[nodiscard]] std::int32_t ItemNumber(std::string_view nodeKey);

} // namespace vantro
