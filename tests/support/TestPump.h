#pragma once

#include "platform/EventPump.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace vantro::test {

// The event loop of a test: a queue of events that any thread may add to.
class TestPump final : public EventPump {
public:
    void Post(std::function<void()> event); // any thread
    void Close(); // as when the program closes: RunUntil() returns false

    void RunPending() override;
    // Also false, with a failure of the test, when nothing came of it for 20 seconds.
    bool RunUntil(const std::function<bool()>& done) override;

    // How long the longest RunPending() took, waiting not included.
    [[nodiscard]] std::chrono::milliseconds LongestPass() const { return longest_; }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> events_; // guarded by mutex_
    bool isClosing_ = false; // guarded by mutex_
    std::chrono::milliseconds longest_{};
};

} // namespace vantro::test
