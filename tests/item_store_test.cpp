#include "feeds/modXBINS.h"
#include "tests/support/FeedFixture.h"

#include <limits>

namespace vantro {
namespace {

using ItemStoreTest = FeedFixture;

TEST_F(ItemStoreTest, HasAsManyItemsAsAreStoredWhateverItsTotalSays)
{
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::string site = SiteKey(modXBINS.Row());
    const std::tuple<std::int32_t, Titles, std::vector<std::int32_t>> cases[] = {
        {-1, {}, {1, 2, 3, 2'000'000}},
        {2, {"A", ""}, {1, 2, 3, 2'000'000}},
        {5, {"A", "", "C", "", ""}, {1, 2, 2'000'000}},
        {2'000'000, {"A", "", "C"}, {1, 2}},
        {kMost, {"A", "", "C"}, {1, 2}},
    };
    for (const auto& [total, titles, left] : cases) {
        SCOPED_TRACE(total);
        ReceiveTitles(modXBINS, {"A", "B", "C"});
        registry_->DeleteRegKey(RegRoot, ItemKey(modXBINS.Row(), 2));
        for (const char* name : {"\\2000000", "\\01", "\\+3", "\\-4", "\\5x", "\\2147483648"})
            registry_->CreateRegKey(RegRoot, site + name);
        registry_->WriteRegValue(RegRoot, site, "TotalItems", total, RegType::Dword);
        Restart();
        EXPECT_EQ(TreeTitles(modXBINS), titles);
        modXBINS.UpdateSiteCounts(Services());
        EXPECT_TRUE(Caption(modXBINS).ends_with(" Unread, " + std::to_string(total) + " Total)"));
        ReceiveTitles(modXBINS, {"D", "E"});
        EXPECT_EQ(registry_->NumberedSubKeys(RegRoot, site, kMost), left);
    }
}

} // namespace
} // namespace vantro
