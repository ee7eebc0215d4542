#include "tests/support/TestPump.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace vantro::test {
using Clock = std::chrono::steady_clock;

void TestPump::Post(std::function<void()> event)
{
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
    changed_.notify_all();
}

void TestPump::Close()
{
    const std::lock_guard lock(mutex_);
    isClosing_ = true;
    changed_.notify_all();
}

void TestPump::RunPending()
{
    const auto start = Clock::now();
    std::unique_lock lock(mutex_);
    for (std::size_t waiting = events_.size(); waiting > 0 && !events_.empty(); --waiting) {
        const auto event = std::move(events_.front());
        events_.pop_front();
        lock.unlock();
        event();
        lock.lock();
    }
    longest_
        = std::max(longest_, std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start));
}

bool TestPump::RunUntil(const std::function<bool()>& done)
{
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    while (!done()) {
        {
            std::unique_lock lock(mutex_);
            if (!changed_.wait_until(lock, deadline, [this] { return isClosing_ || !events_.empty(); })) {
                ADD_FAILURE() << "waited in vain";
                return false;
            }
            if (isClosing_)
                return false;
        }
        RunPending();
    }
    return true;
}

} // namespace vantro::test
