#pragma once

#include "platform/SqliteStatement.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

namespace vantro {

// A damaged store, held so that nothing is written to it any more, and what could be read of it.
struct DamagedStore {
    Database hold; // other connections' writes wait until it goes
    std::filesystem::path rescued; // a whole store beside it; empty when it could not be written
};

// Looks a store's file through to its last page, in a thread of its own: some 10 ms for each MiB, too long
// for a start. Interface thread.
class StoreCheck {
public:
    // `damaged` is called from the main loop, at most once, and only when the file is damaged.
    StoreCheck(const std::filesystem::path& file, std::function<void(DamagedStore)> damaged);
    // Breaks off what is under way. `damaged` is not called any more.
    ~StoreCheck();
    StoreCheck(const StoreCheck&) = delete;
    StoreCheck& operator=(const StoreCheck&) = delete;

private:
    struct Search;
    std::shared_ptr<Search> search_;
    std::jthread thread_;
};

} // namespace vantro
