#pragma once

#include <string>
#include <string_view>

namespace vantro {

// The text with every character outside ASCII percent-encoded as UTF-8, and no other change. In a page that
// is not UTF-8 itself, the engine would put such characters of a query into the page's own encoding.
[[nodiscard]] std::string AsciiAddress(std::string_view utf8);

// Where a click goes on a link whose address, between quotation marks in a page, is written like this, in
// ASCII: character references count as their characters (of those with names only &amp; &lt; &gt; &quot; and
// &apos;), control characters and blanks at the ends, line ends and tabs do not count, and a quotation mark
// ends it.
[[nodiscard]] std::string AddressOfLink(std::string_view written);

} // namespace vantro
