#include "platform/RegistryStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/fsuid.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

namespace vantro {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

// Another program's hold on the file: what it was told stays done, and open, until it goes.
class Stranger {
public:
    Stranger(const fs::path& file, const std::string& sql)
    {
        EXPECT_EQ(sqlite3_open(file.c_str(), &database_), SQLITE_OK);
        sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        EXPECT_EQ(sqlite3_exec(database_, sql.c_str(), TakeCell, &answer_, nullptr), SQLITE_OK) << sql;
    }
    ~Stranger() { sqlite3_close(database_); }
    Stranger(const Stranger&) = delete;
    [[nodiscard]] const std::string& Answer() const { return answer_; }

private:
    static int TakeCell(void* answer, int, char** cells, char**)
    {
        *static_cast<std::string*>(answer) += cells[0] + ";"s;
        return 0;
    }
    sqlite3* database_ = nullptr;
    std::string answer_;
};

// File modes bind the thread while this lives, even when the tests are run by root.
struct OrdinaryUser {
    OrdinaryUser() { setfsuid(getuid() == 0 ? 65534 : getuid()); }
    ~OrdinaryUser() { setfsuid(getuid()); }
};

class RegistryStoreTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "vantro-store-XXXXXX";
        folder_ = mkdtemp(name.data());
        file_ = folder_ / "registry.db";
    }
    void TearDown() override
    {
        fs::permissions(folder_, fs::perms::owner_all);
        fs::remove_all(folder_);
    }

    static bool Put(RegistryStore& store, std::string_view path, std::string_view text)
    {
        return store.SetValue(store.CreateKey(path), "Tag", RegType::Sz, text);
    }
    static std::string Get(RegistryStore& store, std::string_view path, std::string_view name = "Tag")
    {
        const auto value = store.QueryValue(store.OpenKey(path), name);
        return value ? std::get<std::string>(value->data) : "(none)";
    }
    void StoreOneItem()
    {
        RegistryStore store(file_);
        ASSERT_TRUE(Put(store, "R\\1", "<READ>"));
    }
    static std::string Bytes(const fs::path& file)
    {
        std::ostringstream bytes;
        bytes << std::ifstream(file).rdbuf();
        return bytes.str();
    }
    // The one file set aside that `seen` does not list; empty when there is none.
    [[nodiscard]] std::string NewAsideName(const std::string& seen = "") const
    {
        for (const auto& entry : fs::directory_iterator(folder_)) {
            const std::string name = entry.path().filename();
            if (name.starts_with("registry.db.damaged-") && !name.ends_with("-wal") && !name.ends_with("-shm")
                && seen.find(name + ";") == std::string::npos)
                return name;
        }
        return "";
    }
    static void ExpectNotKept(const RegistryStore& store, std::string_view why)
    {
        EXPECT_FALSE(store.IsKept());
        EXPECT_EQ(store.Notice(), std::string(why) + ", so marks are not kept.");
    }

    fs::path folder_;
    fs::path file_;
};

TEST_F(RegistryStoreTest, TheNextStartFindsEveryByteThatWasWritten)
{
    const std::string texts[] = {"<READ>", "", "zero\0byte"s, "\xff\xfe", std::string(64U << 20, 'x')};
    for (const std::string& text : texts) {
        {
            RegistryStore store(file_);
            EXPECT_TRUE(Put(store, "R\\1", "an earlier text"));
            EXPECT_TRUE(Put(store, "R\\1", text));
            EXPECT_TRUE(store.SetValue(store.OpenKey("R\\1"), "Count", RegType::Dword, std::int64_t{-5}));
        }
        RegistryStore store(file_);
        EXPECT_TRUE(store.IsKept());
        EXPECT_EQ(store.Notice(), "");
        EXPECT_TRUE(Get(store, "r\\1", "TAG") == text) << text.size();
        EXPECT_EQ(std::get<std::int64_t>(store.QueryValue(store.OpenKey("R\\1"), "Count")->data), -5);
    }
}

