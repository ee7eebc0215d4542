#pragma once

#include "base/EventPump.h"

#include <functional>

namespace vantro {

// The event pump over the window library's event loop.
class WxEventPump final : public EventPump {
public:
    bool RunUntil(const std::function<bool()>& done) override;
};

} // namespace vantro
