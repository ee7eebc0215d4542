#pragma once

#include <filesystem>

namespace vantro {

// Whether a store's write-ahead journal, which nobody has open, has lost something that was committed: its
// head is spoilt, or a commit follows behind the one that is spoilt. SQLite would read it up to there and say
// nothing. What a power cut leaves, a last commit of which any pages are missing, is no damage: each is on
// the disk before the next one is begun. Of no or an empty file: false. The format:
// https://www.sqlite.org/fileformat2.html#walformat
[[nodiscard]] bool IsJournalDamaged(const std::filesystem::path& journal);

} // namespace vantro
