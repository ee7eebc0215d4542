#include "platform/StoreFile.h"

#include "base/Words.h"
#include "platform/Descriptor.h"
#include "platform/Files.h"
#include "platform/PrivateFolder.h"
#include "platform/StoreFinding.h"
#include "platform/StoreFormat.h"
#include "platform/StoreInspection.h"
#include "platform/StoreJournal.h"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <system_error>
#include <unistd.h>
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

fs::path With(fs::path file, const char* suffix)
{
    return file += suffix;
}

bool HasBytes(const fs::path& file)
{
    std::error_code missing;
    const auto size = fs::file_size(file, missing);
    return !missing && size > 0;
}

void Sync(const fs::path& path)
{
    (void)fsync(Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)).Number());
}

} // namespace

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

int LayDownTables(sqlite3* database)
{
    const int code = Execute(database, kKeyTable);
    return code == SQLITE_OK ? Execute(database, kValueTable) : code;
}

namespace {

// Makes a file that was found usable one of ours to its last mark, and commits.
int WriteFormat(sqlite3* database, bool isBlank)
{
    int code = SQLITE_OK;
    if (isBlank)
        code = LayDownTables(database);
    if (code == SQLITE_OK)
        code = Execute(database, kWriteMarks);
    return code == SQLITE_OK ? Execute(database, "COMMIT") : code;
}

// Inspects, lays down the tables when there are none, and writes the file's marks, all in one transaction:
// the lock is waited for once, two programs cannot both lay down tables, and the write proves at every start
// that writing works. What is not accepted is left with the transaction open, for its connection is to be
// closed.
StoreFinding Accept(sqlite3* database)
{
    if (const int code = Execute(database, "BEGIN IMMEDIATE"); code != SQLITE_OK)
        return FindingOf(database, code);
    StoreInspection inspection(database);
    StoreFinding finding = inspection.Judge();
    if (finding == StoreFinding::Usable) {
        finding = FindingOf(database, WriteFormat(database, inspection.IsBlank()));
    }
    if (finding != StoreFinding::Usable)
        return finding;
    // The cache holds a merge of 20,000 items, which else would be written and read again while it runs. The
    // journal of it is cut back afterwards. Deleted news need no overwriting. What is read last makes the
    // journal's file, so that its loss can be noticed from now on.
    Execute(database,
        "PRAGMA synchronous=FULL; PRAGMA mmap_size=0; PRAGMA secure_delete=OFF; PRAGMA cache_size=-262144;"
        "PRAGMA journal_mode=WAL; PRAGMA journal_size_limit=4194304; PRAGMA user_version");
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

// In a folder that cannot be written a file opens only when it is taken to stand still, and its journal is
// not read then: with one, both are copied to where they can be written.
bool CopyFromUnwritable(const fs::path& file, sqlite3* into)
{
    if (!HasBytes(With(file, "-wal")))
        return CopyFrom(ImmutableUri(file), SQLITE_OPEN_URI, into);
    std::error_code failure;
    std::string folder = (fs::temp_directory_path(failure) / "vantro-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        return false;
    const fs::path copy = fs::path(folder) / file.filename();
    bool whole = true;
    for (const char* part : {"", "-wal"})
        whole = whole && fs::copy_file(With(file, part), With(copy, part), failure);
    whole = whole && CopyFrom(Utf8(copy), 0, into);
    fs::remove_all(folder, failure);
    return whole;
}

// A store in memory with what can be read of `file`, when `finding` leaves anything to be read.
Database OpenInMemory(const fs::path& file, StoreFinding finding)
{
    std::error_code ignored;
    const bool isLeft = finding == StoreFinding::Busy || finding == StoreFinding::Full
        || finding == StoreFinding::NotWritable;
    if (isLeft && fs::is_regular_file(file, ignored)) {
        Database copy = Connect(":memory:", SQLITE_OPEN_READWRITE);
        // One that another program holds does not stand still.
        const bool whole = CopyFrom(Utf8(file), 0, copy.get())
            || (finding != StoreFinding::Busy && CopyFromUnwritable(file, copy.get()));
        if (whole && Accept(copy.get()) == StoreFinding::Usable)
            return copy;
    }
    Database empty = Connect(":memory:", SQLITE_OPEN_READWRITE);
    if (Accept(empty.get()) != StoreFinding::Usable)
        throw std::bad_alloc();
    return empty;
}

// Makes the file appear at once and whole, so that one that is cut short is never one half made.
StoreFinding MakeFile(const fs::path& file)
{
    const fs::path made = NameOfNew(file);
    DeleteFileIfExists(made);
    Database database = Connect(Utf8(made), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    KeepFromOthers(made);
    int code = Execute(database.get(), "BEGIN IMMEDIATE");
    if (code == SQLITE_OK)
        code = WriteFormat(database.get(), true);
    const StoreFinding finding = FindingOf(database.get(), code);
    database.reset();
    if (finding == StoreFinding::Usable && PutInPlace(made, file, Aside::FileAndItsJournals))
        return finding;
    DeleteFileIfExists(made);
    return finding == StoreFinding::Usable ? StoreFinding::NotWritable : finding;
}

// What was found where the store is to be, and what was done about it.
struct Place {
    StoreFinding finding = StoreFinding::Usable; // in the file's place one can be opened
    std::string before = {}; // a clause: what was set aside
    const char* whenUsable = nullptr; // a sentence with the clause, when something was
};

Place SetAside(const fs::path& file, Aside what, const char* found, const char* whenUsable)
{
    if (const auto name = SetStoreAside(file, what))
        return {StoreFinding::Usable, Words(found, {Utf8(name->filename())}), whenUsable};
    return {StoreFinding::Damaged};
}

constexpr const char* kBegunAnew = Marked("%1; a new one was begun.");
constexpr std::size_t kSmallestFile = 512; // bytes: a page

// What SQLite would not notice, or not say.
Place LookAt(const fs::path& file)
{
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    const fs::path journal = With(file, "-wal");
    if (status.type() == fs::file_type::not_found) {
        if (HasBytes(journal) || HasBytes(With(file, "-journal")))
            return SetAside(file, Aside::FileAndItsJournals,
                Marked("The store was missing; its journal was there and was set aside as %1"), kBegunAnew);
        return {};
    }
    if (status.type() != fs::file_type::regular)
        return {StoreFinding::NotWritable}; // to open a pipe would wait for someone at its other end
    if (fs::file_size(file, ignored) < kSmallestFile)
        return {StoreFinding::Damaged};
    if (IsJournalDamaged(journal))
        return SetAside(file, Aside::JournalsAlone,
            Marked("The store's journal was damaged and was set aside as %1"),
            Marked("%1; what was stored last may be missing."));
    return {};
}

// Opens what stands there, or makes it.
StoreFinding OpenFile(const fs::path& file, Database& database)
{
    for (const char* part : {"", "-wal", "-shm"})
        KeepFromOthers(With(file, part));
    std::error_code ignored;
    if (!fs::exists(file, ignored)) {
        if (const StoreFinding made = MakeFile(file); made != StoreFinding::Usable)
            return made;
    }
    database = Connect(Utf8(file), SQLITE_OPEN_READWRITE);
    const StoreFinding finding = Accept(database.get());
    if (finding != StoreFinding::Usable)
        database.reset();
    return finding;
}

} // namespace

OpenedStore OpenStoreFile(const fs::path& file)
{
    static_cast<void>(MakePrivateFolders(file.parent_path())); // a failure shows when the file is opened
    Place place = LookAt(file);
    Database database;
    if (place.finding == StoreFinding::Usable)
        place.finding = OpenFile(file, database);
    if (place.finding == StoreFinding::Damaged || place.finding == StoreFinding::Foreign) {
        const StoreFinding found = place.finding;
        place = SetAside(file, Aside::FileAndItsJournals,
            found == StoreFinding::Damaged
                ? Marked("The store was damaged and was set aside as %1")
                : Marked("The store's file was another program's and was set aside as %1"),
            kBegunAnew);
        place.finding = place.finding == StoreFinding::Usable ? OpenFile(file, database) : found;
    }
    if (place.finding == StoreFinding::Usable)
        return {std::move(database), true,
            place.whenUsable != nullptr ? Words(place.whenUsable, {place.before}) : std::string()};
    const std::string reason = Words("%1, so marks are not kept.", {ReasonNotKept(place.finding)});
    return {OpenInMemory(file, place.finding), false,
        place.before.empty() ? reason : place.before + ". " + reason};
}

fs::path NameOfNew(const fs::path& file)
{
    return With(file, ".new");
}

std::optional<fs::path> PutInPlace(const fs::path& made, const fs::path& file, Aside what)
{
    std::error_code failure;
    fs::path name;
    if (fs::exists(file, failure)) {
        const auto aside = SetStoreAside(file, what);
        if (!aside)
            return std::nullopt;
        name = *aside;
    } else {
        for (const char* part : {"-wal", "-journal", "-shm"})
            DeleteFileIfExists(With(file, part));
    }
    Sync(made);
    fs::rename(made, file, failure);
    if (failure)
        return std::nullopt;
    Sync(file.parent_path()); // a name lasts only when its folder is on the disk
    return name;
}

void WaitForLocks(sqlite3* database, bool wait)
{
    sqlite3_busy_timeout(database, wait ? static_cast<int>(kBusyLimit.count()) : 0);
}

} // namespace vantro
