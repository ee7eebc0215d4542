#pragma once

#include <functional>

namespace vantro {

// Both call `action` from the main loop, and for both painting comes first. For any thread. What still waits
// when the loop has ended is never called.

// Before the toolkit goes on measuring the rows of a long list, which it does for seconds.
void CallSoon(std::function<void()> action);
// When nothing else waits.
void CallWhenIdle(std::function<void()> action);

} // namespace vantro
