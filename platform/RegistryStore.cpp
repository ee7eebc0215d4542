#include "platform/RegistryStore.h"

#include "platform/StoreFile.h"

#include <algorithm>
#include <cassert>

namespace vantro {
namespace {

// As it stands in the file: one separator between two levels, none at the ends. Empty when it names no key; a
// zero byte cannot stand in a name, as NOCASE does not look beyond it.
std::string_view StoredForm(std::string_view path, std::string& buffer)
{
    if (path.find('\0') != std::string_view::npos)
        return {};
    while (path.ends_with('\\'))
        path.remove_suffix(1);
    while (path.starts_with('\\'))
        path.remove_prefix(1);
    if (path.find("\\\\") == std::string_view::npos)
        return path;
    buffer.clear();
    for (const char c : path) {
        if (c != '\\' || buffer.back() != '\\')
            buffer += c;
    }
    return buffer;
}

std::string_view ParentOf(std::string_view path)
{
    const std::size_t separator = path.rfind('\\');
    return separator == std::string_view::npos ? std::string_view() : path.substr(0, separator);
}

} // namespace

struct RegistryStore::Connection {
    explicit Connection(OpenedStore&& opened) : store(std::move(opened)) { }

    // What a write that ran to its end returned. The first failure in a batch decides about all of it.
    bool Succeeded(int code)
    {
        if (code == SQLITE_DONE)
            return true;
        if (in_batch && !failure)
            failure = FailureSentence(Handle(), code);
        return false;
    }

    [[nodiscard]] bool RefusesWrites() const { return in_batch && failure; }

    KeyId Find(std::string_view path)
    {
        const auto result = find_key.Run({path});
        return result.HasRow() ? result.Number(0) : 0;
    }

    KeyId FindLeaf(std::string_view path, std::string_view below, std::string_view beyond)
    {
        const auto result = find_leaf.Run({path, below, beyond});
        return Found(result) ? result.Number(0) : 0;
    }

    // Stands in for the file's foreign key, see StoreFile.cpp. A write to a key that has gone is lost, and
    // nothing is wrong with the store.
    [[nodiscard]] bool HasKey(KeyId key)
    {
        return key != 0 && (key == remembered_key || Found(has_key.Run({key})));
    }

    // A look-up that belongs to a write fails as the write would.
    bool Found(const SqliteStatement::Result& result)
    {
        if (!result.HasRow())
            Succeeded(result.Code());
        return result.HasRow();
    }

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
            if (!Succeeded(insert_key.Run({path.substr(0, end)}).Code()))
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
            sqlite3_exec(Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
        in_batch = false;
        failure.reset();
        Forget();
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
    std::optional<std::string> failure; // of the batch
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
    if (const KeyId key = likely_new ? 0 : OpenKey(stored);
        key || stored.empty() || connection_->RefusesWrites())
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
    if (stored.empty() || connection_->RefusesWrites())
        return false;
    const std::string below = std::string(stored) + '\\';
    const std::string beyond = std::string(stored) + static_cast<char>('\\' + 1);
    if (!connection_->in_batch) {
        Batch key_and_values(*this);
        return DeleteKey(stored) && !key_and_values.Commit();
    }
    const KeyId key = connection_->FindLeaf(stored, below, beyond);
    connection_->Forget();
    return key && connection_->Succeeded(connection_->delete_values.Run({key}).Code())
        && connection_->Succeeded(connection_->delete_key.Run({key}).Code());
}

bool RegistryStore::SetValue(
    KeyId key, std::string_view name, RegType type, const std::variant<std::int64_t, std::string_view>& data)
{
    if (!connection_->HasKey(key) || name.find('\0') != std::string_view::npos
        || connection_->RefusesWrites())
        return false;
    const auto number = static_cast<std::int64_t>(type);
    return connection_->Succeeded(connection_->set_value.Run({key, name, number, data}).Code());
}

std::optional<RegistryStore::StoredValue> RegistryStore::QueryValue(KeyId key, std::string_view name)
{
    const auto result = connection_->query_value.Run({key, name});
    if (!result.HasRow())
        return std::nullopt;
    StoredValue value{static_cast<std::int32_t>(result.Number(0)), {}};
    if (result.IsNumber(1))
        value.data = result.Number(1);
    else
        value.data = result.Text(1);
    return value;
}

RegistryStore::Batch::Batch(RegistryStore& store) : store_(store)
{
    Connection& connection = *store_.connection_;
    assert(!connection.in_batch);
    connection.in_batch = true;
    if (const int code = sqlite3_exec(connection.Handle(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
        code != SQLITE_OK)
        connection.failure = FailureSentence(connection.Handle(), code);
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
    std::optional<std::string> failure = connection.failure;
    if (!failure) {
        const int code = sqlite3_exec(connection.Handle(), "COMMIT", nullptr, nullptr, nullptr);
        if (code == SQLITE_OK) {
            connection.in_batch = false;
            return std::nullopt;
        }
        failure = FailureSentence(connection.Handle(), code);
    }
    connection.Rollback();
    return failure;
}

} // namespace vantro
