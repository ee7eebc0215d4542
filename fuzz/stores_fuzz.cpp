// A store's file with spoilt bytes, or cut: it opens, and what is rescued from it is sound.

#include "base/TextCoding.h"
#include "fuzz/Fuzz.h"
#include "platform/Files.h"
#include "platform/RegistryStore.h"
#include "platform/StoreFile.h"
#include "platform/StoreRescue.h"

#include <array>
#include <string>
#include <vector>

namespace vantro {

namespace {

constexpr std::string_view kList = "A\\List";
constexpr std::array<std::string_view, 2> kNames = {"Tag", "Title"};
constexpr int kItems = 40;

std::string MakeStore()
{
    const std::filesystem::path file = EmptyFolder("made") / "registry.db";
    {
        RegistryStore store(file);
        RegistryStore::Batch batch(store);
        std::vector<std::string> texts;
        for (int i = 0; i < kItems; ++i) {
            texts.push_back("Title " + std::to_string(i));
            texts.emplace_back(i % 8 == 0 ? 3000 : 10, 'x');
        }
        store.ReplaceList(kList, 0, kNames, std::vector<std::string_view>(texts.begin(), texts.end()));
        Require(!batch.Commit(), "a store is made");
    }
    return ReadWholeFile(file).value_or("");
}

bool IsSound(const std::filesystem::path& file)
{
    const Database database = Connect(file.string(), SQLITE_OPEN_READWRITE);
    SqliteStatement check(database.get(), "PRAGMA integrity_check(1)");
    const auto result = check.Run();
    return result.HasRow() && result.Text(0) == "ok";
}

// Reads all that is there, writes, and reads that.
void Use(RegistryStore& store, bool isSound)
{
    for (const std::string_view name : kNames)
        (void)store.QueryList(kList, name, kItems);
    (void)store.NumberedSubKeys(kList, kItems);
    const bool isWritten = store.SetValue(store.CreateKey("A\\New"), "n", RegType::Sz, "text");
    Require(isWritten || !isSound, "a sound store can be written");
    const auto read = store.QueryValue(store.OpenKey("a\\new"), "N");
    Require(!isSound || (read && read->data == decltype(read->data)("text")), "and holds what was written");
    if (isSound) {
        RegistryStore::Batch batch(store);
        store.ReplaceList(kList, kItems, kNames, std::vector<std::string_view>{"a", "b"});
        Require(!batch.Commit(), "a list in a sound store can be replaced");
    }
}

} // namespace

} // namespace vantro

void vantro::Try(std::string_view bytes)
{
    static const std::string whole = MakeStore();
    const std::string spoilt = Spoilt(whole, Input(bytes));
    const std::filesystem::path folder = EmptyFolder("stores");
    const std::filesystem::path file = Write("stores/registry.db", spoilt);
    {
        RegistryStore store(file);
        Require(IsUtf8(store.Notice()), "what is said is UTF-8");
        Require(!store.Notice().empty() || store.IsKept(), "a store that does not last says so");
        Use(store, false);
    }
    const std::filesystem::path rescued = folder / "rescued.db";
    const Database damaged = Connect(Write("stores/damaged.db", spoilt).string(), SQLITE_OPEN_READWRITE);
    if (!RescueStore(damaged.get(), rescued))
        return;
    Require(IsSound(rescued), "what is rescued is sound");
    RegistryStore store(rescued);
    Require(store.IsKept() && store.Notice().empty(), "what is rescued opens without a word");
    if (spoilt == whole)
        Require(
            store.QueryList(kList, "Title", kItems).back().has_value(), "all of a whole store is rescued");
    Use(store, true);
}
