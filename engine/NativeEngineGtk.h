#pragma once

#include "base/Owned.h"
#include "toolkit/NativeWebView.h"

#include <functional>
#include <optional>
#include <string>
#include <webkit2/webkit2.h>

namespace vantro {

using Engine = Owned<WebKitWebContext, g_object_unref>;

// True when the tool behind the engine's sandbox can set one up here; in some containers it cannot, and the
// engine would then end the program. Tried once, which starts a process. Any thread.
[[nodiscard]] bool SandboxWorks();

// A context of the engine that leaves nothing on the disk, with the sandbox on where it works. Addresses of
// our own scheme are answered by `serve` alone, which is copied.
[[nodiscard]] Engine NewEngine(std::function<std::optional<PagePart>(const std::string&)> serve);

// Deletes the descriptions of this process's sandboxes, which the engine leaves in the user's runtime folder:
// the cache folder where there is none. Nothing needs them when the view has gone.
void DeleteSandboxFiles();

// Most of these are the engine's defaults; they are said because pages of strangers depend on them.
void Restrict(WebKitSettings* settings);

} // namespace vantro
