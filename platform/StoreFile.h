#pragma once

#include "platform/RegistryStore.h"
#include "platform/SqliteStatement.h"

#include <filesystem>
#include <string>

namespace vantro {

// A database that holds the two tables of docs/store-format.md and takes writes.
struct OpenedStore {
    Database database;
    bool kept = false; // false: it lives in memory and goes with this run
    std::string notice; // a sentence for the user when anything is not as it should be
};

// Opens the store's file as RegistryStore promises. Takes 2 s at most when another program holds the file.
// Throws std::bad_alloc only.
[[nodiscard]] OpenedStore OpenStoreFile(const std::filesystem::path& file, const StoreOptions& options);

// Whether statements wait up to 2 s for a lock that another program holds, or fail at once.
void WaitForLocks(sqlite3* database, bool wait);

} // namespace vantro
