#include "feeds/ItemStore.h"

#include "base/TextCoding.h"
#include "settings/modRegistry.h"

#include <algorithm>
#include <cstddef>

namespace vantro {

namespace {

constexpr std::string_view kTotalItems = "TotalItems";
constexpr std::string_view kTag = "Tag";
// Beyond as many as are stored. What is lost by damage is less.
constexpr std::int32_t kMostMissing = 100;

// Whether the items may go up to this number, of which so many are stored.
bool IsCredible(std::int32_t number, std::int32_t stored)
{
    return number - stored <= kMostMissing || number - stored - kMostMissing <= stored;
}

} // namespace

FeedItem DecodeItem(std::span<const std::string_view> fields)
{
    FeedItem item;
    item.fields.reserve(fields.size());
    for (const std::string_view field : fields)
        item.fields.push_back(DecodeFeedText(field));
    return item;
}

std::int32_t ItemStore::Total() const
{
    return registry_.ReadRegValue(RegRoot, SiteKey(site_), kTotalItems).ToNumber();
}

std::int32_t ItemStore::Count() const
{
    const std::int32_t total = Total();
    if (IsCredible(total, 0))
        return total;
    std::int32_t stored = 0;
    std::int32_t last = 0;
    for (const std::int32_t number : registry_.NumberedSubKeys(RegRoot, SiteKey(site_), total)) {
        if (IsCredible(number, ++stored))
            last = number;
    }
    return IsCredible(total, stored) ? total : last;
}

std::string ItemStore::ReadText(std::int32_t item, std::string_view valueName) const
{
    return registry_.ReadRegValue(RegRoot, ItemKey(site_, item), valueName).ToText();
}

void ItemStore::WriteTag(std::int32_t item, std::string_view tag)
{
    registry_.WriteRegValue(RegRoot, ItemKey(site_, item), kTag, std::string(tag), RegType::Sz);
}

std::vector<std::string> ItemStore::ReadTexts(std::int32_t count, std::string_view valueName) const
{
    std::vector<std::string> texts;
    for (const RegValue& value : registry_.ReadRegList(RegRoot, SiteKey(site_), valueName, count))
        texts.push_back(value.ToText());
    return texts;
}

void ItemStore::Rewrite(
    std::int32_t oldCount, const std::vector<FeedItem>& items, const std::vector<ItemState>& states)
{
    std::vector<std::string_view> names;
    std::vector<std::size_t> places; // of the stored fields in those taken
    for (const SiteField& field : site_.stored) {
        names.push_back(field.value);
        const auto taken = std::ranges::find(site_.taken, field.value, &SiteField::value);
        places.push_back(static_cast<std::size_t>(taken - site_.taken.begin()));
    }
    names.push_back(kTag);
    std::vector<std::string_view> texts;
    texts.reserve(items.size() * names.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        for (const std::size_t place : places)
            texts.push_back(items[i].fields[place]);
        texts.push_back(states[i].tag);
    }
    const std::string siteKey = SiteKey(site_);
    registry_.ReplaceRegList(RegRoot, siteKey, std::max(oldCount, Total()), names, texts);
    registry_.WriteRegValue(
        RegRoot, siteKey, kTotalItems, static_cast<std::int32_t>(items.size()), RegType::Dword);
}

} // namespace vantro
