#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// The disk as SQLite sees it, which fails when it is told to, and of which the power can be cut. All that is
// opened while it lives goes through it, and must be closed before it goes. It waits for nothing: neither for
// the real disk nor for locks. One thread uses it.
class FaultyDisk {
public:
    enum Call : std::size_t { Read, Write, Sync, Truncate, Open, Delete, Lock, Map, kCalls };

    FaultyDisk();
    ~FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    // The call number `at` of this kind from now on, the first being 1, returns `code`; with `forever` so do
    // all after it.
    void Fail(Call call, int at, int code, bool forever);
    void Mend() { kind_ = kCalls; }
    [[nodiscard]] bool HasFailed() const { return failed_; }

    // The files by their names as a power cut at this moment may leave them. What was not synced is lost for
    // `seed` 0, there for 1; for others chance decides of each 512 bytes of it, and how many of the last
    // changes of names are lost.
    [[nodiscard]] std::map<std::string, std::string> AfterPowerCut(unsigned seed) const;
    std::function<void()> onChange = [] {}; // before each

    // What the program does without SQLite. To be called by a test that stands in for the system's calls.
    static void Renamed(const std::string& from, const std::string& to);
    static void Synced(const std::string& path);

private:
    friend struct DiskCalls;
    struct Change {
        std::int64_t at;
        std::string bytes;
        bool cutsOff; // the file there
    };
    struct Content {
        std::string synced;
        std::vector<Change> since;
    };
    using Names = std::map<std::string, Content*>;

    // SQLITE_OK or the failure.
    int Note(Call call);

    sqlite3_vfs real_;
    sqlite3_vfs shown_{};
    sqlite3_vfs* before_;
    Call kind_ = kCalls;
    std::array<int, kCalls> count_{};
    int at_ = 0;
    int code_ = 0;
    bool forever_ = false;
    bool failed_ = false;
    std::deque<Content> contents_;
    std::vector<Names> names_{1}; // those synced last, and after each change since
};

} // namespace vantro
