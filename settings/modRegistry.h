#pragma once

#include "platform/RegType.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vantro {

class RegistryStore;

// Predefined root keys, with the numbers the registry gives them.
enum class RootKey : std::uint32_t { LocalMachine = 0x80000002 };

// The key of the program, below which all that it stores stands.
inline constexpr RootKey RegRoot = RootKey::LocalMachine;
inline constexpr std::string_view RegPath = "Software\\Vantro";

// What a read returns. Empty stands for a value that is missing, unreadable, of another type, or an empty
// text; it equals 0 as a number and "" as a text.
class RegValue {
public:
    RegValue() = default;
    // cppcheck-suppress noExplicitConstructor ; a number is a value,
    RegValue(std::int32_t number) : value_(number) { }
    // cppcheck-suppress noExplicitConstructor ; and so is a text,
    RegValue(std::string text) : value_(std::move(text)) { }
    // cppcheck-suppress noExplicitConstructor ; however it is written
    RegValue(const char* text) : value_(std::string(text)) { }
    RegValue(bool) = delete; // say whether 1 or -1 is meant by true

    [[nodiscard]] bool IsEmpty() const { return std::holds_alternative<std::monostate>(value_); }
    [[nodiscard]] bool IsNumber() const { return std::holds_alternative<std::int32_t>(value_); }

    // The number; of a text the number its start spells (0 if none, clamped to 32 bits); 0 when Empty.
    [[nodiscard]] std::int32_t ToNumber() const;
    // The text; of a number its decimal form; "" when Empty.
    [[nodiscard]] std::string ToText() const;

    friend bool operator==(const RegValue& value, std::int32_t number) { return value.ToNumber() == number; }
    friend bool operator==(const RegValue& value, std::string_view text) { return value.ToText() == text; }

private:
    std::variant<std::monostate, std::int32_t, std::string> value_;
};

// The only road to the persistent values. Each operation opens the key it needs, does one thing and closes
// it. No failure reaches a caller: a read that finds nothing gives Empty, a write that cannot be done is
// lost. Who has to know writes inside StoreTogether(). Interface thread only.
class modRegistry {
public:
    explicit modRegistry(RegistryStore& store) : store_(store) { }

    // Creates every missing level of `keyPath`; an existing key is left as it is.
    void CreateRegKey(RootKey root, std::string_view keyPath);
    // Deletes one key with its values. A key that has sub-keys stays, and so do they.
    void DeleteRegKey(RootKey root, std::string_view keyPath);
    // Writes into an existing key; a missing key is not created.
    void WriteRegValue(RootKey root, std::string_view keyPath, std::string_view valueName,
        const RegValue& value, RegType valueType);
    [[nodiscard]] RegValue ReadRegValue(RootKey root, std::string_view keyPath, std::string_view valueName);

    // The sub-keys of `keyPath` that are named by a number from 1 to `last`, in ascending order.
    [[nodiscard]] std::vector<std::int32_t> NumberedSubKeys(
        RootKey root, std::string_view keyPath, std::int32_t last);

    // Lists, as RegistryStore has them: what ReadRegValue() gives for each key, and ReplaceList() itself.
    [[nodiscard]] std::vector<RegValue> ReadRegList(
        RootKey root, std::string_view keyPath, std::string_view valueName, std::int32_t last);
    // REQUIRES: inside StoreTogether().
    void ReplaceRegList(RootKey root, std::string_view keyPath, std::int32_t last,
        std::span<const std::string_view> valueNames, std::span<const std::string_view> texts);

    // Runs `writes` and stores all it writes, or nothing of it. Nothing on success, else the reason in a
    // sentence. Where nothing is written nothing fails but reading, and a read costs a third of what it does
    // outside. REQUIRES: no batch of the store is alive.
    [[nodiscard]] std::optional<std::string> StoreTogether(const std::function<void()>& writes);

    // The inner halves of WriteRegValue() and ReadRegValue(), on a key that is open. They return 0 on success
    // and the registry's number otherwise: 2 for a read that finds no value, 5 for a write that failed. A
    // read of a value that is neither text nor number returns -1. `value` is Empty unless a number or a text
    // that is not empty was read. A write of any other type than RegType's does nothing and returns 0.
    int SetValueData(RegKeyId openKey, std::string_view valueName, RegType valueType, const RegValue& value);
    int QueryValueData(RegKeyId openKey, std::string_view valueName, RegValue& value);

private:
    RegistryStore& store_;
};

} // namespace vantro
