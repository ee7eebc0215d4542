#pragma once

#include <optional>
#include <string>

namespace vantro {

// Makes the file `path` (in an existing folder) hold exactly `bytes`, or returns the description of the
// failure and leaves it as it was: the bytes are first written beside it, to "<path>.part", which never stays
// behind. A link at `path` is replaced, not followed. A path that ends in no name, "." or ".." is refused as
// a folder.
[[nodiscard]] std::optional<std::string> ReplaceFile(const std::string& path, const std::string& bytes);

} // namespace vantro
