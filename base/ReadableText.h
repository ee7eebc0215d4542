#pragma once

#include <string>
#include <string_view>

namespace vantro {

// A message as a box can show it: at most 400 characters, the cut shown by an ellipsis; a word that is wider
// than a line, such as an address, is broken into lines. Line ends become line feeds; all else stays as
// it is.
[[nodiscard]] std::string ReadableText(std::string_view utf8);

} // namespace vantro
