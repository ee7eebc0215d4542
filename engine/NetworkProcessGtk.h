#pragma once

#include "platform/Descriptor.h"

#include <functional>

namespace vantro {

// The engine's process that fetches what pages need. The engine does not tell when it dies, nor ends it when
// it has been stopped; it starts another with the next load. Interface thread only.
class NetworkProcess {
public:
    // `lost` is called from the main loop when the process found last has ended.
    explicit NetworkProcess(std::function<void()> lost);
    ~NetworkProcess();
    NetworkProcess(const NetworkProcess&) = delete;
    NetworkProcess& operator=(const NetworkProcess&) = delete;

    // Watches the process from now on, if there is one that is not watched yet.
    void Find();
    // Ends the watched one when it has been stopped.
    void EndIfStopped();

private:
    void Forget();

    std::function<void()> lost_;
    int id_ = 0; // 0 when none is watched
    Descriptor descriptor_; // of the process, so that its number cannot come to mean another
    unsigned source_ = 0;
};

} // namespace vantro
