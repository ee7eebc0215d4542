#include "platform/StoreFinding.h"

#include "base/Words.h"

#include <cerrno>

namespace vantro {

StoreFinding FindingOf(sqlite3* database, int code)
{
    switch (code & 0xff) {
    case SQLITE_OK:
    case SQLITE_DONE:
    case SQLITE_ROW: return StoreFinding::Usable;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR: // the statements being constant, only what stands in the file can be at fault
        return StoreFinding::Damaged;
    case SQLITE_BUSY:
    case SQLITE_LOCKED: return StoreFinding::Busy;
    case SQLITE_FULL: return StoreFinding::Full;
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
        if (const int system = sqlite3_system_errno(database); system == ENOSPC || system == EDQUOT)
            return StoreFinding::Full;
        return StoreFinding::NotWritable;
    default: return StoreFinding::NotWritable;
    }
}

std::string FailureSentence(sqlite3* database, int code)
{
    switch (code & 0xff) {
    case SQLITE_NOMEM: return Words("There is not enough memory.");
    case SQLITE_TOOBIG: return Words("A text is too long to be stored.");
    default: break;
    }
    switch (FindingOf(database, code)) {
    case StoreFinding::Full: return Words("The disk is full.");
    case StoreFinding::Busy: return Words("The store is held by another program.");
    case StoreFinding::Damaged: return Words("The store is damaged.");
    default: return Words("The store cannot be written.");
    }
}

std::string ReasonNotKept(StoreFinding finding)
{
    switch (finding) {
    case StoreFinding::Damaged: return Words("The store is damaged and cannot be set aside");
    case StoreFinding::Foreign: return Words("The store's file is another program's and cannot be set aside");
    case StoreFinding::Newer: return Words("The store was written by a newer version of this program");
    case StoreFinding::Busy: return Words("The store is held by another program");
    case StoreFinding::Full: return Words("The disk is full");
    case StoreFinding::NotWritable:
    case StoreFinding::Usable: break;
    }
    return Words("The store cannot be written");
}

} // namespace vantro
