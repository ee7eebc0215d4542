#pragma once

#include "base/AsciiText.h"
#include "platform/KeyPath.h"
#include "platform/RegistryStore.h"
#include "platform/SqliteStatement.h"
#include "platform/StoreFile.h"
#include "platform/StoreFinding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace vantro {

// The bounds of what lies below a key in the order of the index.
struct Below {
    explicit Below(std::string_view path) : begin(path), end(path)
    {
        begin += '\\';
        end += static_cast<char>('\\' + 1);
    }
    // What of a path that was found there stands behind the key's own; nothing when it does not lie there, as
    // a damaged index may have it.
    [[nodiscard]] std::string_view NameOf(std::string_view path) const
    {
        return IsSameIgnoringCase(path.substr(0, begin.size()), begin) ? path.substr(begin.size())
                                                                       : std::string_view();
    }
    std::string begin;
    std::string end;
};

// A value of which the row holds the type in this column and the data in the next.
inline RegistryStore::StoredValue ValueIn(const SqliteStatement::Result& row, int column)
{
    RegistryStore::StoredValue value{static_cast<std::int32_t>(row.Number(column)), {}};
    if (row.IsNumber(column + 1))
        value.data = row.Number(column + 1);
    else
        value.data = row.Text(column + 1);
    return value;
}

// What the units of RegistryStore share: its file, its statements and where a batch stands.
struct RegistryStore::Connection {
    explicit Connection(const std::filesystem::path& file)
        : store(OpenStoreFile(file)), journal(JournalOf(file))
    {
    }

    // Of the file's journal the number by which the file system knows it; 0 when there is none.
    static ino_t JournalOf(std::filesystem::path file)
    {
        struct stat status { };
        return stat((file += "-wal").c_str(), &status) == 0 ? status.st_ino : 0;
    }

    // Whether what is written goes into a journal that no other program, nor a later start, finds any more.
    [[nodiscard]] bool HasLostJournal(const std::filesystem::path& file) const
    {
        return journal != 0 && JournalOf(file) != journal;
    }

    // The first failure in a batch decides about all of it. A lock that has been waited for in vain is not
    // waited for again until a write has succeeded: the user would sit through every single one.
    void NoteFailure(int code)
    {
        if (inBatch && !failure)
            failure = FailureSentence(Handle(), code);
        if ((code & 0xff) == SQLITE_BUSY)
            SetPatient(false);
    }

    void SetPatient(bool patient)
    {
        if (std::exchange(waitsForLocks, patient) != patient)
            WaitForLocks(Handle(), patient);
    }

    // What a write that ran to its end returned.
    bool Succeeded(int code)
    {
        if (code == SQLITE_DONE || code == SQLITE_OK)
            SetPatient(true);
        else
            NoteFailure(code);
        return code == SQLITE_DONE || code == SQLITE_OK;
    }

    // A batch that has failed writes nothing more; one that only reads never takes the lock.
    [[nodiscard]] bool MayWrite()
    {
        if (!inBatch || hasLock || failure)
            return !failure;
        // SQLite does not wait for the lock inside a transaction that has read. What another program wrote
        // before the lock was there may have taken the remembered key.
        hasLock = Succeeded(Execute("COMMIT; BEGIN IMMEDIATE"));
        Forget();
        return hasLock;
    }

    bool Write(SqliteStatement& statement, std::initializer_list<SqliteStatement::Value> values)
    {
        return MayWrite() && Succeeded(statement.Run(values).Code());
    }

    [[nodiscard]] int Execute(const char* constantSql) const
    {
        return sqlite3_exec(Handle(), constantSql, nullptr, nullptr, nullptr);
    }

    // What cannot be read is missing, outside a batch. In one it is a failure: what would be written then
    // stands on what was read.
    bool Found(const SqliteStatement::Result& result)
    {
        if (!result.HasRow() && result.Code() != SQLITE_DONE)
            NoteFailure(result.Code());
        return result.HasRow();
    }

    KeyId Find(std::string_view path)
    {
        const auto result = findKey.Run({path});
        return Found(result) ? result.Number(0) : 0;
    }

