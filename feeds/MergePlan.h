#pragma once

#include "feeds/ItemState.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// A stored item as a merge sees it: its stored title and the state of its node.
struct KeptItem {
    std::string title;
    ItemState state;
};

// What a merge would do.
struct MergePlan {
    std::size_t newItems = 0; // when there is none, nothing at all is to change
    std::vector<ItemState> states; // of the incoming items, in the order of the feed
};

// Compares a feed with what is kept. Identity is the exact title; each kept item, in order, gives its state
// to the first incoming item of its title, so of two kept items with one title the later one's state stays,
// and of two incoming items with one title the second is always new.
[[nodiscard]] MergePlan PlanMerge(
    std::span<const KeptItem> kept, std::span<const std::string_view> incomingTitles);

} // namespace vantro
