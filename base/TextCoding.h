#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vantro {

[[nodiscard]] bool IsUtf8(std::string_view bytes);

// Text of unknown origin as UTF-8: valid UTF-8 is taken as it is, anything else is read as Windows-1252, in
// which every byte means something (the five unassigned ones stand for the control characters of the same
// number).
[[nodiscard]] std::string DecodeFeedText(std::string_view bytes);

// UTF-8 text as Windows-1252 bytes for an HTML page; a character that has none becomes a numeric reference
// ("&#8594;"). Malformed input gives U+FFFD.
[[nodiscard]] std::string EncodePageText(std::string_view utf8);
// Windows-1252 bytes as UTF-8; references stay.
[[nodiscard]] std::string DecodePageText(std::string_view bytes);

// The text on one line and of at most `most` characters, for places that show a single line: runs of blanks,
// control characters and separators of lines or paragraphs become one blank, invisible characters that turn
// the direction of writing go, and the cut is shown by an ellipsis. Looks at no more than the first 16 * most
// bytes, so a text that begins with more blanks than that is only an ellipsis.
[[nodiscard]] std::string OneLine(std::string_view utf8, std::size_t most);

} // namespace vantro
