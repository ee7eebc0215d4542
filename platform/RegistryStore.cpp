#include "platform/RegistryStore.h"

#include "base/Words.h"
#include "platform/Files.h"
#include "platform/PrivateFolder.h"
#include "platform/StoreCheck.h"
#include "platform/StoreConnection.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vantro {

RegistryStore::RegistryStore(const std::filesystem::path& file)
    : file_(file), connection_(std::make_unique<Connection>(file))
{
}

RegistryStore::~RegistryStore() = default;

void RegistryStore::Watch(Events events)
{
    events_ = std::move(events);
    if (IsKept())
        check_ = std::make_unique<StoreCheck>(
            file_, [this](DamagedStore damaged) { Rescue(std::move(damaged)); });
}

void RegistryStore::Rescue(DamagedStore damaged)
{
    const auto name
        = damaged.rescued.empty() ? std::nullopt : Exchange(damaged.rescued, Aside::FileAndItsJournals);
    if (!name) {
        events_.say(Words("The store is damaged, and what can be read of it cannot be written anew."));
        return;
    }
    events_.say(Words("The store was damaged and was set aside as %1; what could be read of it was kept.",
                    {name->filename().string()})
        + " " + Notice());
    events_.reread();
}

// What the connection has open stays whole, whatever becomes of its name.
void RegistryStore::KeepPlace()
{
    if (!events_.say || !IsKept())
        return;
    int moved = 0;
    sqlite3* database = connection_->Handle();
    static_cast<void>(sqlite3_file_control(database, "main", SQLITE_FCNTL_HAS_MOVED, &moved));
    if (moved == 0 && !connection_->HasLostJournal(file_))
        return;
    const std::filesystem::path made = NameOfNew(file_);
    (void)MakePrivateFolders(file_.parent_path());
    DeleteFileIfExists(made);
    const bool isCopied
        = SqliteStatement(database, "VACUUM INTO ?1").Run({made.string()}).Code() == SQLITE_DONE;
    const auto name = isCopied ? Exchange(made, Aside::FileAndStrayJournals) : std::nullopt;
    if (!name)
        events_.say(Words("The store was removed while the program ran, and cannot be written again."));
    else if (name->empty())
        events_.say(
            Words("The store was removed while the program ran, and was written again.") + (" " + Notice()));
    else if (moved == 0)
        events_.say(
            Words("The store's journal was removed while the program ran; the store was written again. What "
                  "was left was set aside as %1.",
                {name->filename().string()})
            + " " + Notice());
    else
        events_.say(Words("Another file had been put in the place of the store; it was set aside as %1.",
                        {name->filename().string()})
            + " " + Notice());
}

std::optional<std::filesystem::path> RegistryStore::Exchange(const std::filesystem::path& made, Aside what)
{
    // By now the journal's name may be that of another file's.
    sqlite3_db_config(connection_->Handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    connection_.reset();
    auto name = PutInPlace(made, file_, what);
    connection_ = std::make_unique<Connection>(file_);
    return name;
}

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
    if (!connection_->inBatch)
        KeepPlace();
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
    store_.KeepPlace();
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
