#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

class wxTopLevelWindow;

namespace vantro::test {

inline constexpr std::chrono::seconds kPatience{10};

// Handles events until `condition` holds; false when it did not before the deadline.
[[nodiscard]] bool PumpUntil(
    const std::function<bool()>& condition, std::chrono::milliseconds deadline = kPatience);

// Shows a window and waits until the window manager has placed and decorated it. False when it never comes to
// rest.
[[nodiscard]] bool ShowAndSettle(wxTopLevelWindow& window);

// Fails the test when the window is still there after kPatience.
void DestroyAndWait(wxTopLevelWindow& window);

} // namespace vantro::test
