#include "platform/RegistryStore.h"
#include "platform/SqliteStatement.h"
#include "tests/support/FaultyDisk.h"
#include "tests/support/FeedFixture.h"

#include <fstream>
#include <map>
#include <optional>

// Nothing here need last.
extern "C" int fsync(int file)
{
    vantro::FaultyDisk::Synced(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)));
    return 0;
}

namespace vantro {

namespace fs = std::filesystem;
using namespace std::literals;
using Rows = std::map<std::string, std::string>; // data by key and name

constexpr std::int32_t kItems = 12;

static std::string Key(int item)
{
    return "R\\" + std::to_string(item);
}

// What stands in a file, which must be sound. Nothing fails here.
static Rows RowsIn(const fs::path& file)
{
    sqlite3* opened = nullptr;
    sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, "unix");
    const Database database(opened);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    EXPECT_EQ(SqliteStatement(opened, "PRAGMA integrity_check").Run().Text(0), "ok");
    EXPECT_FALSE(SqliteStatement(opened, "PRAGMA foreign_key_check").Run().HasRow())
        << "values without a key";
    Rows rows;
    SqliteStatement all(opened, "SELECT path || name, data FROM reg_key JOIN reg_value ON key_id = id");
    for (auto row = all.Run(); row.HasRow(); row.Next())
        rows[row.Text(0)] = row.Text(1);
    return rows;
}

static sqlite3* lastOpened = nullptr;
static int NoteOpened(sqlite3* database, const char** /*message*/, const sqlite3_api_routines* /*calls*/)
{
    lastOpened = database;
    return SQLITE_OK;
}

// Runs of a program that merges and marks, beside what it was told is stored.
struct StoreFaultsTest : testing::Test {
    StoreFaultsTest() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(NoteOpened)); }
    ~StoreFaultsTest() override { sqlite3_reset_auto_extension(); }

    void Start()
    {
        // A write that failed late may have reached the file.
        if (stored_ != onItsWay_ && fs::exists(file_) && RowsIn(file_) == onItsWay_)
            stored_ = onItsWay_;
        store_.emplace(file_);
        EXPECT_EQ(store_->IsKept(), store_->Notice().empty()) << store_->Notice();
        if (store_->IsKept())
            sqlite3_wal_autocheckpoint(lastOpened, 4); // pages: as often as a large store
    }
    bool Write(const Rows& then, const std::function<bool()>& write)
    {
        if (!store_->IsKept())
            return write();
        onItsWay_ = then;
        const bool done = write();
        if (done)
            stored_ = then;
        return done;
    }
    void Merge(const std::string& words)
    {
        const std::string title = words + std::string(700, 'x');
        std::vector<std::string_view> texts;
        Rows rows;
        for (int i = 1; i <= kItems; ++i) {
            texts.insert(texts.end(), {title, "<UNREAD>"});
            rows[Key(i) + "Title"] = title;
            rows[Key(i) + "Tag"] = "<UNREAD>";
        }
        Write(rows, [&] {
            RegistryStore::Batch batch(*store_);
            store_->ReplaceList("R", kItems, std::vector{"Title"sv, "Tag"sv}, texts);
            return !batch.Commit();
        });
    }
    bool Mark(int item)
    {
        Rows rows = stored_;
        rows[Key(item) + "Tag"] = "<READ>";
        return Write(
            rows, [&] { return store_->SetValue(store_->OpenKey(Key(item)), "Tag", RegType::Sz, "<READ>"); });
    }
    // Where that is said to have succeeded, or the store lives in memory and is not empty, it is all there.
    void Load()
    {
        RegistryStore::Batch batch(*store_);
        Rows rows;
        for (const std::string name : {"Title", "Tag"}) {
            const auto list = store_->QueryList("R", name, kItems);
            for (std::size_t i = 0; i < list.size(); ++i) {
                if (list[i])
                    rows[Key(static_cast<int>(i) + 1) + name] = std::get<std::string>(list[i]->data);
            }
        }
        EXPECT_TRUE(batch.Commit() || rows == stored_ || (rows.empty() && !store_->IsKept()));
    }
    // Two runs; `beforeEnd` is called before the second one's end.
    void Live(const std::function<void()>& beforeEnd)
    {
        Start();
        Merge("old");
        Mark(3);
        store_.reset();
        Start();
        Load();
        Merge("new");
        Mark(4);
        beforeEnd();
        store_.reset();
    }
    void Clear()
    {
        stored_ = onItsWay_ = {};
        for (const auto& left : fs::directory_iterator(folder_.Path()))
            fs::remove(left);
    }

    TemporaryFolder folder_;
    fs::path file_ = folder_.Path() / "registry.db";
    std::optional<RegistryStore> store_;
    Rows stored_; // as was acknowledged
    Rows onItsWay_; // stands there instead when the power is cut now
};

