#pragma once

#include "platform/SqliteStatement.h"

#include <filesystem>

namespace vantro {

// Writes into a new store, `made`, whatever keys and values can still be read through `damaged`: from both
// ends of each table and index up to where they are spoilt, and each key's values by themselves. Closed and
// on the disk when it returns true; false when it cannot be written, or `damaged` was interrupted.
[[nodiscard]] bool RescueStore(sqlite3* damaged, const std::filesystem::path& made);

} // namespace vantro
