#pragma once

#include <filesystem>

namespace vantro {

// Whether a store's write-ahead journal, which nobody has open, has lost something that was committed: its
// head is spoilt, or a commit follows behind what is spoilt. SQLite would read it up to there and say
// nothing. What a power cut leaves, an end that was not yet acknowledged, is no damage. Of no or an empty
// file: false. The format: https://www.sqlite.org/fileformat2.html#walformat
[[nodiscard]] bool IsJournalDamaged(const std::filesystem::path& journal);

} // namespace vantro
