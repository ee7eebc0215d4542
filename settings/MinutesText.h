#pragma once

#include <cstdint>
#include <string_view>

namespace vantro {

// The number that the start of a text spells, rounded to a whole one (halves to the even neighbour) and
// limited to 32 bits. Blanks, tabs and line ends count for nothing, even between digits; a decimal point and
// an exponent (E or D) are understood, whatever the user's locale. 0 when the text starts with no number.
[[nodiscard]] std::int32_t MinutesFromText(std::string_view text);

} // namespace vantro
