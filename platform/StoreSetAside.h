#pragma once

#include <filesystem>
#include <optional>

namespace vantro {

// Renames a store's file and its journals, which nobody has open, to a name that nothing beside it has yet:
// with ".damaged-", the local date and time behind it. The new name of the file; or nothing when it cannot be
// done, and then all is as it was. A program killed half way leaves the file in its place.
[[nodiscard]] std::optional<std::filesystem::path> SetStoreAside(const std::filesystem::path& file);

} // namespace vantro
