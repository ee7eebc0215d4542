#pragma once

#include <filesystem>
#include <optional>

namespace vantro {

// What of a store is set aside. Journals that are not the file's own must never again stand beside a file
// under its name, or SQLite would apply them to it; they get other names.
enum class Aside : int { FileAndItsJournals, FileAndStrayJournals, JournalsAlone };

// Renames a store's file and journals, those of them that are there, to a name that nothing beside it has
// yet: with ".damaged-", the local date and time behind it. The new name, or nothing when it cannot be done,
// and then all is as it was. A program killed half way leaves the file in its place.
[[nodiscard]] std::optional<std::filesystem::path> SetStoreAside(
    const std::filesystem::path& file, Aside what = Aside::FileAndItsJournals);

} // namespace vantro
