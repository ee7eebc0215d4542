#pragma once

#include <functional>
#include <vector>

class wxTopLevelWindow;

namespace vantro {

struct Shortcut {
    const char* keys; // as the toolkit writes them: "F5", "<Control>r"
    std::function<void()> action;
};

// From now on the keys count wherever in `window` the focus is, before any control or page gets them. Each
// action is called from the event, and must leave the window alive.
void HearKeys(wxTopLevelWindow& window, std::vector<Shortcut> shortcuts);

} // namespace vantro
