#pragma once

#include <cstdint>

namespace vantro {

// What makes a SQLite file a store; docs/store-format.md tells more.

// In the file's application_id, and the version in its user_version.
inline constexpr std::int64_t kApplicationId = 0x56616e74; // "Vant"
inline constexpr std::int64_t kFormatVersion = 1;
// Both once more: a PRAGMA takes no parameters.
inline constexpr const char* kWriteMarks = "PRAGMA application_id=0x56616e74; PRAGMA user_version=1";

// A file whose tables read otherwise, but for blanks and letter case, counts as damaged: a change here sets
// aside every store there is, unless StoreInspection learns of the tables as they were.
inline constexpr const char* kKeyTable
    = "CREATE TABLE reg_key (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE COLLATE NOCASE)";
inline constexpr const char* kValueTable
    = "CREATE TABLE reg_value(key_id INTEGER NOT NULL REFERENCES reg_key(id) ON DELETE CASCADE,"
      " name TEXT NOT NULL COLLATE NOCASE, type INTEGER NOT NULL, data NOT NULL,"
      " PRIMARY KEY (key_id, name)) WITHOUT ROWID";

} // namespace vantro
