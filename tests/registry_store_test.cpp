#include "platform/Files.h"
#include "platform/RegistryStore.h"
#include "platform/SqliteStatement.h"
#include "tests/support/FaultyDisk.h"
#include "tests/support/FeedFixture.h"

#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <glib.h>
#include <set>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// What the system is asked for. One rename can be made to fail.
static int syncs = 0;
static std::string lastRenamed;
static int renamesUntilFailure = -1;

extern "C" int fdatasync(int file)
{
    ++syncs;
    return static_cast<int>(syscall(SYS_fdatasync, file));
}

extern "C" int rename(const char* from, const char* to) noexcept
{
    if (renamesUntilFailure-- == 0)
        return errno = EACCES, -1;
    if (!std::string_view(from).ends_with(".new"))
        lastRenamed = from;
    vantro::FaultyDisk::Renamed(from, to);
    return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace vantro {

namespace fs = std::filesystem;
using namespace std::literals;

// What another program does to the file stays done, and open, until the returned connection goes.
static Database Tell(const fs::path& file, const char* sql)
{
    sqlite3* opened = nullptr;
    EXPECT_EQ(sqlite3_open(file.c_str(), &opened), SQLITE_OK);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    EXPECT_EQ(sqlite3_exec(opened, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    return Database(opened);
}

struct RegistryStoreTest : testing::Test {
    static bool Put(RegistryStore& store, std::string_view path, std::string_view text)
    {
        return store.SetValue(store.CreateKey(path), "Tag", RegType::Sz, text);
    }
    static std::string Get(RegistryStore& store, std::string_view path, std::string_view name = "Tag")
    {
        const auto value = store.QueryValue(store.OpenKey(path), name);
        return value ? std::get<std::string>(value->data) : "(none)";
    }
    void StoreOneItem(std::string_view text = "<READ>")
    {
        RegistryStore store(file_);
        const auto key = store.CreateKey("R\\1");
        const int before = syncs;
        ASSERT_TRUE(store.SetValue(key, "Tag", RegType::Sz, text) && syncs > before) << "durable by then";
    }
    // The store serves this run with `item`, says why it keeps nothing, and leaves the file as it was.
    void ExpectNotKept(const std::string& why, const std::string& item)
    {
        const auto before = ReadWholeFile(file_);
        RegistryStore store(file_);
        EXPECT_FALSE(store.IsKept());
        EXPECT_EQ(store.Notice(), why + ", so marks are not kept.");
        EXPECT_EQ(Get(store, "R\\1"), item);
        EXPECT_TRUE(Put(store, "R\\2", "for this run"));
        EXPECT_TRUE(ReadWholeFile(file_).value_or("") == before.value_or(""));
    }

    TemporaryFolder folder_;
    fs::path file_ = folder_.Path() / "registry.db";
};

TEST_F(RegistryStoreTest, TheNextStartFindsEveryByteThatWasWritten)
{
    for (const std::string& text : {""s, "zero\0byte"s, "\xff\xfe"s, std::string(64U << 20, 'x')}) {
        StoreOneItem(text);
        Tell(file_, // an unmarked file, its tables written otherwise
            "PRAGMA application_id=0; PRAGMA user_version=0; PRAGMA writable_schema=ON;"
            "UPDATE sqlite_schema SET sql = replace(lower(sql), ', ', ' , ')");
        RegistryStore store(file_);
        EXPECT_TRUE(store.IsKept() && store.Notice().empty()) << store.Notice();
        EXPECT_TRUE(Get(store, "r\\1", "TAG") == text) << text.size();
    }
}

TEST_F(RegistryStoreTest, TheFileIsPrivateMarkedAndHoldsARowForEveryLevelHoweverAPathIsSpelt)
{
    file_ = folder_.Path() / "share" / "vantro" / "registry.db";
    RegistryStore store(file_);
    const auto key = store.CreateKey("R\\Sites\\1");
    for (const char* same : {R"(R\Sites\1\)", "r\\SITES\\1", R"(\R\\Sites\\\1\\)"})
        EXPECT_TRUE(store.OpenKey(same) == key && store.CreateKey(same) == key) << same;
    for (const std::string& none : {""s, "\\"s, R"(R\Sites\2)"s, "R\\Site"s, "R\\Sites\\1\0"s})
        EXPECT_EQ(store.OpenKey(none), 0) << none;
    EXPECT_EQ(fs::status(file_.parent_path()).permissions(), fs::perms::owner_all);
    for (const char* part : {"", "-wal", "-shm"})
        EXPECT_EQ(
            fs::status(file_.string() + part).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    const Database other = Tell(file_, "");
    SqliteStatement marks(other.get(),
        "SELECT group_concat(path) || application_id || user_version"
        " FROM reg_key, pragma_application_id, pragma_user_version");
    EXPECT_EQ(marks.Run().Text(0), "R,R\\Sites,R\\Sites\\114492258441");
}

TEST_F(RegistryStoreTest, DeletingTakesAKeyWithItsValuesButNeverOneWithSubKeys)
{
    RegistryStore store(file_);
    for (const char* path : {"R\\1", "R\\10", "R\\1]", "R\\1[", "R\\_\\x", "R\\%", "R\\a\\x", "R\\A0"})
        EXPECT_TRUE(Put(store, path, path));
    for (const char* parent : {"R", "R\\_", "R\\A", "R\\missing", ""})
        EXPECT_FALSE(store.DeleteKey(parent)) << parent;
    {
        const RegistryStore::Batch withoutCommit(store);
        EXPECT_TRUE(store.DeleteKey("R\\%") && Put(store, "R\\10", "never"));
    }
    for (const char* leaf : {"R\\%", "r\\A\\X", "R\\a"})
        EXPECT_TRUE(store.DeleteKey(leaf)) << leaf;
    const auto gone = store.OpenKey("R\\1");
    EXPECT_TRUE(store.DeleteKey("R\\1") && !store.OpenKey("R\\1"));
    EXPECT_FALSE(store.SetValue(gone, "Tag", RegType::Sz, "late"));
    for (const char* neighbour : {"R\\10", "R\\1]", "R\\1[", "R\\_\\x", "R\\A0"})
        EXPECT_EQ(Get(store, neighbour), neighbour);
    store.CreateKey("R\\1");
    EXPECT_EQ(Get(store, "R\\1"), "(none)");
}

using Spoil = std::function<void(const fs::path&)>;
static Spoil Overwrite(std::streamoff at, const std::string& bytes)
{
    return [=](const fs::path& file) { std::fstream(file, std::ios::in | std::ios::out).seekp(at) << bytes; };
}

static Spoil Alter(const char* sql)
{
    return [=](const fs::path& file) { Tell(file, sql); };
}

TEST_F(RegistryStoreTest, WhatIsDamagedOrForeignIsSetAsideAndANewStoreBegun)
{
    const std::string damaged = "The store was damaged and was set aside as ";
    const std::string foreign = "The store's file was another program's and was set aside as ";
    const std::tuple<const char*, Spoil, std::string> cases[] = {
        {"zeroes", Overwrite(0, std::string(20'000, '\0')), damaged},
        {"a file cut to one byte", [](const fs::path& file) { fs::resize_file(file, 1); }, damaged},
        {"a file cut to nothing", [](const fs::path& file) { fs::resize_file(file, 0); }, damaged},
        {"a format SQLite does not know", Overwrite(47, "\x09"), damaged},
        {"a cut-off file", [](const fs::path& file) { fs::resize_file(file, 8192); }, damaged},
        {"another column", Alter("ALTER TABLE reg_key ADD COLUMN more"), damaged},
        {"a trigger", Alter("CREATE TRIGGER t INSERT ON reg_key BEGIN SELECT 1; END"), damaged},
        {"another program's", Alter("PRAGMA application_id=7; PRAGMA user_version=2"), foreign},
        {"nobody's", Alter("PRAGMA application_id=0; DROP TABLE reg_value"), foreign},
    };
    std::set<std::string> names; // all within a second, and yet none may take the name of another
    for (const auto& [what, spoil, notice] : cases) {
        SCOPED_TRACE(what);
        StoreOneItem();
        spoil(file_);
        const auto bytes = ReadWholeFile(file_);
        const auto journal = ReadWholeFile(file_.string() + "-wal").value_or("");
        renamesUntilFailure = 3; // of the file itself, and then its journals are to come back
        EXPECT_NE(RegistryStore(file_).Notice().find(" and cannot be set aside, so"), std::string::npos);
        RegistryStore store(file_);
        EXPECT_TRUE(store.IsKept() && !store.OpenKey("R"));
        const auto end = store.Notice().find(';');
        const std::string name = store.Notice().substr(notice.size(), end - notice.size());
        EXPECT_EQ(store.Notice(), notice + name + "; a new one was begun.");
        EXPECT_TRUE(ReadWholeFile(folder_.Path() / name) == bytes && names.insert(name).second) << name;
        EXPECT_TRUE(ReadWholeFile(folder_.Path() / (name + "-wal")).value_or("") == journal);
        EXPECT_EQ(lastRenamed, file_) << "a program killed before that would find all in place";
    }
}

// What is told of a store that is watched.
struct Watched {
    explicit Watched(RegistryStore& store)
    {
        store.Watch({[this](const std::string& sentence) { said += sentence; }, [this] { isReread = true; }});
    }
    void Wait() const
    {
        for (const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
             !isReread && std::chrono::steady_clock::now() < end;)
            g_main_context_iteration(nullptr, FALSE);
    }
    std::string said;
    bool isReread = false;
};

TEST_F(RegistryStoreTest, DamageIsFoundWhileTheProgramRunsAndWhatCanBeReadIsKept)
{
    constexpr int kKeys = 4000;
    {
        RegistryStore store(file_);
        RegistryStore::Batch batch(store);
        for (int i = 1; i <= kKeys; ++i)
            Put(store, "R\\" + std::to_string(i), std::string(100, 'x'));
        EXPECT_FALSE(batch.Commit());
    }
    const auto pages = static_cast<std::streamoff>(fs::file_size(file_) / 4096);
    const std::string whole = ReadWholeFile(file_).value_or("");
    for (std::streamoff page = 1; page < pages; page += pages / 7) {
        std::ofstream(file_) << whole;
        Overwrite(page * 4096, std::string(4096, '\xaa'))(file_);
        const auto bytes = ReadWholeFile(file_);
        RegistryStore store(file_);
        EXPECT_EQ(store.Notice(), "");
        const Watched watched(store);
        watched.Wait();
        const std::string start = "The store was damaged and was set aside as ";
        ASSERT_EQ(watched.said.substr(0, start.size()), start) << page;
        const std::string name = watched.said.substr(start.size(), watched.said.find(';') - start.size());
        EXPECT_TRUE(ReadWholeFile(folder_.Path() / name) == bytes) << name;
        int left = 0;
        for (int i = 1; i <= kKeys; ++i)
            left += Get(store, "R\\" + std::to_string(i)).size() == 100 ? 1 : 0;
        EXPECT_GT(left, kKeys * 9 / 10) << page;
        EXPECT_TRUE(Put(store, "R\\new", "x") && store.IsKept());
    }
}

TEST_F(RegistryStoreTest, AStoreThatIsRemovedRenamedOrReplacedIsWrittenAgain)
{
    const fs::path folder = folder_.Path() / "vantro";
    file_ = folder / "registry.db";
    const std::tuple<const char*, std::function<void()>, std::string> cases[] = {
        {"removed", [&] { fs::remove(file_); }, "The store was removed while"},
        {"with its folder", [&] { fs::remove_all(folder); }, "The store was removed while"},
        {"renamed", [&] { fs::rename(file_, folder / "mine"); }, "The store was removed while"},
        {"its journal removed", [&] { fs::remove(file_.string() + "-wal"); },
            "The store's journal was removed while"},
        {"replaced",
            [&] {
                fs::rename(file_, folder / "mine");
                std::ofstream(file_) << "my diary";
            },
            "Another file had been put in the place of the store; it was set aside as registry.db.damaged-"},
    };
    for (const auto& [what, act, sentence] : cases) {
        SCOPED_TRACE(what);
        fs::remove_all(folder);
        {
            RegistryStore store(file_);
            const Watched watched(store);
            EXPECT_TRUE(Put(store, "R\\1", "before"));
            act();
            EXPECT_TRUE(Put(store, "R\\2", "after"));
            EXPECT_EQ(watched.said.substr(0, sentence.size()), sentence);
        }
        RegistryStore store(file_);
        EXPECT_EQ(Get(store, "R\\1") + Get(store, "R\\2") + store.Notice(), "beforeafter");
    }
}

TEST_F(RegistryStoreTest, AJournalThatIsDamagedOrHasNoFileIsSetAsideAndSaid)
{
    const fs::path journal = file_.string() + "-wal";
    const std::tuple<const char*, Spoil, std::string> cases[] = {
        {"its head", [&](const fs::path&) { Overwrite(20, "\xaa")(journal); },
            "The store's journal was damaged"},
        {"a commit", [&](const fs::path&) { Overwrite(32 + 24 + 100, "\xaa")(journal); },
            "The store's journal was damaged"},
        {"no file", [](const fs::path& file) { fs::remove(file); }, "The store was missing; its journal"},
        {"its end, which was never acknowledged",
            [&](const fs::path&) { fs::resize_file(journal, fs::file_size(journal) - 100); }, ""},
        {"bytes behind its end", [&](const fs::path&) { std::ofstream(journal, std::ios::app) << "more"; },
            ""},
    };
    for (const auto& [what, spoil, notice] : cases) {
        SCOPED_TRACE(what);
        for (const auto& left : fs::directory_iterator(folder_.Path()))
            fs::remove(left);
        {
            RegistryStore store(file_);
            EXPECT_TRUE(Put(store, "R\\1", "one") && Put(store, "R\\2", "two"));
            fs::copy_file(file_, file_.string() + "-kept");
            fs::copy_file(journal, journal.string() + "-kept");
        }
        fs::rename(file_.string() + "-kept", file_); // as a killed program leaves them
        fs::rename(journal.string() + "-kept", journal);
        spoil(file_);
        const auto bytes = ReadWholeFile(journal);
        RegistryStore store(file_);
        EXPECT_TRUE(store.IsKept());
        EXPECT_EQ(store.Notice().substr(0, notice.size()), notice);
        EXPECT_EQ(store.Notice().empty(), notice.empty());
        bool isThere = notice.empty();
        for (const auto& file : fs::directory_iterator(folder_.Path()))
            isThere = isThere || (file.path() != journal && ReadWholeFile(file) == bytes);
        EXPECT_TRUE(isThere) << "nothing is thrown away";
    }
}

TEST_F(RegistryStoreTest, AStoreHeldByAnotherProgramIsWaitedForOnceAndNotTakenForDamaged)
{
    const std::string why = "The store is held by another program";
    StoreOneItem();
    RegistryStore store(file_);
    Database holds = Tell(file_, "BEGIN IMMEDIATE");
    const auto start = std::chrono::steady_clock::now();
    ExpectNotKept(why, "<READ>"); // waits for 2 s
    for (const char* key : {"R\\2", "R\\1"}) {
        RegistryStore::Batch reads(store);
        EXPECT_TRUE(Get(store, "R\\1") == "<READ>" && !reads.Commit());
        EXPECT_FALSE(Put(store, key, "lost")); // waits
        RegistryStore::Batch writes(store);
        EXPECT_FALSE(Put(store, "R\\1", "lost") || Put(store, "R", "lost"));
        EXPECT_EQ(writes.Commit(), why + ".");
        holds.reset();
        EXPECT_TRUE(Put(store, "R\\1", "<READ>")); // and the next one waits again
        holds = Tell(file_, "BEGIN IMMEDIATE");
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(took.count() > 5.9 && took.count() < 7.9) << took.count();
}

TEST_F(RegistryStoreTest, WhereNothingCanBeWrittenTheStoreLivesInMemoryWithWhatCanBeRead)
{
    StoreOneItem();
    for (const int fileMode : {0646, 0444}) {
        SCOPED_TRACE(fileMode);
        fs::permissions(file_, static_cast<fs::perms>(fileMode));
        fs::permissions(folder_.Path(), static_cast<fs::perms>(0555));
        setfsuid(65534); // modes do not bind root; without effect for anybody else
        ExpectNotKept("The store cannot be written", "<READ>");
        setfsuid(getuid());
    }
    fs::permissions(folder_.Path(), fs::perms::owner_all);
}

TEST_F(RegistryStoreTest, AStoreThatIsNewerOrCannotBeBegunIsLeftAsItIs)
{
    {
        FaultyDisk disk;
        disk.Fail(FaultyDisk::Write, 1, SQLITE_FULL, true);
        ExpectNotKept("The disk is full", "(none)");
    }
    StoreOneItem();
    Tell(file_, "CREATE TABLE more(x); PRAGMA user_version=2; PRAGMA journal_mode=DELETE");
    ExpectNotKept("The store was written by a newer version of this program", "(none)");
    file_ = folder_.Write("a file", "no folder") / "registry.db";
    ExpectNotKept("The store cannot be written", "(none)");
    file_ = folder_.Path() / "pipe";
    EXPECT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(RegistryStore(file_).Notice(), "The store cannot be written, so marks are not kept.");
}

} // namespace vantro