TEST_F(RegistryStoreTest, TheFileIsPrivateMarkedAndHoldsARowForEveryLevel)
{
    const fs::path deep = folder_ / "share" / "vantro" / "registry.db";
    RegistryStore store(deep);
    EXPECT_NE(store.CreateKey("R\\Software\\Vantro"), 0);
    EXPECT_EQ(fs::status(deep.parent_path()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder_ / "share").permissions(), fs::perms::owner_all);
    EXPECT_EQ(Stranger(deep,
                  "PRAGMA application_id; PRAGMA user_version; PRAGMA journal_mode;"
                  "SELECT path FROM reg_key ORDER BY id")
                  .Answer(),
        "1449225844;1;wal;R;R\\Software;R\\Software\\Vantro;");
}

TEST_F(RegistryStoreTest, OnePathHasManySpellings)
{
    RegistryStore store(file_);
    const auto key = store.CreateKey("R\\Sites\\1");
    for (const char* same : {"R\\Sites\\1\\", "r\\SITES\\1", "R\\\\Sites\\\\\\1", "\\R\\Sites\\1\\\\"}) {
        EXPECT_EQ(store.OpenKey(same), key) << same;
        EXPECT_EQ(store.CreateKey(same), key) << same;
    }
    for (const std::string& none : {""s, "\\"s, "R\\Sites\\2"s, "R\\Site"s, "R\\Sites\\1\0"s})
        EXPECT_EQ(store.OpenKey(none), 0) << none;
    EXPECT_EQ(store.CreateKey("R\\zero\0byte"s), 0);
}

TEST_F(RegistryStoreTest, DeletingTakesAKeyWithItsValuesButNeverOneWithSubKeys)
{
    RegistryStore store(file_);
    for (const char* path : {"R\\1", "R\\10", "R\\1]", "R\\1[", "R\\_\\x", "R\\%", "R\\a\\x", "R\\A0"})
        EXPECT_TRUE(Put(store, path, path));
    for (const char* parent : {"R", "R\\_", "R\\A", "R\\missing", ""})
        EXPECT_FALSE(store.DeleteKey(parent)) << parent;
    EXPECT_EQ(Get(store, "R\\_\\x"), "R\\_\\x");
    for (const char* leaf : {"R\\1", "R\\%", "r\\A\\X", "R\\a"})
        EXPECT_TRUE(store.DeleteKey(leaf)) << leaf;
    for (const char* neighbour : {"R\\10", "R\\1]", "R\\1[", "R\\A0"})
        EXPECT_EQ(Get(store, neighbour), neighbour);

    const auto gone = store.OpenKey("R\\10");
    EXPECT_TRUE(store.DeleteKey("R\\10"));
    EXPECT_EQ(store.OpenKey("R\\10"), 0);
    EXPECT_FALSE(store.SetValue(gone, "Tag", RegType::Sz, "late"));
    store.CreateKey("R\\10");
    EXPECT_EQ(Get(store, "R\\10"), "(none)");
}

TEST_F(RegistryStoreTest, ABatchHappensWholeOrNotAtAll)
{
    StoreOneItem();
    RegistryStore store(file_);
    {
        RegistryStore::Batch batch(store);
        EXPECT_TRUE(store.DeleteKey("R\\1"));
        EXPECT_TRUE(Put(store, "R\\2", "<UNREAD>"));
    }
    EXPECT_EQ(store.OpenKey("R\\2"), 0);
    EXPECT_EQ(Get(store, "R\\1"), "<READ>");
    {
        RegistryStore::Batch batch(store);
        EXPECT_TRUE(Put(store, "R\\3", "new"));
        EXPECT_TRUE(Put(store, "R\\1", "kept"));
        const auto gone = store.OpenKey("R\\3");
        EXPECT_TRUE(store.DeleteKey("R\\3"));
        EXPECT_FALSE(store.SetValue(gone, "Tag", RegType::Sz, "lost, and no fault of the store"));
        EXPECT_EQ(batch.Commit(), std::nullopt);
    }
    EXPECT_EQ(Stranger(file_,
                  "SELECT path || data FROM reg_key JOIN reg_value ON id = key_id; SELECT path FROM reg_key")
                  .Answer(),
        "R\\1kept;R;R\\1;");
}

