#pragma once

#include "feeds/ItemState.h"
#include "feeds/Site.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

class modRegistry;

// The fields of a feed item, in the order of the site's `taken`; an element that is missing is an empty text.
struct FeedItem {
    std::vector<std::string> fields;

    // Every site takes the title first.
    [[nodiscard]] const std::string& Title() const { return fields.front(); }
};

// Each field is decoded by itself, so that a fault in one does no harm to another.
[[nodiscard]] FeedItem DecodeItem(std::span<const std::string_view> fields);

// The stored items of one site, numbered from 1. A view over the registry that holds nothing itself.
class ItemStore {
public:
    ItemStore(modRegistry& registry, const Site& site) : registry_(registry), site_(site) { }

    // "TotalItems"; 0 when nothing is stored.
    [[nodiscard]] std::int32_t Total() const;
    // How many items there are to go through: Total(), of which some may be missing, unless so many are that
    // the number must be wrong. Then it is that of the last item that is stored.
    [[nodiscard]] std::int32_t Count() const;
    [[nodiscard]] std::string ReadText(std::int32_t item, std::string_view valueName) const;
    // What ReadText() gives for the items 1 to `count`, in one go.
    [[nodiscard]] std::vector<std::string> ReadTexts(std::int32_t count, std::string_view valueName) const;
    // Lost when there is no such item.
    void WriteTag(std::int32_t item, std::string_view tag);
    // Deletes the items 1 to `oldCount`, those beyond it that Total() covers, and the site key, then writes
    // these items with their tags. REQUIRES: inside StoreTogether().
    void Rewrite(
        std::int32_t oldCount, const std::vector<FeedItem>& items, const std::vector<ItemState>& states);

private:
    modRegistry& registry_;
    const Site& site_;
};

} // namespace vantro
