#pragma once

#include <optional>
#include <string>

namespace vantro {

// Makes the file `path` (in an existing folder) hold exactly `bytes`, or returns the description of the
// failure and leaves it as it was: the bytes are first written beside it, under a short name of this process,
// which does not stay behind. Not to be used by two threads at once. A link at `path` is replaced, not
// followed. A path that ends in no name, "." or ".." is refused as a folder.
[[nodiscard]] std::optional<std::string> ReplaceFile(const std::string& path, const std::string& bytes);

} // namespace vantro
