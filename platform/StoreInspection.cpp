#include "platform/StoreInspection.h"

#include "base/AsciiText.h"
#include "platform/SqliteStatement.h"
#include "platform/StoreFormat.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantro {

namespace {

// Table texts are compared without blanks and case, as another tool may have laid them out differently.
std::string Squeezed(std::string_view sql)
{
    std::string squeezed;
    for (const char c : sql) {
        if (c != ' ' && c != '\n' && c != '\t' && c != '\r')
            squeezed += ToLowerAscii(c);
    }
    return squeezed;
}

} // namespace

StoreFinding StoreInspection::Judge()
{
    const std::int64_t id = Number("PRAGMA application_id");
    const std::int64_t version = Number("PRAGMA user_version");
    // Asked before the tables are looked at, which a newer version may write in ways not known here.
    if (id == kApplicationId && version > kFormatVersion)
        return StoreFinding::Newer;
    blank_ = Number("SELECT count(*) FROM sqlite_schema") == 0 && id == 0;
    const bool fits = blank_ || HasOurTables();
    if (failure_ == SQLITE_OK && id != kApplicationId && !(id == 0 && fits))
        return StoreFinding::Foreign;
    if (failure_ != SQLITE_OK)
        return FindingOf(database_, failure_);
    return fits ? StoreFinding::Usable : StoreFinding::Damaged;
}

std::int64_t StoreInspection::Number(const char* constantSql)
{
    SqliteStatement statement(database_, constantSql);
    const auto result = statement.Run();
    Note(result.Code());
    return result.HasRow() ? result.Number(0) : 0;
}

bool StoreInspection::HasOurTables()
{
    std::vector<std::string> found;
    SqliteStatement statement(database_,
        "SELECT sql FROM sqlite_schema WHERE name IN ('reg_key', 'reg_value') OR type = 'trigger' ORDER BY 1");
    auto result = statement.Run();
    for (; result.HasRow(); result.Next())
        found.push_back(Squeezed(result.Text(0)));
    Note(result.Code());
    return found == std::vector{Squeezed(kKeyTable), Squeezed(kValueTable)};
}

void StoreInspection::Note(int code)
{
    if (failure_ == SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE)
        failure_ = code;
}

} // namespace vantro
