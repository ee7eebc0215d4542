#pragma once

#include "platform/RegType.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vantro {

struct DamagedStore;
class StoreCheck;
enum class Aside : int;

// A tree of keys with typed values in one SQLite file, in the manner of a registry: key paths ("A\B\C", from
// the root's name down) and value names match without regard to the case of ASCII letters; a separator that
// is doubled or stands at an end of a path counts for nothing. Interface thread only. docs/store-format.md
// describes the file.
//
// Opening never fails: a file that is damaged or foreign is set aside under a new name beside it and a new
// one begun; a file of a newer version, one that cannot be written and one that another program holds for
// over 2 s are left untouched, and the store lives in memory for this run (holding what could be read).
// Notice() then says so.
//
// A write waits up to 2 s for another program that holds the file. Once that was in vain, writes fail at once
// until one succeeds.
class RegistryStore {
public:
    using KeyId = RegKeyId;
    struct StoredValue {
        std::int32_t type = 0; // RegType, or whatever stands in the file
        std::variant<std::int64_t, std::string> data;
    };

    // Makes the folder (mode 0700) and the file when they are missing.
    explicit RegistryStore(const std::filesystem::path& file);
    ~RegistryStore();
    RegistryStore(const RegistryStore&) = delete;
    RegistryStore& operator=(const RegistryStore&) = delete;

    // A sentence for the user when the store is not what he would expect; empty when all is well.
    [[nodiscard]] const std::string& Notice() const;
    // Whether what is written is there at the next start.
    [[nodiscard]] bool IsKept() const;

    // Tells what happens to the file while the program runs. Both are called from the main loop, `say` also
    // in the middle of a write.
    struct Events {
        std::function<void(const std::string& sentence)> say;
        std::function<void()> reread; // what was read before may have been damaged
    };
    // Looks the file through, in the background, and takes from a damaged one what can be read of it. From
    // now on a file that was removed, renamed or replaced is written again before the next write.
    void Watch(Events events);

    // 0 when there is no such key or, as for all reads, when it cannot be read.
    [[nodiscard]] KeyId OpenKey(std::string_view path);
    // Creates every missing level, or none; an existing key is opened. 0 on failure.
    KeyId CreateKey(std::string_view path);
    // False, and nothing is changed, when the key is missing or has sub-keys.
    bool DeleteKey(std::string_view path);
    // Durable when it returns true, unless a Batch is open. False when there is no such key or the write
    // failed. Data is kept byte for byte, zero bytes included.
    bool SetValue(KeyId key, std::string_view name, RegType type,
        const std::variant<std::int64_t, std::string_view>& data);
    [[nodiscard]] std::optional<StoredValue> QueryValue(KeyId key, std::string_view name);
    // The sub-keys whose names are numbers from 1 to `last`, written in decimal without leading zeros; in
    // ascending order. Costs what is stored below the key.
    [[nodiscard]] std::vector<std::int32_t> NumberedSubKeys(std::string_view path, std::int32_t last);

    // A list stands in keys named 1, 2 ... with values of the same names each.

    // The value of that name of each of the keys 1 to `last` below `path`, at its number less one; nothing
    // where there is none. Costs a fraction of reading them one by one, and what is stored below the key.
    [[nodiscard]] std::vector<std::optional<StoredValue>> QueryList(
        std::string_view path, std::string_view name, std::int32_t last);
    // Leaves what deleting the keys 1 to `last` below `path` and then `path` itself, and creating it again
    // with keys that hold these texts, key by key, would leave; as ever, keys with sub-keys are not deleted.
    // Takes half of the time, as keys that come again stay where they are. False when a write failed.
    // REQUIRES: a Batch is open, and names are distinct and without a zero byte.
    bool ReplaceList(std::string_view path, std::int32_t last, std::span<const std::string_view> names,
        std::span<const std::string_view> texts);

    // Makes all writes of its lifetime one transaction: destroyed without Commit(), none of them happened.
    // After a write or a read that failed the other writes of the batch do nothing; that something is missing
    // is no failure. The file's lock is taken with the first write: a batch that only reads, for which a read
    // costs a third, disturbs no other program and waits for none. What it has read until then, another
    // program may change before the lock is there. REQUIRES: no other Batch of this store is alive.
    class Batch {
    public:
        explicit Batch(RegistryStore& store);
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;
        // Nothing on success, and then all is durable. Else the reason in a sentence ("The disk is full."),
        // also when an earlier write or read of the batch failed; nothing of the batch is then stored. Called
        // once.
        [[nodiscard]] std::optional<std::string> Commit();

    private:
        RegistryStore& store_;
    };

private:
    struct Connection;

    void Rescue(DamagedStore damaged);
    void KeepPlace();
    // Uses `made` in the place of the file, which is set aside. As PutInPlace().
    std::optional<std::filesystem::path> Exchange(const std::filesystem::path& made, Aside what);

    std::filesystem::path file_;
    Events events_;
    std::unique_ptr<Connection> connection_;
    std::unique_ptr<StoreCheck> check_;
};

} // namespace vantro
