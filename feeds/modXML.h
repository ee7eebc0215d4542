#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace vantro {

// The text between the first opening tag and the first closing tag of that name in `text`, as it stands
// there; empty when one of them is missing or the closing tag comes first. Only the bare form "<name>" is a
// tag; letter case does not matter; blanks around `tagName` are dropped. The result is a view into `text`.
[[nodiscard]] std::string_view ExtractTag(std::string_view tagName, std::string_view text);

// The first items of a feed file, at most `most`, as views into `feedText`: the first begins at the first
// "<item>", each ends with its "</item>", and each later one begins right behind the one before. A last item
// that is not closed does not count. One pass, whatever the feed holds.
[[nodiscard]] std::vector<std::string_view> SplitItems(std::string_view feedText, std::size_t most);

// What SplitItems() gives and what ExtractTag() then gives for each of the elements, all in one pass: row by
// row an item's text and what its elements hold. REQUIRES: the elements' names are in lower case without a
// slash, none of them is "item", and no two are the same.
[[nodiscard]] std::vector<std::string_view> CutItems(
    std::string_view feedText, std::size_t most, std::span<const std::string_view> elements);

} // namespace vantro
