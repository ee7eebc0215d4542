#pragma once

#include "platform/RegistryStore.h"
#include "platform/SqliteStatement.h"
#include "platform/StoreSetAside.h"

#include <filesystem>
#include <optional>
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
[[nodiscard]] OpenedStore OpenStoreFile(const std::filesystem::path& file);

// Puts `made`, a closed store made whole beside it, in the place of the file. What stands there is set aside,
// and the name it has then returned; empty when nothing stood there but journals, which are deleted, as they
// are of a store that was copied. Nothing when this cannot be done; what is aside by then stays so.
[[nodiscard]] std::optional<std::filesystem::path> PutInPlace(
    const std::filesystem::path& made, const std::filesystem::path& file, Aside what);

// The name under which a file is made that is to become the store. None of this name is worth keeping.
[[nodiscard]] std::filesystem::path NameOfNew(const std::filesystem::path& file);

// A connection as all of this program's are set up. Nothing of it changes the file when it is closed.
[[nodiscard]] Database Connect(const std::string& name, int flags);

// Lays down the tables in a file that has none.
[[nodiscard]] int LayDownTables(sqlite3* database);

// Whether statements wait up to 2 s for a lock that another program holds, or fail at once.
void WaitForLocks(sqlite3* database, bool wait);

} // namespace vantro
