#include "settings/modRegistry.h"
#include "tests/support/FeedFixture.h"

#include <limits>

namespace vantro {

using ItemStoreTest = FeedFixture;

TEST_F(ItemStoreTest, HasAsManyItemsAsAreStoredWhateverItsTotalSays)
{
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::string site = SiteKey(modXBINS);
    const std::tuple<std::int32_t, std::size_t, std::vector<std::int32_t>> cases[] = {
        {-1, 0, {1, 2, 3, 2'000'000}},
        {2, 2, {1, 2, 3, 2'000'000}},
        {104, 104, {1, 2, 2'000'000}}, // two are stored, so 102 missing are still believed
        {105, 3, {1, 2, 2'000'000}},
        {2'000'000, 3, {1, 2}},
        {kMost, 3, {1, 2}},
    };
    for (const auto& [total, count, left] : cases) {
        SCOPED_TRACE(total);
        Titles titles{"A", "", "C"};
        titles.resize(count);
        ReceiveTitles(modXBINS, {"A", "B", "C"});
        registry_->DeleteRegKey(RegRoot, ItemKey(modXBINS, 2));
        for (const char* name : {"\\2000000", "\\01", "\\+3", "\\-4", "\\5x", "\\2147483648"})
            registry_->CreateRegKey(RegRoot, site + name);
        registry_->CreateRegKey(RegRoot, ItemKey(modXBINS, 1) + "\\x"); // so this one is never deleted
        registry_->WriteRegValue(RegRoot, ItemKey(modXBINS, 1), "Of old", 1, RegType::Dword);
        registry_->WriteRegValue(RegRoot, site, "TotalItems", total, RegType::Dword);
        Restart();
        EXPECT_EQ(TreeTitles(modXBINS), titles);
        UpdateSiteCounts(modXBINS, Services());
        EXPECT_TRUE(Caption(modXBINS).ends_with(" Unread, " + std::to_string(total) + " Total)"));
        ReceiveTitles(modXBINS, {"D", "E"});
        EXPECT_EQ(registry_->NumberedSubKeys(RegRoot, site, kMost), left);
        EXPECT_EQ(Stored(modXBINS, 1, "Of old") + Stored(modXBINS, 1, "Title"), "1D");
    }
}

} // namespace vantro
