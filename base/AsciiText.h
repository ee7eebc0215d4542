#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace vantro {

// What protocols and formats compare without regard to case: ASCII letters, whatever the user's locale.

// An upper-case letter in lower case; any other byte as it is.
[[nodiscard]] constexpr char ToLowerAscii(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

[[nodiscard]] constexpr std::string ToLowerAscii(std::string_view text)
{
    std::string lower(text);
    for (char& byte : lower)
        byte = ToLowerAscii(byte);
    return lower;
}

[[nodiscard]] constexpr bool IsSameIgnoringCase(std::string_view one, std::string_view other)
{
    return std::ranges::equal(one, other, [](char a, char b) { return ToLowerAscii(a) == ToLowerAscii(b); });
}

// The text without the `blanks` at its ends, as a view of it.
[[nodiscard]] constexpr std::string_view Trim(std::string_view text, std::string_view blanks = " \t\r\n")
{
    const std::size_t first = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

} // namespace vantro