TEST_F(RegistryStoreTest, AFullDiskInABatchLeavesTheOldListAndAWorkingStore)
{
    StoreOneItem();
    RegistryStore store(file_, {.max_pages = 40});
    {
        RegistryStore::Batch batch(store);
        EXPECT_TRUE(store.DeleteKey("R\\1"));
        EXPECT_FALSE(Put(store, "R\\2", std::string(400'000, 'x')));
        EXPECT_FALSE(Put(store, "R\\3", "after the failure nothing is written"));
        EXPECT_FALSE(store.DeleteKey("R"));
        EXPECT_EQ(batch.Commit(), "The disk is full.");
    }
    EXPECT_EQ(store.OpenKey("R\\2"), 0);
    EXPECT_FALSE(Put(store, "R\\1", std::string(400'000, 'x')));
    EXPECT_EQ(Get(store, "R\\1"), "<READ>");
    EXPECT_TRUE(Put(store, "R\\1", "<UNREAD>"));
    RegistryStore::Batch batch(store);
    EXPECT_TRUE(Put(store, "R\\4", "again"));
    EXPECT_EQ(batch.Commit(), std::nullopt);
}

struct SetAsideCase {
    const char* what;
    std::function<void(const fs::path&)> spoil;
    const char* notice = "The store was damaged";
};

std::function<void(const fs::path&)> Overwrite(std::streamoff at, const std::string& bytes)
{
    return [=](const fs::path& file) { std::fstream(file, std::ios::in | std::ios::out).seekp(at) << bytes; };
}

std::function<void(const fs::path&)> Alter(const char* sql)
{
    return [=](const fs::path& file) { Stranger(file, sql); };
}

TEST_F(RegistryStoreTest, WhatIsDamagedOrForeignIsSetAsideAndANewStoreBegun)
{
    const char* const foreign = "The store's file was another program's";
    const SetAsideCase kCases[] = {
        {"zeroes", Overwrite(0, std::string(20'000, '\0'))},
        {"a short text", [](const fs::path& file) { std::ofstream(file) << "hello"; }},
        {"rubbish behind a good head", Overwrite(4096, std::string(12'000, '\xaa'))},
        {"a cut-off file", [](const fs::path& file) { fs::resize_file(file, 8192); }},
        {"a table missing", Alter("DROP TABLE reg_value")},
        {"another column", Alter("ALTER TABLE reg_key ADD COLUMN more")},
        {"a trigger", Alter("CREATE TRIGGER t INSERT ON reg_key BEGIN SELECT 1; END")},
        {"another program's", Alter("PRAGMA application_id=7"), foreign},
        {"nobody's", Alter("PRAGMA application_id=0; DROP TABLE reg_value"), foreign},
    };
    std::string seen;
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.what);
        StoreOneItem();
        row.spoil(file_);
        const std::string bytes = Bytes(file_);
        RegistryStore store(file_);
        EXPECT_TRUE(store.IsKept());
        EXPECT_EQ(store.OpenKey("R"), 0);
        EXPECT_TRUE(Put(store, "R\\new", "works"));
        // Several cases fall into one second: none may take the name of another.
        const std::string name = NewAsideName(seen);
        EXPECT_EQ(store.Notice(), row.notice + " and was set aside as "s + name + "; a new one was begun.");
        EXPECT_TRUE(Bytes(folder_ / name) == bytes);
        seen += name + ";";
    }
}

TEST_F(RegistryStoreTest, AJournalIsSetAsideWithItsFile)
{
    StoreOneItem();
    {
        // Held open beside it, the journal of a stranger's file stays full.
        const Stranger holds(file_, "BEGIN; SELECT count(*) FROM reg_key");
        Stranger(file_, "PRAGMA application_id=7");
        ASSERT_GT(fs::file_size(file_.string() + "-wal"), 0U);
        RegistryStore store(file_);
        EXPECT_TRUE(store.IsKept()) << store.Notice();
    }
    const fs::path aside = folder_ / NewAsideName();
    EXPECT_EQ(Stranger(aside, "PRAGMA application_id; SELECT path FROM reg_key").Answer(), "7;R;R\\1;");
}

TEST_F(RegistryStoreTest, AnUnmarkedFileWithTheseTablesIsTakenOver)
{
    Stranger(file_,
        "create table reg_key(id INTEGER PRIMARY KEY,\n path TEXT NOT NULL UNIQUE COLLATE NOCASE);"
        "CREATE TABLE reg_value(key_id INTEGER NOT NULL REFERENCES reg_key(id) ON DELETE CASCADE, name TEXT "
        "NOT NULL COLLATE NOCASE, type INTEGER NOT NULL, data NOT NULL, PRIMARY KEY(key_id,name)) WITHOUT "
        "ROWID;"
        "INSERT INTO reg_key VALUES(1, 'R'); INSERT INTO reg_value VALUES(1, 'Tag', 1, 'x')");
    RegistryStore store(file_);
    EXPECT_EQ(store.Notice(), "");
    EXPECT_EQ(Get(store, "R"), "x");
}

TEST_F(RegistryStoreTest, ANewerStoreIsLeftAsItIs)
{
    StoreOneItem();
    Stranger(file_, "CREATE TABLE more(x); PRAGMA user_version=2; PRAGMA journal_mode=DELETE");
    const std::string before = Bytes(file_);
    {
        RegistryStore store(file_);
        ExpectNotKept(store, "The store was written by a newer version of this program");
        EXPECT_EQ(store.OpenKey("R\\1"), 0);
        EXPECT_TRUE(Put(store, "R\\1", "for this run"));
    }
    EXPECT_TRUE(Bytes(file_) == before);
    EXPECT_EQ(NewAsideName(), "");
}

TEST_F(RegistryStoreTest, AStoreHeldByAnotherProgramIsWaitedForAndNotTakenForDamaged)
{
    StoreOneItem();
    RegistryStore first(file_);
    const Stranger holds(file_, "BEGIN IMMEDIATE");
    const auto start = std::chrono::steady_clock::now();
    RegistryStore store(file_);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(1800));
    EXPECT_LE(waited, std::chrono::milliseconds(3500));
    ExpectNotKept(store, "The store is held by another program");
    EXPECT_EQ(Get(store, "R\\1"), "<READ>");
    EXPECT_EQ(NewAsideName(), "");

    RegistryStore::Batch batch(first);
    EXPECT_FALSE(Put(first, "R\\1", "lost"));
    EXPECT_EQ(batch.Commit(), "The store is held by another program.");
}

TEST_F(RegistryStoreTest, WhereNothingCanBeWrittenTheStoreLivesInMemoryWithWhatCanBeRead)
{
    for (const bool file_too : {false, true}) {
        SCOPED_TRACE(file_too);
        StoreOneItem();
        const std::string before = Bytes(file_);
        fs::permissions(folder_, static_cast<fs::perms>(0555));
        fs::permissions(file_, static_cast<fs::perms>(file_too ? 0444 : 0646));
        {
            const OrdinaryUser user;
            RegistryStore store(file_);
            ExpectNotKept(store, "The store cannot be written");
            EXPECT_EQ(Get(store, "R\\1"), "<READ>");
            EXPECT_TRUE(Put(store, "R\\2", "for this run"));
        }
        EXPECT_TRUE(Bytes(file_) == before);
        EXPECT_EQ(NewAsideName(), "");
        fs::permissions(folder_, fs::perms::owner_all);
        fs::permissions(file_, fs::perms::owner_all);
    }
}

TEST_F(RegistryStoreTest, AStoreThatCannotBeBegunLivesInMemory)
{
    std::ofstream(folder_ / "file") << "x";
    RegistryStore nowhere(folder_ / "file" / "registry.db");
    ExpectNotKept(nowhere, "The store cannot be written");
    EXPECT_TRUE(Put(nowhere, "R", "for this run"));
    EXPECT_EQ(Get(nowhere, "R"), "for this run");

    RegistryStore full(file_, {.max_pages = 1});
    ExpectNotKept(full, "The disk is full");
    EXPECT_TRUE(Put(full, "R", "for this run"));

    std::ofstream(file_) << "damaged as well";
    RegistryStore both(file_, {.max_pages = 1});
    ExpectNotKept(
        both, "The store was damaged and was set aside as " + NewAsideName() + "; the disk is full");
}

} // namespace
} // namespace vantro
