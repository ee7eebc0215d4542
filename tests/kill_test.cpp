#include "feeds/ReadMarks.h"
#include "feeds/modXBINS.h"
#include "platform/SqliteStatement.h"
#include "tests/support/FeedFixture.h"

#include <chrono>
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantro {

namespace {

constexpr int kRounds = 200;
constexpr int kItems = 300;
constexpr char kBegins = 'b'; // what the killed program says of each of its merges
constexpr char kEnds = 'e';

class KillTest : public FeedFixture {
protected:
    // Two lists with every third item in common; each feed brings the others as new.
    void ReceiveList(int list)
    {
        std::string feed;
        for (int i = 0; i < kItems; ++i) {
            const std::string text = (i % 3 == 0 ? "both " : list == 0 ? "A " : "B ") + std::to_string(i);
            feed += "<item><title>" + text + "</title><link>http://" + text + ".example/</link><homepage>of "
                + text + "</homepage><releasedate>2003-07-05</releasedate></item>";
        }
        modXBINS.MergeFeed(Services(), folder_.Write("received.xml", feed));
    }

    // All that stands in the store, keys without values and values without keys included.
    std::string Dump() const
    {
        sqlite3* opened = nullptr;
        sqlite3_open((folder_.Path() / "registry.db").c_str(), &opened);
        const Database database(opened);
        SqliteStatement rows(opened,
            "SELECT path || ifnull('|' || name || type || data, '') FROM reg_key LEFT JOIN reg_value ON id = "
            "key_id"
            " UNION ALL SELECT 'orphan' FROM reg_value WHERE key_id NOT IN (SELECT id FROM reg_key) ORDER BY "
            "1");
        std::string dump;
        auto row = rows.Run();
        for (; row.HasRow(); row.Next())
            dump += row.Text(0) + "\n";
        return dump;
    }

    // Merges the lists in turn, beginning with `list`, until it is killed.
    [[noreturn]] void MergeForEver(int list, int pipe)
    {
        Restart();
        for (;; list = 1 - list) {
            if (write(pipe, &kBegins, 1) == 1)
                ReceiveList(list);
            if (write(pipe, &kEnds, 1) != 1)
                _exit(1);
        }
    }

    // Lets another process merge, kills it so long after the beginning of a merge, and returns what it said.
    std::string KillAfter(std::chrono::duration<double> delay, int list)
    {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0)
            MergeForEver(list, ends[1]);
        close(ends[1]);
        std::string said(1, ' ');
        EXPECT_EQ(read(ends[0], said.data(), 1), 1);
        std::this_thread::sleep_for(delay);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        for (char next = 0; read(ends[0], &next, 1) == 1;)
            said += next;
        close(ends[0]);
        return said;
    }
};

TEST_F(KillTest, AProgramKilledAtAnyInstantOfAMergeLeavesTheOldListOrTheNewOne)
{
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);

    ReceiveList(0);
    MarkRead(Services(), Item(modXBINS, "both 0"));
    MarkRead(Services(), Item(modXBINS, "both 297"));
    std::string whole[2] = {Dump(), ""};
    const auto start = std::chrono::steady_clock::now();
    ReceiveList(1);
    std::chrono::duration<double> longest = std::chrono::steady_clock::now() - start;
    whole[1] = Dump();
    EXPECT_EQ(UnreadTitles(modXBINS).size(), kItems - 2U);
    // A connection must not pass into another process.
    tree_.reset();
    registry_.reset();
    store_.reset();

    int list = 1; // that is stored
    int before_commit = 0;
    int behind_commit = 0;
    for (int round = 0; round < kRounds; ++round) {
        const auto delay = longest * std::uniform_real_distribution(0.0, 1.0)(random);
        const std::string said = KillAfter(delay, 1 - list);
        const int old = (list + static_cast<int>(said.size() / 2)) % 2; // after the merges that ended
        ASSERT_EQ(RegistryStore(folder_.Path() / "registry.db").Notice(), "");
        const std::string found = Dump();
        ASSERT_TRUE(found == whole[old] || (found == whole[1 - old] && said.ends_with(kBegins)))
            << "round " << round << ", after " << said << ":\n"
            << found;
        list = found == whole[old] ? old : 1 - old;
        const bool early = list == old && said.size() == 1;
        before_commit += early ? 1 : 0;
        behind_commit += list != old ? 1 : 0;
        longest *= early ? 1.05 : 0.95; // so that half of the kills are early, however busy the machine is
    }
    EXPECT_GE(before_commit, kRounds / 4) << "kills between a merge's beginning and its commit";
    RecordProperty("early", before_commit);
    RecordProperty("behind", behind_commit);
    EXPECT_GE(behind_commit, 1) << "kills between a merge's commit and its end";
}

} // namespace

} // namespace vantro
