#include "platform/RegistryStore.h"

#include "platform/KeyPath.h"
#include "platform/StoreFile.h"

#include <algorithm>
#include <cassert>
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
        if (in_batch && !failure)
            failure = FailureSentence(Handle(), code);
        if ((code & 0xff) == SQLITE_BUSY)
            SetPatient(false);
    }

    void SetPatient(bool patient)
    {
        if (std::exchange(waits_for_locks, patient) != patient)
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
        if (!in_batch || has_lock || failure)
            return !failure;
        // SQLite does not wait for the lock inside a transaction that has read. What another program wrote
        // before the lock was there may have taken the remembered key.
        has_lock = Succeeded(Execute("COMMIT; BEGIN IMMEDIATE"));
        Forget();
        return has_lock;
    }

    [[nodiscard]] int Execute(const char* constant_sql) const
    {
        return sqlite3_exec(Handle(), constant_sql, nullptr, nullptr, nullptr);
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
        const auto result = find_key.Run({path});
        return Found(result) ? result.Number(0) : 0;
    }

    KeyId FindLeaf(std::string_view path, const Below& below)
    {
        const auto result = find_leaf.Run({path, below.begin, below.end});
        return Found(result) ? result.Number(0) : 0;
    }

    // Stands in for the file's foreign key, see StoreFile.cpp. A write to a key that has gone is lost, and
    // nothing is wrong with the store.
    [[nodiscard]] bool HasKey(KeyId key) { return key == remembered_key || Found(has_key.Run({key})); }

    // The keys of a list are created one after the other: the level above them needs no looking up.
    [[nodiscard]] bool IsBesideRemembered(std::string_view path) const
    {
        return remembered_key && ParentOf(path) == ParentOf(remembered_path);
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
            if (!MayWrite() || !Succeeded(insert_key.Run({path.substr(0, end)}).Code()))
                return 0;
        }
        return sqlite3_changes(Handle()) == 1 ? sqlite3_last_insert_rowid(Handle()) : Find(path);
    }

    KeyId Remember(std::string_view path, KeyId key)
    {
        if (key) {
            remembered_path = path;
            remembered_key = key;
        }
        return key;
    }

    void Forget()
    {
        remembered_path.clear();
        remembered_key = 0;
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
        in_batch = false;
        has_lock = false;
        failure.reset();
    }

    [[nodiscard]] sqlite3* Handle() const { return store.database.get(); }

    OpenedStore store;
    SqliteStatement find_key{Handle(), "SELECT id FROM reg_key WHERE path = ?1"};
    SqliteStatement insert_key{Handle(), "INSERT INTO reg_key(path) VALUES(?1) ON CONFLICT DO NOTHING"};
    SqliteStatement has_key{Handle(), "SELECT 1 FROM reg_key WHERE id = ?1"};
    // ?2 and ?3 enclose what lies below the key, so that the index answers, which it does not for LIKE.
    SqliteStatement find_leaf{Handle(),
        "SELECT id FROM reg_key WHERE path = ?1"
        " AND NOT EXISTS (SELECT 1 FROM reg_key WHERE path >= ?2 AND path < ?3)"};
    SqliteStatement all_below{
        Handle(), "SELECT substr(path, length(?1) + 1) FROM reg_key WHERE path >= ?1 AND path < ?2"};
    SqliteStatement delete_values{Handle(), "DELETE FROM reg_value WHERE key_id = ?1"};
    SqliteStatement delete_key{Handle(), "DELETE FROM reg_key WHERE id = ?1"};
    SqliteStatement set_value{Handle(),
        "INSERT INTO reg_value(key_id, name, type, data) VALUES(?1, ?2, ?3, ?4)"
        " ON CONFLICT(key_id, name) DO UPDATE SET type = excluded.type, data = excluded.data"};
    SqliteStatement query_value{Handle(), "SELECT type, data FROM reg_value WHERE key_id = ?1 AND name = ?2"};

    // The key last opened or created: a series of writes goes to one key, and looks it up once.
    std::string remembered_path;
    KeyId remembered_key = 0;

    bool in_batch = false;
    bool has_lock = false; // of the batch, which takes it with its first write
    std::optional<std::string> failure; // of the batch
    bool waits_for_locks = true;
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
    if (stored == connection_->remembered_path)
        return connection_->remembered_key;
    return connection_->Remember(stored, connection_->Find(stored));
}

RegistryStore::KeyId RegistryStore::CreateKey(std::string_view path)
{
    std::string buffer;
    const std::string_view stored = StoredForm(path, buffer);
    // In a batch the key is most likely new, and its insertion finds out.
    const bool likely_new = connection_->in_batch && connection_->IsBesideRemembered(stored);
    if (const KeyId key = likely_new ? 0 : OpenKey(stored); key || stored.empty() || !connection_->MayWrite())
        return key;
    if (connection_->in_batch)
        return connection_->Remember(stored, connection_->CreateLevels(stored));
    Batch all_levels(*this);
    const KeyId key = CreateKey(stored);
    return all_levels.Commit() ? 0 : key;
}

bool RegistryStore::DeleteKey(std::string_view path)
{
    std::string buffer;
    const std::string_view stored = StoredForm(path, buffer);
    if (stored.empty() || !connection_->MayWrite())
        return false;
    const Below below(stored);
    if (!connection_->in_batch) {
        Batch key_and_values(*this);
        return DeleteKey(stored) && !key_and_values.Commit();
    }
    const KeyId key = connection_->FindLeaf(stored, below);
    connection_->Forget();
    return key && connection_->Succeeded(connection_->delete_values.Run({key}).Code())
        && connection_->Succeeded(connection_->delete_key.Run({key}).Code());
}

bool RegistryStore::SetValue(
    KeyId key, std::string_view name, RegType type, const std::variant<std::int64_t, std::string_view>& data)
{
    if (key == 0 || name.find('\0') != std::string_view::npos || !connection_->MayWrite()
        || !connection_->HasKey(key))
        return false;
    const auto number = static_cast<std::int64_t>(type);
    return connection_->Succeeded(connection_->set_value.Run({key, name, number, data}).Code());
}

std::optional<RegistryStore::StoredValue> RegistryStore::QueryValue(KeyId key, std::string_view name)
{
    const auto result = connection_->query_value.Run({key, name});
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
    auto row = connection_->all_below.Run({below.begin, below.end});
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
    assert(!connection.in_batch);
    connection.in_batch = true;
    if (const int code = connection.Execute("BEGIN"); code != SQLITE_OK)
        connection.NoteFailure(code);
}

RegistryStore::Batch::~Batch()
{
    if (store_.connection_->in_batch)
        store_.connection_->Rollback();
}

std::optional<std::string> RegistryStore::Batch::Commit()
{
    Connection& connection = *store_.connection_;
    assert(connection.in_batch);
    if (connection.has_lock && !connection.failure && connection.Succeeded(connection.Execute("COMMIT"))) {
        connection.EndBatch();
        return std::nullopt;
    }
    std::optional<std::string> failure = std::move(connection.failure);
    connection.Rollback(); // of a batch that has only read, too
    return failure;
}

} // namespace vantro
