#pragma once

#include "platform/StoreFinding.h"

#include <cstdint>
#include <sqlite3.h>

namespace vantro {

// Looks at a file's own marks and tables: whether it is a store, and of which version. Reads only; whether
// the content is whole is found out while the program runs (StoreCheck). Meant to stand in a transaction, so
// that what was seen still holds when the file is then written.
class StoreInspection {
public:
    // `database` outlives the inspection.
    explicit StoreInspection(sqlite3* database) : database_(database) { }

    [[nodiscard]] StoreFinding Judge();
    // Whether the tables are still to be laid down in what Judge() found usable.
    [[nodiscard]] bool IsBlank() const { return blank_; }

private:
    [[nodiscard]] std::int64_t Number(const char* constantSql);
    [[nodiscard]] bool HasOurTables();
    void Note(int code);

    sqlite3* database_;
    int failure_ = SQLITE_OK; // the first one
    bool blank_ = false;
};

} // namespace vantro
