#pragma once

#include "toolkit/NativeWebView.h"

#include <functional>
#include <optional>
#include <string>
#include <webkit2/webkit2.h>

namespace vantro {

// A context of the engine that leaves nothing on the disk, with the sandbox on where it works. Addresses of
// our own scheme are answered by `serve` alone, which is copied. The caller owns it.
[[nodiscard]] WebKitWebContext* NewEngine(std::function<std::optional<PagePart>(const std::string&)> serve);

// Most of these are the engine's defaults; they are said because pages of strangers depend on them.
void Restrict(WebKitSettings* settings);

} // namespace vantro
