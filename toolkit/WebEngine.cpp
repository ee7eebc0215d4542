#include "toolkit/WebEngine.h"

#include "base/Words.h"
#include "platform/Files.h"
#include "platform/IdleCall.h"
#include "platform/ProcessLimits.h"
#include "platform/SessionBus.h"

#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <filesystem>
#include <functional>
#include <future>
#include <gmodule.h>
#include <link.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vantro {

namespace {

using NewView = decltype(vantro_new_view);

struct OpenModule {
    NewView* newView;
    bool hasSandbox;
};

// The engine ends the program when it cannot start its processes. They take half of this for a small page; of
// the addresses, nearly all, as the engine sets four GiB of them aside for its scripts.
constexpr Room kNeeds{64, 28, 48, std::size_t{6} << 30};

std::runtime_error Failure(const std::string& reason)
{
    return std::runtime_error(Words("Pages cannot be shown: %1", {reason}));
}

template <class Function>
Function* Find(void* module, const char* name)
{
    void* found = module != nullptr ? dlsym(module, name) : nullptr;
    if (found == nullptr)
        throw Failure(dlerror());
    return reinterpret_cast<Function*>(found);
}

// Where an open module has come from; empty for none.
std::filesystem::path PathOf(void* module)
{
    link_map* found = nullptr;
    if (module == nullptr || dlinfo(module, RTLD_DI_LINKMAP, static_cast<void*>(&found)) != 0)
        return {};
    std::error_code failed;
    return std::filesystem::canonical(found->l_name, failed);
}

// The file that tells the engine's processes to take our graphics library for the system's; empty when it
// names another than the one that lies beside it, as they would not start then.
std::string DescriptionOfGraphics()
{
    const std::filesystem::path library = PathOf(dlopen("vantro-graphics.so", RTLD_LAZY | RTLD_LOCAL));
    std::filesystem::path description = library;
    description.replace_extension(".json");
    const std::optional<std::string> text = ReadWholeFile(description);
    return text && text->find('"' + library.string() + '"') != std::string::npos ? description.string() : "";
}

std::vector<const char*> SetEnvironment()
{
    const std::pair<const char*, std::string> wanted[] = {
        // What these libraries keep would stay in the user's cache folder.
        {"MESA_SHADER_CACHE_DISABLE", "true"},
        {"GST_REGISTRY_DISABLE", "yes"},
        // Nothing is drawn by a graphics library, so none is to be started: not for the first program on a
        // display, nor for a view, nor by the engine's processes.
        {"GDK_GL", "disable"},
        {"WEBKIT_DISABLE_COMPOSITING_MODE", "1"},
        // It would look at the machine's memory every five seconds, for ever.
        {"WEBKIT_DISABLE_MEMORY_PRESSURE_MONITOR", "1"},
        {kGraphicsVariable, DescriptionOfGraphics()},
        {kSessionBusVariable, IsSessionBusAnnounced() ? "" : kNoSessionBus},
    };
    std::vector<const char*> set;
    for (const auto& [name, value] : wanted) {
        if (!value.empty() && std::getenv(name) == nullptr && setenv(name, value.c_str(), 0) == 0)
            set.push_back(name);
    }
    return set;
}

// It stays open: its libraries cannot be unloaded. opener/ tells why it is opened by way of another module.
OpenModule Open()
{
    if (const auto lacking = WhatIsLacking(kNeeds))
        throw Failure(*lacking);
    void* opener = dlopen("vantro-opener.so", RTLD_LAZY | RTLD_LOCAL);
    void** engine = Find<void*>(opener, "vantro_engine");
    const auto lazyAndLocal = static_cast<GModuleFlags>(G_MODULE_BIND_LAZY | G_MODULE_BIND_LOCAL);
    if (g_module_open(PathOf(opener).c_str(), lazyAndLocal) == nullptr)
        throw Failure(g_module_error());
    const bool hasSandbox = Find<decltype(vantro_prepare_engine)>(*engine, "vantro_prepare_engine")();
    return {Find<NewView>(*engine, "vantro_new_view"), hasSandbox};
}

// Process-wide, as the engine is; it cannot be closed either.
struct Module {
    std::shared_future<OpenModule> opened;
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
    std::packaged_task<OpenModule()> open(Open);
    module.opened = open.get_future().share();
    try {
        module.thread = std::jthread([open = std::move(open)]() mutable {
            open();
            CallSoon(CallWaiting);
        });
    } catch (const std::system_error& error) {
        std::promise<OpenModule> none;
        none.set_exception(std::make_exception_ptr(Failure(error.code().message())));
        module.opened = none.get_future().share();
        CallSoon(CallWaiting);
    }
}

OpenModule Opened()
{
    Module& module = TheModule();
    if (!module.opened.valid())
        BeginToOpen(module);
    return module.opened.get();
}

} // namespace

const std::vector<const char*>& EngineEnvironment()
{
    static const std::vector<const char*> set = SetEnvironment();
    return set;
}

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
    return std::unique_ptr<NativeWebView>(Opened().newView(parent, &events));
}

bool EngineHasSandbox()
{
    return Opened().hasSandbox;
}

} // namespace vantro
