#include "platform/StoreRescue.h"

#include "platform/Files.h"
#include "platform/PrivateFolder.h"
#include "platform/StoreFile.h"
#include "platform/StoreFormat.h"

#include <cstdint>
#include <map>
#include <string>

namespace vantro {

namespace {

// The keys by their numbers. A way through the tables ends where it meets damage; together they reach most.
std::map<std::int64_t, std::string> ReadKeys(sqlite3* damaged)
{
    std::map<std::int64_t, std::string> keys;
    for (const char* way : {"SELECT id, path FROM reg_key NOT INDEXED ORDER BY id",
             "SELECT id, path FROM reg_key NOT INDEXED ORDER BY id DESC",
             "SELECT id, path FROM reg_key ORDER BY path",
             "SELECT id, path FROM reg_key ORDER BY path DESC"}) {
        SqliteStatement statement(damaged, way);
        for (auto row = statement.Run(); row.HasRow(); row.Next())
            keys.try_emplace(row.Number(0), row.Text(1));
    }
    return keys;
}

// Takes the rows as they are, whatever their data is.
bool CopyValues(SqliteStatement& put, std::int64_t key, SqliteStatement& values)
{
    auto row = values.Run({key});
    for (; row.HasRow(); row.Next()) {
        const std::string name = row.Text(0);
        const std::string text = row.IsNumber(2) ? "" : row.Text(2);
        const SqliteStatement::Value data
            = row.IsNumber(2) ? SqliteStatement::Value(row.Number(2)) : SqliteStatement::Value(text);
        if (put.Run({key, name, row.Number(1), data}).Code() != SQLITE_DONE)
            return false;
    }
    return row.Code() != SQLITE_INTERRUPT;
}

bool Copy(sqlite3* damaged, sqlite3* made)
{
    SqliteStatement putKey(made, "INSERT OR IGNORE INTO reg_key(id, path) VALUES(?1, ?2)");
    SqliteStatement putValue(
        made, "INSERT OR IGNORE INTO reg_value(key_id, name, type, data) VALUES(?1, ?2, ?3, ?4)");
    SqliteStatement values(damaged, "SELECT name, type, data FROM reg_value WHERE key_id = ?1");
    for (const auto& [key, path] : ReadKeys(damaged)) {
        if (putKey.Run({key, path}).Code() != SQLITE_DONE)
            return false;
        // Of two keys with one path only the first is there.
        if (sqlite3_changes(made) == 1 && !CopyValues(putValue, key, values))
            return false;
    }
    return true;
}

bool IsDone(sqlite3* database, const char* constantSql)
{
    return sqlite3_exec(database, constantSql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

} // namespace

bool RescueStore(sqlite3* damaged, const std::filesystem::path& made)
{
    DeleteFileIfExists(made);
    const Database database = Connect(made.string(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    KeepFromOthers(made);
    const bool isWhole = IsDone(database.get(), "BEGIN") && LayDownTables(database.get()) == SQLITE_OK
        && IsDone(database.get(), kWriteMarks) && Copy(damaged, database.get())
        && IsDone(database.get(), "COMMIT");
    if (!isWhole)
        DeleteFileIfExists(made);
    return isWhole;
}

} // namespace vantro
