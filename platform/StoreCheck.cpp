#include "platform/StoreCheck.h"

#include "platform/IdleCall.h"
#include "platform/StoreFile.h"
#include "platform/StoreRescue.h"

#include <string>
#include <utility>

namespace vantro {

struct StoreCheck::Search {
    Search(std::filesystem::path looked, std::function<void(DamagedStore)> told)
        : file(std::move(looked)),
          damaged(std::move(told)),
          database(Connect(file.string(), SQLITE_OPEN_READWRITE))
    {
    }

    std::filesystem::path file;
    std::function<void(DamagedStore)>
        damaged; // interface thread only; none when nobody is to be told any more
    Database database; // made before the thread is
    std::filesystem::path rescued;

    [[nodiscard]] bool FindsDamage() const
    {
        SqliteStatement check(database.get(), "PRAGMA integrity_check(1)");
        const auto result = check.Run();
        if (result.HasRow())
            return result.Text(0) != "ok";
        const int code = result.Code() & 0xff;
        return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
    }

    // Whether there is something to be told.
    bool Run()
    {
        if (!FindsDamage()
            || sqlite3_exec(database.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK)
            return false;
        if (RescueStore(database.get(), NameOfNew(file)))
            rescued = NameOfNew(file);
        return true;
    }
};

StoreCheck::StoreCheck(const std::filesystem::path& file, std::function<void(DamagedStore)> damaged)
    : search_(std::make_shared<Search>(file, std::move(damaged)))
{
    thread_ = std::jthread([search = search_] {
        if (search->Run())
            CallSoon([search] {
                if (search->damaged)
                    search->damaged({std::move(search->database), search->rescued});
            });
    });
}

StoreCheck::~StoreCheck()
{
    search_->damaged = nullptr;
    if (search_->database)
        sqlite3_interrupt(search_->database.get());
    thread_.join();
}

} // namespace vantro
