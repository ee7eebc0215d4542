#pragma once

#include <functional>

namespace vantro {

// Calls `action` from the main loop when nothing more urgent waits there: what is to be painted or measured
// comes first. For any thread. What still waits when the loop has ended is never called.
void CallWhenIdle(std::function<void()> action);

} // namespace vantro
