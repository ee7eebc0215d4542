#pragma once

#include "base/EventPump.h"

#include <functional>

namespace vantro {

// The event pump over the window library's event loop that runs when it is called. Asks `done` after each
// event, and every 50 ms while there are none.
class WxEventPump final : public EventPump {
public:
    bool RunUntil(const std::function<bool()>& done) override;
};

} // namespace vantro
