#include "feeds/ReadMarks.h"
#include "platform/SqliteStatement.h"
#include "settings/modRegistry.h"
#include "tests/support/FeedFixture.h"

#include <csignal>
#include <limits>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// The process is killed at its write of this number.
static int writesUntilKilled = -1;

extern "C" ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t place)
{
    const ssize_t written = syscall(SYS_pwrite64, file, bytes, size, place);
    return --writesUntilKilled == 0 ? raise(SIGKILL) : written;
}

namespace vantro {

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

    // Lets another process merge the list and be killed at that write. True when it came to its end before.
    bool KillAt(int write, int list)
    {
        const pid_t child = fork();
        if (child == 0) {
            Restart();
            writesUntilKilled = write;
            ReceiveList(list);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status);
    }
};

TEST_F(KillTest, AProgramKilledAtAnyWriteOfAMergeLeavesTheOldListOrTheNewOne)
{
    ReceiveList(0);
    MarkRead(Services(), Item(modXBINS, "both 0"));
    MarkRead(Services(), Item(modXBINS, "both 297"));
    std::string whole[2] = {Dump(), ""};
    ReceiveList(1);
    whole[1] = Dump();
    // A connection must not pass into another process.
    tree_.reset();
    registry_.reset();
    store_.reset();

    int list = 1; // that is stored
    int kills[2] = {}; // before and behind a merge's commit
    bool ended = false;
    for (int write = 1; !ended; ++write) {
        ended = KillAt(write, 1 - list);
        ASSERT_EQ(RegistryStore(folder_.Path() / "registry.db").Notice(), "");
        const std::string found = Dump();
        const bool stored = found == whole[1 - list];
        ASSERT_TRUE(stored || (found == whole[list] && !ended)) << "write " << write;
        list = stored ? 1 - list : list;
        kills[stored ? 1 : 0] += ended ? 0 : 1;
    }
    EXPECT_TRUE(kills[0] > 10 && kills[1] > 0) << kills[0] << " " << kills[1];
}

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
