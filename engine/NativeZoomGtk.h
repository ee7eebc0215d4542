#pragma once

#include <webkit2/webkit2.h>

namespace vantro {

// The view is in its window. From now on Ctrl with plus, minus and 0, pressed anywhere in that window, and
// Ctrl with the wheel over the view change the size at which the view shows its pages, between half and three
// times the usual one. It holds for all pages as long as the view lives.
void ConnectZoom(WebKitWebView* view);

} // namespace vantro
