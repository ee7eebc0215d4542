#include "platform/StoreFile.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace vantro {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kApplicationId = 0x56616e74; // "Vant"
constexpr std::int64_t kFormatVersion = 1;
constexpr std::chrono::milliseconds kBusyLimit{2000};
// The check takes 5 ms for each MiB. This size is some 20,000 items; a start with a larger one would be felt
// to wait.
constexpr std::int64_t kCheckLimitPages = (8LL << 20) / 4096;

constexpr const char* kKeyTable
    = "CREATE TABLE reg_key (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE COLLATE NOCASE)";
constexpr const char* kValueTable
    = "CREATE TABLE reg_value(key_id INTEGER NOT NULL REFERENCES reg_key(id) ON DELETE CASCADE,"
      " name TEXT NOT NULL COLLATE NOCASE, type INTEGER NOT NULL, data NOT NULL,"
      " PRIMARY KEY (key_id, name)) WITHOUT ROWID";

enum class Finding { Usable, Damaged, Foreign, Newer, Busy, Full, NotWritable };

Finding FindingOf(sqlite3* database, int code)
{
    switch (code & 0xff) {
    case SQLITE_OK:
    case SQLITE_DONE:
    case SQLITE_ROW: return Finding::Usable;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR: // the statements being constant, only what stands in the file can be at fault
        return Finding::Damaged;
    case SQLITE_BUSY:
    case SQLITE_LOCKED: return Finding::Busy;
    case SQLITE_FULL: return Finding::Full;
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
        if (const int system = sqlite3_system_errno(database); system == ENOSPC || system == EDQUOT)
            return Finding::Full;
        return Finding::NotWritable;
    default: return Finding::NotWritable;
    }
}

