#include "settings/modRegistry.h"

#include "base/AsciiText.h"
#include "platform/RegistryStore.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>
#include <utility>

namespace vantro {

namespace {

constexpr int kDone = 0;
constexpr int kNoSuchValue = 2;
constexpr int kWriteFailed = 5;
constexpr int kOtherType = -1;

// Empty, which names no key, for a root this program does not use.
std::string FullPath(RootKey root, std::string_view keyPath)
{
    if (root != RootKey::LocalMachine)
        return {};
    std::string path = "HKEY_LOCAL_MACHINE\\";
    path += keyPath;
    return path;
}

std::int32_t Clamped(std::int64_t number)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

std::int32_t NumberAtStartOf(std::string_view text)
{
    text = Trim(text);
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    std::int32_t number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc::result_out_of_range)
        return text.starts_with('-') ? std::numeric_limits<std::int32_t>::min()
                                     : std::numeric_limits<std::int32_t>::max();
    return number;
}

// QueryValueData() of a value that is there. `value` is Empty before.
int Convert(RegistryStore::StoredValue&& stored, RegValue& value)
{
    if (auto* text = std::get_if<std::string>(&stored.data); text && stored.type == int(RegType::Sz)) {
        if (!text->empty())
            value = RegValue(std::move(*text));
        return kDone;
    }
    if (const auto* number = std::get_if<std::int64_t>(&stored.data);
        number && stored.type == int(RegType::Dword)) {
        value = RegValue(Clamped(*number));
        return kDone;
    }
    return kOtherType;
}

} // namespace

std::int32_t RegValue::ToNumber() const
{
    if (const auto* number = std::get_if<std::int32_t>(&value_))
        return *number;
    const auto* text = std::get_if<std::string>(&value_);
    return text ? NumberAtStartOf(*text) : 0;
}

std::string RegValue::ToText() const
{
    if (const auto* number = std::get_if<std::int32_t>(&value_))
        return std::to_string(*number);
    const auto* text = std::get_if<std::string>(&value_);
    return text ? *text : std::string();
}

void modRegistry::CreateRegKey(RootKey root, std::string_view keyPath)
{
    store_.CreateKey(FullPath(root, keyPath));
}

void modRegistry::DeleteRegKey(RootKey root, std::string_view keyPath)
{
    store_.DeleteKey(FullPath(root, keyPath));
}

void modRegistry::WriteRegValue(RootKey root, std::string_view keyPath, std::string_view valueName,
    const RegValue& value, RegType valueType)
{
    SetValueData(store_.OpenKey(FullPath(root, keyPath)), valueName, valueType, value);
}

RegValue modRegistry::ReadRegValue(RootKey root, std::string_view keyPath, std::string_view valueName)
{
    RegValue value;
    QueryValueData(store_.OpenKey(FullPath(root, keyPath)), valueName, value);
    return value;
}

std::vector<std::int32_t> modRegistry::NumberedSubKeys(
    RootKey root, std::string_view keyPath, std::int32_t last)
{
    return store_.NumberedSubKeys(FullPath(root, keyPath), last);
}

std::vector<RegValue> modRegistry::ReadRegList(
    RootKey root, std::string_view keyPath, std::string_view valueName, std::int32_t last)
{
    auto stored = store_.QueryList(FullPath(root, keyPath), valueName, last);
    std::vector<RegValue> values(stored.size());
    for (std::size_t i = 0; i < stored.size(); ++i) {
        if (stored[i])
            Convert(std::move(*stored[i]), values[i]);
    }
    return values;
}

void modRegistry::ReplaceRegList(RootKey root, std::string_view keyPath, std::int32_t last,
    std::span<const std::string_view> valueNames, std::span<const std::string_view> texts)
{
    store_.ReplaceList(FullPath(root, keyPath), last, valueNames, texts);
}

std::optional<std::string> modRegistry::StoreTogether(const std::function<void()>& writes)
{
    RegistryStore::Batch batch(store_);
    writes();
    return batch.Commit();
}

int modRegistry::SetValueData(
    RegistryStore::KeyId openKey, std::string_view valueName, RegType valueType, const RegValue& value)
{
    switch (valueType) {
    case RegType::Sz:
        return store_.SetValue(openKey, valueName, valueType, value.ToText()) ? kDone : kWriteFailed;
    case RegType::Dword:
        return store_.SetValue(openKey, valueName, valueType, std::int64_t{value.ToNumber()}) ? kDone
                                                                                              : kWriteFailed;
    }
    return kDone;
}

int modRegistry::QueryValueData(RegistryStore::KeyId openKey, std::string_view valueName, RegValue& value)
{
    value = RegValue();
    auto stored = store_.QueryValue(openKey, valueName);
    return stored ? Convert(std::move(*stored), value) : kNoSuchValue;
}

} // namespace vantro
