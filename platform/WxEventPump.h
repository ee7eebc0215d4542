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

    // Marks its lifetime as a pass. To be held around whatever handles events in a loop of its own, such as a
    // modal box or a popup menu.
    class Pass {
    public:
        explicit Pass(WxEventPump& pump) : pump_(pump) { ++pump_.depth_; }
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        WxEventPump& pump_;
    };

    // Runs `action` now when no pass is under way, else when the last one has ended.
    void WhenUnwound(std::function<void()> action);
    // Makes every RunUntil() return false, now and from now on.
    void RequestStop() { stopping_ = true; }
    [[nodiscard]] bool IsStopping() const { return stopping_; }

private:
    int depth_ = 0;
    bool stopping_ = false;
    std::vector<std::function<void()>> unwound_;
};

} // namespace vantro