int Execute(sqlite3* database, const char* constant_sql)
{
    return sqlite3_exec(database, constant_sql, nullptr, nullptr, nullptr);
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

// Table texts are compared without blanks and case, as another tool may have laid them out differently.
std::string Squeezed(std::string_view sql)
{
    std::string squeezed;
    for (const char c : sql) {
        if (c >= 'A' && c <= 'Z')
            squeezed += static_cast<char>(c - 'A' + 'a');
        else if (c != ' ' && c != '\n' && c != '\t' && c != '\r')
            squeezed += c;
    }
    return squeezed;
}

// Looks at the file's own marks and content. Reads only.
class Inspection {
public:
    explicit Inspection(sqlite3* database) : database_(database) { }

    Finding Judge()
    {
        const std::int64_t id = Number("PRAGMA application_id");
        const std::int64_t version = Number("PRAGMA user_version");
        // Asked before the tables are looked at, which a newer version may write in ways not known here.
        if (id == kApplicationId && version > kFormatVersion)
            return Finding::Newer;
        blank_ = Number("SELECT count(*) FROM sqlite_schema") == 0 && id == 0;
        const bool fits = blank_ || HasOurTables();
        if (failure_ == SQLITE_OK && id != kApplicationId && !(id == 0 && fits))
            return Finding::Foreign;
        const bool sound = fits && (Number("PRAGMA page_count") > kCheckLimitPages || PassesCheck());
        if (failure_ != SQLITE_OK)
            return FindingOf(database_, failure_);
        return sound ? Finding::Usable : Finding::Damaged;
    }

    // Whether the tables are still to be laid down.
    [[nodiscard]] bool IsBlank() const { return blank_; }

private:
    std::int64_t Number(const char* sql)
    {
        SqliteStatement statement(database_, sql);
        const auto result = statement.Run();
        Note(result.Code());
        return result.HasRow() ? result.Number(0) : 0;
    }

    bool HasOurTables()
    {
        std::vector<std::string> found;
        SqliteStatement statement(database_,
            "SELECT sql FROM sqlite_schema WHERE name IN ('reg_key', 'reg_value') OR type = 'trigger' ORDER "
            "BY 1");
        auto result = statement.Run();
        for (; result.HasRow(); result.Next())
            found.push_back(Squeezed(result.Text(0)));
        Note(result.Code());
        return found == std::vector{Squeezed(kKeyTable), Squeezed(kValueTable)};
    }

    bool PassesCheck()
    {
        SqliteStatement statement(database_, "PRAGMA quick_check(1)");
        const auto result = statement.Run();
        Note(result.Code());
        return result.HasRow() && result.Text(0) == "ok";
    }

    void Note(int code)
    {
        if (failure_ == SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE)
            failure_ = code;
    }

    sqlite3* database_;
    int failure_ = SQLITE_OK;
    bool blank_ = false;
};

void SetPageLimit(sqlite3* database, int max_pages)
{
    if (max_pages > 0)
        SqliteStatement(database, "PRAGMA max_page_count=" + std::to_string(max_pages)).Run();
}

// Inspects, lays down the tables when there are none, and writes the file's marks, all in one transaction:
// the lock is waited for once, two programs cannot both lay down tables, and the write proves at every start
// that writing works. What is not accepted is left with the transaction open, for its connection is to be
// closed.
Finding Accept(sqlite3* database, const StoreOptions& options)
{
    if (const int code = Execute(database, "BEGIN IMMEDIATE"); code != SQLITE_OK)
        return FindingOf(database, code);
    Inspection inspection(database);
    Finding finding = inspection.Judge();
    if (finding == Finding::Usable) {
        SetPageLimit(database, options.max_pages);
        int code = SQLITE_OK;
        if (inspection.IsBlank() && (code = Execute(database, kKeyTable)) == SQLITE_OK)
            code = Execute(database, kValueTable);
        if (code == SQLITE_OK)
            code = Execute(database, "PRAGMA application_id=0x56616e74; PRAGMA user_version=1; COMMIT");
        finding = FindingOf(database, code);
    }
    if (finding != Finding::Usable)
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
Database OpenInMemory(const fs::path& file, Finding finding)
{
    if (finding == Finding::Busy || finding == Finding::Full || finding == Finding::NotWritable) {
        Database copy = Connect(":memory:", SQLITE_OPEN_READWRITE);
        // In a folder that cannot be written a file with a journal opens only when it is taken to stand
        // still. One that another program holds does not.
        const bool whole = CopyFrom(Utf8(file), 0, copy.get())
            || (finding != Finding::Busy && CopyFrom(ImmutableUri(file), SQLITE_OPEN_URI, copy.get()));
        if (whole && Accept(copy.get(), {}) == Finding::Usable)
            return copy;
    }
    Database empty = Connect(":memory:", SQLITE_OPEN_READWRITE);
    if (Accept(empty.get(), {}) != Finding::Usable)
        throw std::bad_alloc();
    return empty;
}

// Folders that are missing are made for the user alone. A failure shows when the file is opened.
void MakeFolder(const fs::path& folder)
{
    std::error_code ignored;
    if (folder.empty() || fs::exists(folder, ignored))
        return;
    MakeFolder(folder.parent_path());
    if (fs::create_directory(folder, ignored))
        fs::permissions(folder, fs::perms::owner_all, ignored);
}

std::string DateTime()
{
    const Database clock = Connect(":memory:", SQLITE_OPEN_READWRITE);
    SqliteStatement statement(clock.get(), "SELECT strftime('%Y%m%d-%H%M%S', 'now', 'localtime')");
    const auto result = statement.Run();
    return result.HasRow() ? result.Text(0) : std::string();
}

// The journals go first and the file last: were the program killed half way, the file would still be found in
// its place, while SQLite deletes a journal it finds without its file.
constexpr const char* kParts[] = {"-wal", "-journal", "-shm", ""};

fs::path WithSuffix(fs::path path, const std::string& suffix)
{
    return path += suffix;
}

// Renames the file and its journals to a name nothing has yet. The new name, or nothing when it cannot be
// done, and then all is as it was.
std::optional<fs::path> SetAside(const fs::path& file)
{
    const auto taken = [](const fs::path& name) {
        return std::any_of(std::begin(kParts), std::end(kParts), [&](const char* part) {
            std::error_code ignored;
            return fs::symlink_status(WithSuffix(name, part), ignored).type() != fs::file_type::not_found;
        });
    };
    const fs::path wanted = WithSuffix(file, ".damaged-" + DateTime());
    fs::path name = wanted;
    for (int number = 2; taken(name); ++number)
        name = WithSuffix(wanted, "-" + std::to_string(number));

    std::vector<const char*> moved;
    for (const char* part : kParts) {
        std::error_code failure;
        fs::rename(WithSuffix(file, part), WithSuffix(name, part), failure);
        if (!failure) {
            moved.push_back(part);
        } else if (failure != std::errc::no_such_file_or_directory) {
            for (const char* back : moved)
                fs::rename(WithSuffix(name, back), WithSuffix(file, back), failure);
            return std::nullopt;
        }
    }
    return name;
}

std::string NotKeptReason(Finding finding)
{
    switch (finding) {
    case Finding::Damaged: return "The store is damaged and cannot be set aside";
    case Finding::Foreign: return "The store's file is another program's and cannot be set aside";
    case Finding::Newer: return "The store was written by a newer version of this program";
    case Finding::Busy: return "The store is held by another program";
    case Finding::Full: return "The disk is full";
    case Finding::NotWritable:
    case Finding::Usable: break;
    }
    return "The store cannot be written";
}

} // namespace

OpenedStore OpenStoreFile(const fs::path& file, const StoreOptions& options)
{
    MakeFolder(file.parent_path());
    std::string before;
    for (bool again = false;; again = true) {
        Database database = Connect(Utf8(file), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        const Finding finding = Accept(database.get(), options);
        if (finding == Finding::Usable)
            return {std::move(database), true, before.empty() ? before : before + "a new one was begun."};
        database.reset();
        if (!again && (finding == Finding::Damaged || finding == Finding::Foreign)) {
            if (const auto name = SetAside(file)) {
                before = std::string(finding == Finding::Damaged ? "The store was damaged"
                                                                 : "The store's file was another program's")
                    + " and was set aside as " + Utf8(name->filename()) + "; ";
                continue;
            }
        }
        std::string reason = NotKeptReason(finding);
        if (!before.empty())
            reason.front() = 't';
        return {OpenInMemory(file, finding), false, before + reason + ", so marks are not kept."};
    }
}

void WaitForLocks(sqlite3* database, bool wait)
{
    sqlite3_busy_timeout(database, wait ? static_cast<int>(kBusyLimit.count()) : 0);
}

std::string FailureSentence(sqlite3* database, int code)
{
    switch (code & 0xff) {
    case SQLITE_NOMEM: return "There is not enough memory.";
    case SQLITE_TOOBIG: return "A text is too long to be stored.";
    default: break;
    }
    switch (FindingOf(database, code)) {
    case Finding::Full: return "The disk is full.";
    case Finding::Busy: return "The store is held by another program.";
    case Finding::Damaged: return "The store is damaged.";
    default: return "The store cannot be written.";
    }
}

} // namespace vantro
