#pragma once

#include <functional>
#include <string>
#include <webkit2/webkit2.h>

namespace vantro {

// From now on `focused` is called with the address of the link in the view's pages that gets the focus, and
// with "" when it loses it.
void ConnectFocusedLink(WebKitWebView* view, std::function<void(const std::string& link)> focused);

} // namespace vantro
