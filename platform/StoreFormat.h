#pragma once

#include <cstdint>

namespace vantro {

// What makes a SQLite file a store; docs/store-format.md tells more.

inline constexpr std::int64_t kApplicationId = 0x56616e74; // "Vant"
inline constexpr std::int64_t kFormatVersion = 1;
inline constexpr const char* kWriteMarks = "PRAGMA application_id=0x56616e74; PRAGMA user_version=1";

inline constexpr const char* kKeyTable
    = "CREATE TABLE reg_key (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE COLLATE NOCASE)";
inline constexpr const char* kValueTable
    = "CREATE TABLE reg_value(key_id INTEGER NOT NULL REFERENCES reg_key(id) ON DELETE CASCADE,"
      " name TEXT NOT NULL COLLATE NOCASE, type INTEGER NOT NULL, data NOT NULL,"
      " PRIMARY KEY (key_id, name)) WITHOUT ROWID";

} // namespace vantro
