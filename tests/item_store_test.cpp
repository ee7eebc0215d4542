#include "feeds/ReadMarks.h"
#include "platform/SqliteStatement.h"
#include "tests/support/FeedFixture.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <limits>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantro {

constexpr int kRounds = 200;
constexpr int kItems = 300;

using ItemStoreTest = FeedFixture;

struct KillTest : FeedFixture {
    // Two lists with every third item in common; each feed brings the others as new.
    void ReceiveList(int list)
    {
        Titles titles;
        for (int i = 0; i < kItems; ++i)
            titles.push_back((i % 3 == 0 ? "both " : list == 0 ? "A " : "B ") + std::to_string(i));
        ReceiveTitles(modXBINS, titles);
    }

    // All that stands in the store, keys without values and values without keys included.
    std::string Dump() const
    {
        sqlite3* opened = nullptr;
        sqlite3_open((folder_.Path() / "registry.db").c_str(), &opened);
        const Database database(opened);
        SqliteStatement rows(opened,
            "SELECT group_concat(row, char(10)) FROM (SELECT ifnull(path, 'orphan') || ifnull('|' || name ||"
            " type || data, '') AS row FROM reg_key FULL JOIN reg_value ON id = key_id ORDER BY 1)");
        return rows.Run().Text(0);
    }

    // Lets another process merge the list and kills it so long after the beginning. True when it had ended.
    bool KillAfter(std::chrono::duration<double> delay, int list)
    {
        enum Stage { Before, Begun, Ended };
        void* const shared
            = mmap(nullptr, sizeof(Stage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        auto& stage = *new (shared) std::atomic<Stage>(Before);
        const pid_t child = fork();
        if (child == 0) {
            Restart();
            stage = Begun;
            ReceiveList(list);
            stage = Ended;
            pause();
        }
        while (stage == Before)
            std::this_thread::yield();
        std::this_thread::sleep_for(delay);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        return stage == Ended;
    }
};

TEST_F(KillTest, AProgramKilledAtAnyInstantOfAMergeLeavesTheOldListOrTheNewOne)
{
    ReceiveList(0);
    MarkRead(Services(), Item(modXBINS, "both 0"));
    MarkRead(Services(), Item(modXBINS, "both 297"));
    std::string whole[2] = {Dump(), ""};
    const auto start = std::chrono::steady_clock::now();
    ReceiveList(1);
    std::chrono::duration<double> longest = std::chrono::steady_clock::now() - start;
    whole[1] = Dump();
    // A connection must not pass into another process.
    tree_.reset();
    registry_.reset();
    store_.reset();

    int list = 1; // that is stored
    int before_commit = 0;
    int behind_commit = 0;
    for (int round = 0; round < kRounds; ++round) {
        const bool ended = KillAfter(longest * (round % 20) / 20, 1 - list);
        ASSERT_EQ(RegistryStore(folder_.Path() / "registry.db").Notice(), "");
        const std::string found = Dump();
        const bool stored = found == whole[1 - list];
        ASSERT_TRUE(stored || (found == whole[list] && !ended)) << "round " << round;
        list = stored ? 1 - list : list;
        before_commit += stored ? 0 : 1;
        behind_commit += stored && !ended ? 1 : 0;
        longest *= stored ? 0.95 : 1.05; // so that half of the kills are early, however busy the machine is
    }
    EXPECT_GE(before_commit, kRounds / 4) << "kills between a merge's beginning and its commit";
    EXPECT_GE(behind_commit, 1) << "kills between a merge's commit and its end";
}

TEST_F(ItemStoreTest, HasAsManyItemsAsAreStoredWhateverItsTotalSays)
{
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::string site = SiteKey(modXBINS.Row());
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

} // namespace vantro
