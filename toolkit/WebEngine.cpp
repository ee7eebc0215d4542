#include "toolkit/WebEngine.h"

#include "platform/IdleCall.h"

#include <dlfcn.h>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

// Whether nobody has put another allocator in the place of the library's, as checkers do.
bool AllocatesByLibc()
{
    void* libc = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    return libc != nullptr && dlsym(RTLD_DEFAULT, "malloc") == dlsym(libc, "malloc");
}

// It stays open: its libraries cannot be unloaded. They look for what they need among themselves first, for
// two thirds of the time that it takes to search all the program's before. What had replaced the allocator
// would then be passed over.
NewView* Open()
{
    const int search = AllocatesByLibc() ? RTLD_DEEPBIND : 0;
    void* module = dlopen(VANTRO_ENGINE_MODULE, RTLD_LAZY | RTLD_LOCAL | search);
    Find<decltype(vantro_prepare_engine)>(module, "vantro_prepare_engine")();
    return Find<NewView>(module, "vantro_new_view");
}

// Process-wide, as the engine is; it cannot be closed either.
struct Module {
    std::shared_future<NewView*> opened;
    std::vector<std::function<void()>> waiting; // may hold windows: interface thread only
    std::jthread thread; // goes first, and is waited for
};

Module& TheModule()
{
    static Module module;
    return module;
}

void CallWaiting()
{
    for (const auto& action : std::exchange(TheModule().waiting, {}))
        action();
}

void BeginToOpen(Module& module)
{
    std::packaged_task<NewView*()> open(Open);
    module.opened = open.get_future().share();
    module.thread = std::jthread([open = std::move(open)]() mutable {
        open();
        CallSoon(CallWaiting);
    });
}

NewView* Opened()
{
    Module& module = TheModule();
    if (!module.opened.valid())
        BeginToOpen(module);
    return module.opened.get();
}

} // namespace

void OpenEngine(std::function<void()> tried)
{
    Module& module = TheModule();
    module.waiting.push_back(std::move(tried));
    if (module.opened.valid())
        CallSoon(CallWaiting);
    else
        BeginToOpen(module);
}

std::unique_ptr<NativeWebView> NewNativeWebView(wxWindow* parent, NativeWebView::Events events)
{
    return std::unique_ptr<NativeWebView>(Opened()(parent, &events));
}

} // namespace vantro