    KeyId FindLeaf(std::string_view path, const Below& below)
    {
        const auto result = findLeaf.Run({path, below.begin, below.end});
        return Found(result) ? result.Number(0) : 0;
    }

    // Stands in for the file's foreign key, see StoreFile.cpp. A write to a key that has gone is lost, and
    // nothing is wrong with the store.
    [[nodiscard]] bool HasKey(KeyId key) { return key == rememberedKey || Found(hasKey.Run({key})); }

    // The keys of a list are created one after the other: the level above them needs no looking up.
    [[nodiscard]] bool IsBesideRemembered(std::string_view path) const
    {
        return rememberedKey && ParentOf(path) == ParentOf(rememberedPath);
    }

    KeyId CreateLevels(std::string_view path)
    {
        std::string_view known = ParentOf(path);
        if (!IsBesideRemembered(path)) {
            while (!known.empty() && !Find(known))
                known = ParentOf(known);
        }
        for (std::size_t end = known.size(); end < path.size();) {
            end = std::min(path.find('\\', end + 1), path.size());
            if (!Write(insertKey, {path.substr(0, end)}))
                return 0;
        }
        return sqlite3_changes(Handle()) == 1 ? sqlite3_last_insert_rowid(Handle()) : Find(path);
    }

    KeyId Remember(std::string_view path, KeyId key)
    {
        if (key) {
            rememberedPath = path;
            rememberedKey = key;
        }
        return key;
    }

    void Forget()
    {
        rememberedPath.clear();
        rememberedKey = 0;
    }

    void Rollback()
    {
        // After some failures SQLite has done it by itself.
        if (!sqlite3_get_autocommit(Handle()))
            static_cast<void>(Execute("ROLLBACK"));
        EndBatch();
        Forget();
    }

    void EndBatch()
    {
        inBatch = false;
        hasLock = false;
        failure.reset();
    }

    [[nodiscard]] sqlite3* Handle() const { return store.database.get(); }

    OpenedStore store;
    ino_t journal;
    SqliteStatement findKey{Handle(), "SELECT id FROM reg_key WHERE path = ?1"};
    SqliteStatement insertKey{Handle(), "INSERT INTO reg_key(path) VALUES(?1) ON CONFLICT DO NOTHING"};
    SqliteStatement hasKey{Handle(), "SELECT 1 FROM reg_key WHERE id = ?1"};
    SqliteStatement deleteKey{Handle(), "DELETE FROM reg_key WHERE id = ?1"};
    SqliteStatement deleteValues{Handle(), "DELETE FROM reg_value WHERE key_id = ?1"};
    SqliteStatement queryValue{Handle(), "SELECT type, data FROM reg_value WHERE key_id = ?1 AND name = ?2"};
    SqliteStatement setValue{Handle(),
        "INSERT INTO reg_value(key_id, name, type, data) VALUES(?1, ?2, ?3, ?4)"
        " ON CONFLICT(key_id, name) DO UPDATE SET type = excluded.type, data = excluded.data"};
    // What lies below a key is enclosed by two paths, so that the index answers, which it does not for LIKE.
    SqliteStatement findLeaf{Handle(),
        "SELECT id FROM reg_key WHERE path = ?1"
        " AND NOT EXISTS (SELECT 1 FROM reg_key WHERE path >= ?2 AND path < ?3)"};
    SqliteStatement allBelow{Handle(), "SELECT path, id FROM reg_key WHERE path >= ?1 AND path < ?2"};
    SqliteStatement valuesBelow{Handle(),
        "SELECT path, type, data FROM reg_key JOIN reg_value ON key_id = id"
        " WHERE path >= ?1 AND path < ?2 AND name = ?3"};

    // The key last opened or created: a series of writes goes to one key, and looks it up once.
    std::string rememberedPath;
    KeyId rememberedKey = 0;

    bool inBatch = false;
    bool hasLock = false; // of the batch, which takes it with its first write
    std::optional<std::string> failure; // of the batch
    bool waitsForLocks = true;
};

} // namespace vantro
