#include "platform/RegistryStore.h"

#include "platform/StoreConnection.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vantro {

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
    return key && connection_->Write(connection_->deleteValues, {key})
        && connection_->Write(connection_->deleteKey, {key});
}

bool RegistryStore::SetValue(
    KeyId key, std::string_view name, RegType type, const std::variant<std::int64_t, std::string_view>& data)
{
    if (key == 0 || name.find('\0') != std::string_view::npos || !connection_->MayWrite()
        || !connection_->HasKey(key))
        return false;
    const auto number = static_cast<std::int64_t>(type);
    return connection_->Write(connection_->setValue, {key, name, number, data});
}

std::optional<RegistryStore::StoredValue> RegistryStore::QueryValue(KeyId key, std::string_view name)
{
    const auto result = connection_->queryValue.Run({key, name});
    if (!connection_->Found(result))
        return std::nullopt;
    return ValueIn(result, 0);
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
