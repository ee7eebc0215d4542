#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantro {

// The scheme under which the browser finds the parts of our own pages. Addresses of it tell nothing of the
// machine, and nothing but the page shown answers to them.
inline constexpr std::string_view kPageScheme = "vantro-page";

// Where the browser finds the parts of one display, as "vantro-page://7/name" and
// "vantro-page://story-7.vantro-page/path".
class DisplayAddress {
public:
    DisplayAddress() = default;
    // `link` is the web address of the item, to which the relative links of its text refer; any other text
    // leaves them without a meaning.
    explicit DisplayAddress(std::uint64_t display, std::string_view link = {});

    [[nodiscard]] std::string OfFile(std::string_view file) const;
    // Of the item's text. Has the path and the query of the link, so that what is relative in the text is
    // relative to the link, and an anchor in it is one in the same document.
    [[nodiscard]] std::string OfStory() const;
    // The web address that a link of a page means when the engine has read it as one of our scheme: a path on
    // the host of the link, or "//host/path", which takes https. Empty when it means none.
    [[nodiscard]] std::string WebAddressOf(std::string_view address) const;

private:
    [[nodiscard]] std::string StoryHost() const;

    std::string number_; // also the host of the files
    std::string origin_; // scheme and host of the link
    std::string place_ = "/"; // path and query of the link
};

[[nodiscard]] bool IsOwnAddress(std::string_view address);
// http and https.
[[nodiscard]] bool IsWebAddress(std::string_view address);
// http, https and mailto are the only addresses that are handed to other programs.
[[nodiscard]] bool MayLeave(std::string_view address);

} // namespace vantro
