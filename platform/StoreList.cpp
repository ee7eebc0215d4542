// The part of RegistryStore that reads and writes lists.

#include "platform/RegistryStore.h"
#include "platform/StoreConnection.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantro {

namespace {

constexpr auto kText = static_cast<std::int64_t>(RegType::Sz);

// What stands below a key.
struct Family {
    std::vector<std::pair<std::int32_t, RegKeyId>> elements; // the sub-keys named 1 to the last
    std::set<std::int32_t> parents; // numbers of sub-keys that have sub-keys themselves
    bool hasOthers = false; // than elements
};

Family ReadFamily(auto& connection, const Below& below, std::int32_t last)
{
    Family family;
    auto row = connection.allBelow.Run({below.begin, below.end});
    for (; connection.Found(row); row.Next()) {
        const std::string_view name = below.NameOf(row.View(0));
        const std::int32_t number = NumberNamed(name);
        if (number >= 1 && number <= last) {
            family.elements.emplace_back(number, row.Number(1));
            continue;
        }
        family.hasOthers = true;
        family.parents.insert(NumberNamed(name.substr(0, name.find('\\'))));
    }
    return family;
}

} // namespace

std::vector<std::int32_t> RegistryStore::NumberedSubKeys(std::string_view path, std::int32_t last)
{
    std::string buffer;
    const Family family = ReadFamily(*connection_, Below(StoredForm(path, buffer)), last);
    std::vector<std::int32_t> numbers;
    for (const auto& [number, key] : family.elements)
        numbers.push_back(number);
    std::ranges::sort(numbers);
    return numbers;
}

std::vector<std::optional<RegistryStore::StoredValue>> RegistryStore::QueryList(
    std::string_view path, std::string_view name, std::int32_t last)
{
    std::string buffer;
    const Below below(StoredForm(path, buffer));
    std::vector<std::optional<StoredValue>> list(static_cast<std::size_t>(std::max(last, 0)));
    auto row = connection_->valuesBelow.Run({below.begin, below.end, name});
    for (; connection_->Found(row); row.Next()) {
        const std::int32_t number = NumberNamed(below.NameOf(row.View(0)));
        if (number >= 1 && number <= last)
            list[static_cast<std::size_t>(number - 1)] = ValueIn(row, 1);
    }
    return list;
}

bool RegistryStore::ReplaceList(std::string_view path, std::int32_t last,
    std::span<const std::string_view> names, std::span<const std::string_view> texts)
{
    Connection& connection = *connection_;
    assert(connection.inBatch && texts.size() % names.size() == 0);
    std::string buffer;
    const std::string_view stored = StoredForm(path, buffer);
    if (stored.empty() || !connection.MayWrite())
        return false;
    const Below below(stored);
    const Family family = ReadFamily(connection, below, last);
    if (!family.hasOthers) // it would be deleted and made again
        connection.Write(connection.deleteValues, {connection.Find(stored)});
    std::vector<KeyId> keys(texts.size() / names.size());
    for (const auto& [number, key] : family.elements) {
        if (family.parents.contains(number) || !connection.Write(connection.deleteValues, {key}))
            continue;
        if (const auto place = static_cast<std::size_t>(number - 1); place < keys.size())
            keys[place] = key;
        else
            connection.Write(connection.deleteKey, {key});
    }
    connection.Forget(); // the key may be one of these
    CreateKey(stored);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const KeyId key = keys[i] ? keys[i] : CreateKey(below.begin + std::to_string(i + 1));
        for (std::size_t j = 0; j < names.size(); ++j)
            connection.Write(connection.setValue, {key, names[j], kText, texts[i * names.size() + j]});
    }
    return !connection.failure;
}

} // namespace vantro
