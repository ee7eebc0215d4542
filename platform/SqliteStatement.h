#pragma once

#include "base/Owned.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <variant>

namespace vantro {

using Database = Owned<sqlite3, sqlite3_close_v2>;

// A prepared statement, kept for many runs. It must go before its database does, and both belong to one
// thread: the connection has no lock of its own.
class SqliteStatement {
public:
    // `sql` is this program's own text: what comes from outside is given to Run(). When it cannot be
    // prepared, every run fails with the reason.
    SqliteStatement(sqlite3* database, std::string_view sql)
    {
        sqlite3_stmt* made = nullptr;
        prepared_ = sqlite3_prepare_v3(
            database, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &made, nullptr);
        statement_.reset(made);
    }

    // What one run found, up to its first row. The statement is free for the next run when this goes.
    class Result {
    public:
        Result(sqlite3_stmt* statement, int code) : statement_(statement), code_(code) { }
        ~Result() { sqlite3_reset(statement_); }
        Result(const Result&) = delete;
        Result& operator=(const Result&) = delete;

        // SQLITE_ROW, SQLITE_DONE or the extended code of a failure.
        [[nodiscard]] int Code() const { return code_; }
        [[nodiscard]] bool HasRow() const { return code_ == SQLITE_ROW; }
        // REQUIRES: HasRow(). After the last row Code() is SQLITE_DONE.
        void Next() { code_ = sqlite3_step(statement_); }

        // REQUIRES for all of these: HasRow().
        [[nodiscard]] std::int64_t Number(int column) const
        {
            return sqlite3_column_int64(statement_, column);
        }
        [[nodiscard]] bool IsNumber(int column) const
        {
            return sqlite3_column_type(statement_, column) == SQLITE_INTEGER;
        }
        // All bytes, zero bytes included.
        [[nodiscard]] std::string Text(int column) const { return std::string(View(column)); }
        // The same until the next row.
        [[nodiscard]] std::string_view View(int column) const
        {
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
            const int size = sqlite3_column_bytes(statement_, column);
            return bytes ? std::string_view(bytes, static_cast<std::size_t>(size)) : std::string_view();
        }

    private:
        sqlite3_stmt* statement_;
        int code_;
    };

    using Value = std::variant<std::int64_t, std::string_view>;

    // Runs with `values` for ?1, ?2 ... Texts are not copied: they must live as long as the result.
    // REQUIRES: no other result of this statement is alive.
    Result Run(std::initializer_list<Value> values = {})
    {
        int code = prepared_;
        int place = 0;
        for (auto value = values.begin(); value != values.end() && code == SQLITE_OK; ++value)
            code = Bind(++place, *value);
        return {statement_.get(), code == SQLITE_OK ? sqlite3_step(statement_.get()) : code};
    }

private:
    int Bind(int place, const Value& value)
    {
        if (const auto* number = std::get_if<std::int64_t>(&value))
            return sqlite3_bind_int64(statement_.get(), place, *number);
        const std::string_view text = std::get<std::string_view>(value);
        // A null pointer would be bound as NULL, and an empty view may hold one.
        return sqlite3_bind_text64(statement_.get(), place, text.empty() ? "" : text.data(), text.size(),
            SQLITE_STATIC, SQLITE_UTF8);
    }

    Owned<sqlite3_stmt, sqlite3_finalize> statement_;
    int prepared_ = SQLITE_OK;
};

} // namespace vantro
