#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace vantro {

// Makes the folder and those above it that are missing, for the user alone (mode 0700). The folder itself,
// where it is there and the user's own, is closed to others; those above stay as they are. The error of the
// first one that cannot be made.
[[nodiscard]] std::error_code MakePrivateFolders(const std::filesystem::path& folder);

// Closes a file or folder to all but its owner, when that is the user; but never one like /tmp, where
// everybody may put files. A failure is ignored.
void KeepFromOthers(const std::filesystem::path& path);

// A new folder for the user alone, named `prefix` and six letters, in the folder `parent`, which exists.
// Throws std::filesystem::filesystem_error.
[[nodiscard]] std::filesystem::path MakePrivateFolder(
    const std::filesystem::path& parent, std::string_view prefix);

} // namespace vantro