TEST_F(StoreFaultsTest, WhateverCallFailsWhateverWasAcknowledgedIsThereAndTheNextWriteSucceeds)
{
    using D = FaultyDisk;
    const std::pair<D::Call, int> cases[] = {{D::Read, SQLITE_IOERR_READ}, {D::Write, SQLITE_FULL},
        {D::Write, SQLITE_IOERR_WRITE}, {D::Write, SQLITE_READONLY}, {D::Sync, SQLITE_IOERR_FSYNC},
        {D::Truncate, SQLITE_IOERR_TRUNCATE}, {D::Open, SQLITE_CANTOPEN}, {D::Delete, SQLITE_IOERR_DELETE},
        {D::Lock, SQLITE_BUSY}, {D::Lock, SQLITE_IOERR_LOCK}, {D::Map, SQLITE_IOERR_SHMMAP}};
    for (const auto& [call, code] : cases) {
        for (const bool forever : {false, true}) {
            bool mendsBeforeEnd = true; // and where it would fail later still: after the end
            for (int at = 1;; ++at) {
                SCOPED_TRACE(testing::Message() << call << ' ' << at << ", " << code << ' ' << forever);
                Clear();
                FaultyDisk disk;
                disk.Fail(call, at, code, forever);
                Live([&] {
                    mendsBeforeEnd = mendsBeforeEnd && disk.HasFailed();
                    if (!mendsBeforeEnd)
                        return;
                    disk.Mend();
                    EXPECT_TRUE(!store_->IsKept() || stored_.empty() || Mark(5));
                    if (store_->IsKept())
                        Load();
                });
                if (!mendsBeforeEnd && !disk.HasFailed())
                    break;
                disk.Mend();
                Start();
                EXPECT_TRUE(store_->IsKept()) << store_->Notice();
                store_.reset();
                EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), {}), 1)
                    << "nothing is set aside";
                ASSERT_EQ(RowsIn(file_), stored_);
            }
        }
    }
}

TEST_F(StoreFaultsTest, APowerCutLeavesASoundStoreWithAllThatWasAcknowledged)
{
    struct Cut {
        std::map<std::string, std::string> files;
        Rows stored;
        Rows onItsWay;
    };
    std::vector<Cut> cuts;
    {
        FaultyDisk disk;
        disk.onChange = [&] {
            for (unsigned seed = 0; seed < 6; ++seed)
                cuts.push_back({disk.AfterPowerCut(seed), stored_, onItsWay_});
        };
        Live([] {});
    }
    const FaultyDisk disk; // which does not wait for the real one
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        SCOPED_TRACE(i);
        Clear();
        for (const auto& [name, bytes] : cuts[i].files)
            std::ofstream(name) << bytes;
        EXPECT_EQ(RegistryStore(file_).Notice(), "");
        const Rows rows = RowsIn(file_);
        EXPECT_TRUE(rows == cuts[i].stored || rows == cuts[i].onItsWay);
    }
}

} // namespace vantro
