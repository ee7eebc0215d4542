#pragma once

#include "toolkit/NativeWebView.h"

#include <functional>
#include <memory>
#include <vector>

namespace vantro {

// Sets, but not over what the user has set, what the engine and the window library are to find in the
// environment, and tells the names of what was set: programs that are opened outside are not to have it. To
// be called first where there is no other thread yet; later calls only tell.
const std::vector<const char*>& EngineEnvironment();

// Begins to open the engine, in a thread of its own as it takes a tenth of a second; it stays open for the
// whole process. `tried` is called from the main loop, soon after it is open or cannot be opened. Interface
// thread, as all below.
void OpenEngine(std::function<void()> tried);

// A view as a child of `parent`. Waits for the engine when it is not open yet. Throws std::runtime_error with
// a sentence for the user when it cannot be opened.
[[nodiscard]] std::unique_ptr<NativeWebView> NewNativeWebView(wxWindow* parent, NativeWebView::Events events);

// Whether the process that draws the pages is kept from the rest of the system. REQUIRES: there is a view.
[[nodiscard]] bool EngineHasSandbox();

// Tells libEGL, here and in the engine's processes, which graphics library to load.
inline constexpr const char* kGraphicsVariable = "__EGL_VENDOR_LIBRARY_FILENAMES";

// What the engine's module exports.
extern "C" {
// What takes time and may be done in any thread, once. Whether there is a sandbox.
bool vantro_prepare_engine();
NativeWebView* vantro_new_view(wxWindow* parent, NativeWebView::Events* events); // the caller's
}

} // namespace vantro
