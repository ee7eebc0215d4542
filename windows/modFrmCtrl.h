#pragma once

#include "shell/WindowPlacement.h"

#include <cstdint>
#include <string_view>

class wxFrame;
class wxTopLevelWindow;
class wxWindow;

namespace vantro {

class modRegistry;

// A window whose place is kept under its name: "frmMain" has the values "frmMainTop", "frmMainLeft",
// "frmMainWidth" and "frmMainHeight" directly under the program's key, in twips. Top and left are those of
// the decorated window, width and height those without the decoration: only these restore to the same window
// under every window manager.
struct Form {
    wxTopLevelWindow& window;
    std::string_view name;
    modRegistry& registry;
};

// They write nothing when the window is minimised, maximised or fills the screen, and no position where the
// desktop tells none.
void SaveWindowPosition(const Form& form);
void SaveWindowSize(const Form& form);

// Size first: the position is made to fit it. To be called before the window is shown for the first time. The
// minimum is in pixels, without the decoration; 0 is none. Neither touches a window that is minimised or
// maximised.
void RestoreWindowSize(const Form& form, std::int32_t minW, std::int32_t minH);
void RestoreWindowPosition(const Form& form);

// From now on the window manager refuses to make the window smaller than 640 by 480 pixels (without its
// decoration).
void HookMainWindow(wxTopLevelWindow& window);
void UnhookMainWindow(wxTopLevelWindow& window);

// The parts of the main window that its layout places. The download strips are the children of picDownload,
// from the top.
struct MainWindowParts {
    wxWindow& tv;
    wxWindow& picDownload;
    wxWindow& web;
};

// Places everything once; what is returned is to be handed to each LayOutMainWindow.
[[nodiscard]] StartLayout LayOutMainWindowAtStart(const wxFrame& form, const MainWindowParts& parts);
// To be called at every wxEVT_SIZE of the form. The status bar is the frame's own and places itself.
void LayOutMainWindow(const wxFrame& form, const MainWindowParts& parts, const StartLayout& start);

} // namespace vantro
