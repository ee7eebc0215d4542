#pragma once

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <wx/toplevel.h>
#include <wx/uiaction.h>

namespace vantro::test {

inline constexpr std::chrono::seconds kPatience{10};

// Handles events until `condition` holds; false when it did not before the deadline.
[[nodiscard]] bool PumpUntil(
    const std::function<bool()>& condition, std::chrono::milliseconds deadline = kPatience);

// Handles events for a while, so that what was done takes effect.
void Rest(std::chrono::milliseconds time);

// Clicks inside a window as a user would, perhaps with a key held down.
void Click(const wxWindow& window, wxPoint place, int button = wxMOUSE_BTN_LEFT, int key = 0);

// What is on the screen at a place of the window, as red, green and blue.
[[nodiscard]] std::string ColourAt(const wxWindow& window, wxPoint place);

// What assistive technology finds in a window: a line for each object that has a name, of its role, its name,
// and its value or label where it has one.
[[nodiscard]] std::string Told(const wxWindow& window);

// Shows a window and waits until the window manager has placed and decorated it. False when it never comes to
// rest.
[[nodiscard]] bool ShowAndSettle(wxTopLevelWindow& window);

// Fails the test when the window is still there after kPatience.
void DestroyAndWait(wxTopLevelWindow& window);

} // namespace vantro::test
