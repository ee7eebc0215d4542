#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace vantro {

// Sees to it that one store is used by one running program. The first to start holds a lock on the store's
// folder, which goes with the process however that ends, and listens at a socket to be told of further
// starts.
class SingleInstance {
public:
    // Makes `dataFolder` when it is missing. Takes up to 3 s when another program holds it and does not
    // answer, as one that is ending does. When the lock cannot be asked for, the program counts as the first.
    //
    // `started` is called, from the event loop, whenever another start was tried; false means that this
    // program is about to end, and the other one then waits for that.
    SingleInstance(const std::filesystem::path& dataFolder, std::function<bool()> started);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    // False when another program holds the store; that one has been told, unless it is stopped.
    [[nodiscard]] bool IsFirst() const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace vantro
