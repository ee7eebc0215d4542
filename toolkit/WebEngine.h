#pragma once

#include "toolkit/NativeWebView.h"

#include <functional>
#include <memory>

namespace vantro {

// What the engine is to find in the environment. Programs that are opened outside are not to have it.
struct EngineVariable {
    const char* name;
    const char* value;
};
inline constexpr EngineVariable kEngineEnvironment[] = {
    // What these libraries keep would stay in the user's cache folder.
    {"MESA_SHADER_CACHE_DISABLE", "true"},
    {"GST_REGISTRY_DISABLE", "yes"},
    // Nor is the graphics library started for a view that is drawn without it.
    {"WEBKIT_DISABLE_COMPOSITING_MODE", "1"},
};

// Begins to open the engine, in a thread of its own as it takes a tenth of a second; it stays open for the
// whole process. `tried` is called from the main loop, soon after it is open or cannot be opened. Interface
// thread, as all below.
void OpenEngine(std::function<void()> tried);

// A view as a child of `parent`. Waits for the engine when it is not open yet. Throws std::runtime_error with
// a sentence for the user when it cannot be opened.
[[nodiscard]] std::unique_ptr<NativeWebView> NewNativeWebView(wxWindow* parent, NativeWebView::Events events);

// What the engine's module exports.
extern "C" {
void vantro_prepare_engine(); // what takes time and may be done in any thread, once
NativeWebView* vantro_new_view(wxWindow* parent, NativeWebView::Events* events); // the caller's
}

} // namespace vantro
