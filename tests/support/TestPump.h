#pragma once

#include "base/EventPump.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <utility>

namespace vantro::test {

// The event loop of a test: a queue of events that any thread may add to.
class TestPump final : public EventPump {
public:
    void Post(std::function<void()> event) // any thread
    {
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
        changed_.notify_all();
    }
    void Close() { isClosing_ = true; } // as when the program closes: RunUntil() returns false

    // Also false, with a failure of the test, when no event came for 20 seconds.
    bool RunUntil(const std::function<bool()>& done) override
    {
        while (!isClosing_ && !done()) {
            std::unique_lock lock(mutex_);
            if (!changed_.wait_for(lock, std::chrono::seconds(20), [this] { return !events_.empty(); })) {
                ADD_FAILURE() << "waited in vain";
                return false;
            }
            const auto event = std::move(events_.front());
            events_.pop_front();
            lock.unlock();
            event();
        }
        return !isClosing_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> events_; // guarded by mutex_
    bool isClosing_ = false;
};

} // namespace vantro::test
