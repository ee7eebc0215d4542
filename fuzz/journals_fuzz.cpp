// A store's journal with spoilt bytes: whatever was spoilt before its last two commits, which are whole, is
// found. One alone may be what a power cut has left.

#include "fuzz/Fuzz.h"
#include "platform/Files.h"
#include "platform/StoreFile.h"
#include "platform/StoreJournal.h"

#include <algorithm>
#include <string>

namespace vantro {

namespace {

constexpr std::size_t kPage = 512; // bytes, the smallest there is
constexpr std::size_t kFrame = 24 + kPage;

// The bytes of a journal of some commits.
std::string MakeJournal()
{
    const std::filesystem::path file = Write("journal.db", "");
    const Database database = Connect(file.string(), SQLITE_OPEN_READWRITE);
    for (const char* step : {"PRAGMA page_size=512; PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0",
             "CREATE TABLE t(n)", "INSERT INTO t VALUES(1)", "UPDATE t SET n = zeroblob(2000)",
             "INSERT INTO t VALUES(2)", "INSERT INTO t VALUES(3)"})
        Require(
            sqlite3_exec(database.get(), step, nullptr, nullptr, nullptr) == SQLITE_OK, "a journal is made");
    std::string journal = ReadWholeFile(file.string() + "-wal").value_or("");
    Require(journal.size() > 6 * kFrame, "a journal holds what was committed");
    return journal;
}

} // namespace

} // namespace vantro

void vantro::Try(std::string_view bytes)
{
    static const std::string whole = MakeJournal();
    const std::string spoilt = Spoilt(whole, Input(bytes));
    const bool isDamaged = IsJournalDamaged(Write("spoilt-wal", spoilt));
    const auto first = static_cast<std::size_t>(std::ranges::mismatch(whole, spoilt).in1 - whole.begin());
    const std::size_t last = whole.size() - 2 * kFrame; // where the last two commits begin, of a frame each
    if (first == whole.size())
        Require(!isDamaged, "a whole journal is not damaged");
    else if (first < last
        && std::string_view(spoilt).substr(std::min(last, spoilt.size()))
            == std::string_view(whole).substr(last))
        Require(isDamaged, "what was committed and cannot be read any more is noticed");
}
