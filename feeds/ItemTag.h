#pragma once

#include <string>
#include <string_view>

namespace vantro {

// Every occurrence of `search` replaced, from left to right, exactly as written.
[[nodiscard]] std::string ReplaceAll(std::string text, std::string_view search, std::string_view replacement);

// A tag that holds the unread marker anywhere counts as unread; every other counts as read.
[[nodiscard]] bool IsUnread(std::string_view tag);
// Whether the tag is that of an item, and not of a site.
[[nodiscard]] bool IsItemTag(std::string_view tag);
// The tag with one marker in the place of the other; what else it holds stays.
[[nodiscard]] std::string MarkedRead(std::string tag);
[[nodiscard]] std::string MarkedUnread(std::string tag);

} // namespace vantro
