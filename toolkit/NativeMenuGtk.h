#pragma once

#include "toolkit/NativeWebView.h"

#include <functional>
#include <string>
#include <webkit2/webkit2.h>

namespace vantro {

// What the entries show, and what they do. Each entry keeps a copy of `command`, which goes with the menu,
// and calls it when it is chosen: `link` is the address under the pointer, "" beside links and for the other
// entries.
struct ContextMenuState {
    bool canGoBack;
    bool canGoForward;
    std::function<void(NativeWebView::Command, const std::string& link)> command;
};

// Leaves in the engine's context menu only what works here.
void FillContextMenu(WebKitContextMenu* menu, WebKitHitTestResult* under, const ContextMenuState& state);

} // namespace vantro
