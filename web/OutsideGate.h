#pragma once

#include <chrono>

namespace vantro {

// Lets one address out for each press of a mouse button or a key: a page may ask for any number in one click.
class OutsideGate {
public:
    using Clock = std::chrono::steady_clock;
    // The two presses of a double click, and the repeats of a key that is held, are closer together.
    static constexpr std::chrono::milliseconds kBetween{500};

    // A button or key went down. Presses do not add up.
    void Pressed() { pressed_ = true; }
    // Whether an address may go out at `now`; the press is used up then, and kept when it may not.
    [[nodiscard]] bool Opens(Clock::time_point now)
    {
        if (!pressed_ || (opened_ != Clock::time_point() && now - opened_ < kBetween))
            return false;
        pressed_ = false;
        opened_ = now;
        return true;
    }

private:
    bool pressed_ = false;
    Clock::time_point opened_;
};

} // namespace vantro
