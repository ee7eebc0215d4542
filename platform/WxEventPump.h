#pragma once

#include "platform/EventPump.h"

#include <functional>
#include <vector>

namespace vantro {

// The event pump over the window library's event loop. What must not happen inside a pass (closing the
// window, a modal box) waits in WhenUnwound() until the last pass has ended.
class WxEventPump final : public EventPump {
public:
    void RunPending() override;
    bool RunUntil(const std::function<bool()>& done) override;

    // Runs `action` now when no pass is under way, else when the last one has ended.
    void WhenUnwound(std::function<void()> action);
    // Makes every RunUntil() return false, now and from now on.
    void RequestStop() { stopping_ = true; }

private:
    class Pass;

    int depth_ = 0;
    bool stopping_ = false;
    std::vector<std::function<void()>> unwound_;
};

} // namespace vantro
