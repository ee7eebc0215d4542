#include "platform/RegistryStore.h"

#include "platform/KeyPath.h"
#include "platform/StoreFile.h"
#include "platform/StoreFinding.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <utility>

namespace vantro {

namespace {

// The bounds of what lies below a key in the order of the index.
struct Below {
    explicit Below(std::string_view path) : begin(path), end(path)
    {
        begin += '\\';
        end += static_cast<char>('\\' + 1);
    }
    std::string begin;
    std::string end;
};

} // namespace

struct RegistryStore::Connection {
    explicit Connection(OpenedStore&& opened) : store(std::move(opened)) { }

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
            if (!MayWrite() || !Succeeded(insertKey.Run({path.substr(0, end)}).Code()))
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
    SqliteStatement findKey{Handle(), "SELECT id FROM reg_key WHERE path = ?1"};
    SqliteStatement insertKey{Handle(), "INSERT INTO reg_key(path) VALUES(?1) ON CONFLICT DO NOTHING"};
    SqliteStatement hasKey{Handle(), "SELECT 1 FROM reg_key WHERE id = ?1"};
    // ?2 and ?3 enclose what lies below the key, so that the index answers, which it does not for LIKE.
    SqliteStatement findLeaf{Handle(),
        "SELECT id FROM reg_key WHERE path = ?1"
        " AND NOT EXISTS (SELECT 1 FROM reg_key WHERE path >= ?2 AND path < ?3)"};
    SqliteStatement allBelow{
        Handle(), "SELECT substr(path, length(?1) + 1) FROM reg_key WHERE path >= ?1 AND path < ?2"};
    SqliteStatement deleteValues{Handle(), "DELETE FROM reg_value WHERE key_id = ?1"};
    SqliteStatement deleteKey{Handle(), "DELETE FROM reg_key WHERE id = ?1"};
    SqliteStatement setValue{Handle(),
        "INSERT INTO reg_value(key_id, name, type, data) VALUES(?1, ?2, ?3, ?4)"
        " ON CONFLICT(key_id, name) DO UPDATE SET type = excluded.type, data = excluded.data"};
    SqliteStatement queryValue{Handle(), "SELECT type, data FROM reg_value WHERE key_id = ?1 AND name = ?2"};

    // The key last opened or created: a series of writes goes to one key, and looks it up once.
    std::string rememberedPath;
    KeyId rememberedKey = 0;

    bool inBatch = false;
    bool hasLock = false; // of the batch, which takes it with its first write
    std::optional<std::string> failure; // of the batch
    bool waitsForLocks = true;
};

RegistryStore::RegistryStore(const std::filesystem::path& file, const StoreOptions& options)
    : connection_(std::make_unique<Connection>(OpenStoreFile(file, options)))
{
}

RegistryStore::~RegistryStore() = default;

const std::string& RegistryStore::Notice() const
{
    return connection_->store.notice;
}

bool RegistryStore::IsKept() const
{
    return connection_->store.kept;
}

RegistryStore::KeyId RegistryStore::OpenKey(std::string_view path)
{
    std::string buffer;
    const std::string_view stored = StoredForm(path, buffer);
    if (stored.empty())
        return 0;
    if (stored == connection_->rememberedPath)
        return connection_->rememberedKey;
    return connection_->Remember(stored, connection_->Find(stored));
}

RegistryStore::KeyId RegistryStore::CreateKey(std::string_view path)
{
    std::string buffer;
    const std::string_view stored = StoredForm(path, buffer);
    // In a batch the key is most likely new, and its insertion finds out.
    const bool likelyNew = connection_->inBatch && connection_->IsBesideRemembered(stored);
    if (const KeyId key = likelyNew ? 0 : OpenKey(stored); key || stored.empty() || !connection_->MayWrite())
        return key;
    if (connection_->inBatch)
        return connection_->Remember(stored, connection_->CreateLevels(stored));
    Batch allLevels(*this);
    const KeyId key = CreateKey(stored);
    return allLevels.Commit() ? 0 : key;
}

bool RegistryStore::DeleteKey(std::string_view path)
{
    std::string buffer;
    const std::string_view stored = StoredForm(path, buffer);
    if (stored.empty() || !connection_->MayWrite())
        return false;
    const Below below(stored);
    if (!connection_->inBatch) {
        Batch keyAndValues(*this);
        return DeleteKey(stored) && !keyAndValues.Commit();
    }
    const KeyId key = connection_->FindLeaf(stored, below);
    connection_->Forget();
    return key && connection_->Succeeded(connection_->deleteValues.Run({key}).Code())
        && connection_->Succeeded(connection_->deleteKey.Run({key}).Code());
}

bool RegistryStore::SetValue(
    KeyId key, std::string_view name, RegType type, const std::variant<std::int64_t, std::string_view>& data)
{
    if (key == 0 || name.find('\0') != std::string_view::npos || !connection_->MayWrite()
        || !connection_->HasKey(key))
        return false;
    const auto number = static_cast<std::int64_t>(type);
    return connection_->Succeeded(connection_->setValue.Run({key, name, number, data}).Code());
}

std::optional<RegistryStore::StoredValue> RegistryStore::QueryValue(KeyId key, std::string_view name)
{
    const auto result = connection_->queryValue.Run({key, name});
    if (!connection_->Found(result))
        return std::nullopt;
    StoredValue value{static_cast<std::int32_t>(result.Number(0)), {}};
    if (result.IsNumber(1))
        value.data = result.Number(1);
    else
        value.data = result.Text(1);
    return value;
}

std::vector<std::int32_t> RegistryStore::NumberedSubKeys(std::string_view path, std::int32_t last)
{
    std::string buffer;
    const Below below(StoredForm(path, buffer));
    std::vector<std::int32_t> numbers;
    auto row = connection_->allBelow.Run({below.begin, below.end});
    for (; connection_->Found(row); row.Next()) {
        if (const std::int32_t number = NumberNamed(row.Text(0)); number >= 1 && number <= last)
            numbers.push_back(number);
    }
    std::ranges::sort(numbers);
    return numbers;
}

RegistryStore::Batch::Batch(RegistryStore& store) : store_(store)
{
    Connection& connection = *store_.connection_;
    assert(!connection.inBatch);
    connection.inBatch = true;
    if (const int code = connection.Execute("BEGIN"); code != SQLITE_OK)
        connection.NoteFailure(code);
}

RegistryStore::Batch::~Batch()
{
    if (store_.connection_->inBatch)
        store_.connection_->Rollback();
}

std::optional<std::string> RegistryStore::Batch::Commit()
{
    Connection& connection = *store_.connection_;
    assert(connection.inBatch);
    if (connection.hasLock && !connection.failure && connection.Succeeded(connection.Execute("COMMIT"))) {
        connection.EndBatch();
        return std::nullopt;
    }
    std::optional<std::string> failure = std::move(connection.failure);
    connection.Rollback(); // of a batch that has only read, too
    return failure;
}

} // namespace vantro
