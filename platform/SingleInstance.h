#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace vantro {

// Sees to it that one store is used by one running program: the first to start holds a socket named after the
// store's folder and is told when another start happens. The name goes with the process, so a killed program
// leaves nothing behind. When the check itself fails, the program counts as the first.
class SingleInstance {
public:
    // `started` is called, from the event loop, whenever another start was tried.
    SingleInstance(const std::filesystem::path& dataFolder, std::function<void()> started);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    // False when another program holds the store; that one has been told.
    [[nodiscard]] bool IsFirst() const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace vantro
