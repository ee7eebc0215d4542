#pragma once

#include <functional>

class wxDialog;
class wxMenu;
class wxRect;
class wxTopLevelWindow;
class wxWindow;

namespace vantro {

// What the window library does in event loops of its own, done without one: no handler waits for the user.

// From its next Show() to its end, `dialog` keeps input from the program's other windows.
void TakeAllInput(wxDialog& dialog);

// Opens `menu` at the mouse pointer, or at the lower edge of `row` (in `window`'s client area), and returns.
// To be called while the mouse or key event that asked for it is handled, or not every desktop opens it. What
// is chosen comes to `window` as wxEVT_MENU; the menu must live as long as the window does.
void OpenPopup(wxMenu& menu, wxWindow& window);
void OpenPopupAt(wxMenu& menu, wxWindow& window, const wxRect& row);

// Calls `action`, now or from the main loop, while no menu is open and no window has taken all input.
void CallWhenInputIsFree(std::function<void()> action);

// The toolkit drops a close button's request while a menu is open or another window has taken all input. From
// now on `window` is closed all the same.
void HearCloseRequests(wxTopLevelWindow& window);

} // namespace vantro
