#pragma once

#include <functional>

namespace vantro {

// The one door through which the program lets user-interface events be handled in the middle of its own work.
// Interface thread only.
class EventPump {
public:
    virtual ~EventPump() = default;

    // Handles the events that are waiting now, then returns. Never sleeps.
    virtual void RunPending() = 0;

    // Handles events, sleeping while there are none, until `done` is true. False when the program is closing
    // first: the caller then unwinds at once.
    virtual bool RunUntil(const std::function<bool()>& done) = 0;
};

} // namespace vantro
