#include "toolkit/WebEngine.h"

#include <dlfcn.h>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>

namespace vantro {

namespace {

using NewView = decltype(vantro_new_view);

template <class Function>
Function* Find(void* module, const char* name)
{
    void* found = module != nullptr ? dlsym(module, name) : nullptr;
    if (found == nullptr)
        throw std::runtime_error(std::string("Pages cannot be shown: ") + dlerror());
    return reinterpret_cast<Function*>(found);
}

// It stays open: its libraries cannot be unloaded.
NewView* Open()
{
    void* module = dlopen(VANTRO_ENGINE_MODULE, RTLD_LAZY | RTLD_LOCAL);
    Find<decltype(vantro_prepare_engine)>(module, "vantro_prepare_engine")();
    return Find<NewView>(module, "vantro_new_view");
}

// Process-wide, as the engine is; it cannot be closed either.
const std::shared_future<NewView*>& Opened()
{
    static const std::shared_future<NewView*> opened = std::async(std::launch::async, Open).share();
    return opened;
}

} // namespace

void OpenEngine()
{
    (void)Opened();
}

std::unique_ptr<NativeWebView> NewNativeWebView(wxWindow* parent, NativeWebView::Events events)
{
    return std::unique_ptr<NativeWebView>(Opened().get()(parent, &events));
}

} // namespace vantro
