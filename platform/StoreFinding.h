#pragma once

#include <cstdint>
#include <sqlite3.h>
#include <string>

namespace vantro {

// How a store's file was found to be.
enum class StoreFinding : std::uint8_t {
    Usable,
    Damaged,
    Foreign, // another program's
    Newer, // of a version of this program that is still to come
    Busy, // another program holds it
    Full, // the disk is
    NotWritable
};

// What the result `code` of a statement of constant text, which `database` has just reported, says of the
// file.
[[nodiscard]] StoreFinding FindingOf(sqlite3* database, int code);

// The failure `code`, which `database` has just reported, as a sentence for the user.
[[nodiscard]] std::string FailureSentence(sqlite3* database, int code);

// Why a file that is not usable is not used, as a main clause that begins a sentence and has no full stop.
[[nodiscard]] std::string ReasonNotKept(StoreFinding finding);

} // namespace vantro
