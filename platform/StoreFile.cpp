#include "platform/StoreFile.h"

#include "platform/PrivateFolder.h"
#include "platform/StoreFinding.h"
#include "platform/StoreFormat.h"
#include "platform/StoreInspection.h"
#include "platform/StoreSetAside.h"

#include <chrono>
#include <cstdio>
#include <new>
#include <utility>

namespace vantro {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kBusyLimit{2000};

int Execute(sqlite3* database, const char* constantSql)
{
    return sqlite3_exec(database, constantSql, nullptr, nullptr, nullptr);
}

std::string Utf8(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

Database Connect(const std::string& name, int flags)
{
    sqlite3* made = nullptr;
    sqlite3_open_v2(name.c_str(), &made, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    if (!made)
        throw std::bad_alloc();
    Database database(made);
    WaitForLocks(made, true);
    // RegistryStore deletes values with their keys and writes none without: left to the file's foreign key,
    // that journals each deletion by itself and makes a merge take half as long again.
    sqlite3_db_config(made, SQLITE_DBCONFIG_ENABLE_FKEY, 0, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    // A file that is not accepted must not be changed by closing it.
    sqlite3_db_config(made, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    Execute(made, "PRAGMA cell_size_check=ON");
    return database;
}

void SetPageLimit(sqlite3* database, int maxPages)
{
    if (maxPages > 0)
        SqliteStatement(database, "PRAGMA max_page_count=" + std::to_string(maxPages)).Run();
}

// Makes a file that was found usable one of ours to its last mark, and commits.
int WriteFormat(sqlite3* database, bool isBlank)
{
    int code = SQLITE_OK;
    if (isBlank && (code = Execute(database, kKeyTable)) == SQLITE_OK)
        code = Execute(database, kValueTable);
    if (code == SQLITE_OK)
        code = Execute(database, kWriteMarks);
    return code == SQLITE_OK ? Execute(database, "COMMIT") : code;
}

// Inspects, lays down the tables when there are none, and writes the file's marks, all in one transaction:
// the lock is waited for once, two programs cannot both lay down tables, and the write proves at every start
// that writing works. What is not accepted is left with the transaction open, for its connection is to be
// closed.
StoreFinding Accept(sqlite3* database, const StoreOptions& options)
{
    if (const int code = Execute(database, "BEGIN IMMEDIATE"); code != SQLITE_OK)
        return FindingOf(database, code);
    StoreInspection inspection(database);
    StoreFinding finding = inspection.Judge();
    if (finding == StoreFinding::Usable) {
        SetPageLimit(database, options.maxPages);
        finding = FindingOf(database, WriteFormat(database, inspection.IsBlank()));
    }
    if (finding != StoreFinding::Usable)
        return finding;
    // The cache holds a merge of 20,000 items, which else would be written and read again while it runs. The
    // journal of it is cut back afterwards. Deleted news need no overwriting.
    Execute(database,
        "PRAGMA synchronous=FULL; PRAGMA mmap_size=0; PRAGMA secure_delete=OFF; PRAGMA cache_size=-262144;"
        "PRAGMA journal_mode=WAL; PRAGMA journal_size_limit=4194304");
    sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    return finding;
}

bool CopyFrom(const std::string& name, int flags, sqlite3* into)
{
    const Database source = Connect(name, SQLITE_OPEN_READONLY | flags);
    WaitForLocks(source.get(), false); // its time has been spent
    sqlite3_backup* backup = sqlite3_backup_init(into, "main", source.get(), "main");
    const bool whole = backup && sqlite3_backup_step(backup, -1) == SQLITE_DONE;
    sqlite3_backup_finish(backup);
    return whole;
}

std::string ImmutableUri(const fs::path& file)
{
    std::string uri = "file:";
    for (const char c : Utf8(fs::absolute(file))) {
        char code[4] = {c, '\0'};
        if (c == '%' || c == '?' || c == '#')
            std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(c));
        uri += code;
    }
    return uri + "?immutable=1";
}

// A store in memory with what can be read of `file`, when `finding` leaves anything to be read.
Database OpenInMemory(const fs::path& file, StoreFinding finding)
{
    if (finding == StoreFinding::Busy || finding == StoreFinding::Full
        || finding == StoreFinding::NotWritable) {
        Database copy = Connect(":memory:", SQLITE_OPEN_READWRITE);
        // In a folder that cannot be written a file with a journal opens only when it is taken to stand
        // still. One that another program holds does not.
        const bool whole = CopyFrom(Utf8(file), 0, copy.get())
            || (finding != StoreFinding::Busy && CopyFrom(ImmutableUri(file), SQLITE_OPEN_URI, copy.get()));
        if (whole && Accept(copy.get(), {}) == StoreFinding::Usable)
            return copy;
    }
    Database empty = Connect(":memory:", SQLITE_OPEN_READWRITE);
    if (Accept(empty.get(), {}) != StoreFinding::Usable)
        throw std::bad_alloc();
    return empty;
}

} // namespace

OpenedStore OpenStoreFile(const fs::path& file, const StoreOptions& options)
{
    static_cast<void>(MakePrivateFolders(file.parent_path())); // a failure shows when the file is opened
    std::string before;
    for (bool again = false;; again = true) {
        Database database = Connect(Utf8(file), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        const StoreFinding finding = Accept(database.get(), options);
        if (finding == StoreFinding::Usable)
            return {std::move(database), true, before.empty() ? before : before + "a new one was begun."};
        database.reset();
        if (!again && (finding == StoreFinding::Damaged || finding == StoreFinding::Foreign)) {
            if (const auto name = SetStoreAside(file)) {
                before
                    = std::string(finding == StoreFinding::Damaged ? "The store was damaged"
                                                                   : "The store's file was another program's")
                    + " and was set aside as " + Utf8(name->filename()) + "; ";
                continue;
            }
        }
        std::string reason = ReasonNotKept(finding);
        if (!before.empty())
            reason.front() = 't';
        return {OpenInMemory(file, finding), false, before + reason + ", so marks are not kept."};
    }
}

void WaitForLocks(sqlite3* database, bool wait)
{
    sqlite3_busy_timeout(database, wait ? static_cast<int>(kBusyLimit.count()) : 0);
}

} // namespace vantro
