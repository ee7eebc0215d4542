#pragma once

#include <functional>

namespace vantro {

// The one loop inside another: only the waiting form of a download runs it, and nothing in the program asks
// for that. Interface thread only.
class EventPump {
public:
    virtual ~EventPump() = default;

    // Handles events, sleeping while there are none, until `done` is true. False when there is no event loop
    // to wait in.
    virtual bool RunUntil(const std::function<bool()>& done) = 0;
};

} // namespace vantro
