// Opens the engine under GLib's lock for modules. Libraries of the engine take that lock while they are
// loaded, under the loader's own; the interface thread, which opens a module for a picture, takes the two the
// other way round, and both would wait for ever. GLib has no other way to be handed its lock than this
// function of a module that it opens.

#include <dlfcn.h>
#include <gmodule.h>

extern "C" {
G_MODULE_EXPORT void* vantro_engine = nullptr;
}

namespace {

// Whether nobody has put another allocator in the place of the library's, as checkers do.
bool AllocatesByLibc()
{
    void* libc = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    return libc != nullptr && dlsym(RTLD_DEFAULT, "malloc") == dlsym(libc, "malloc");
}

} // namespace

// What it returns is the reason why the module cannot be used. The engine's libraries look for what they need
// among themselves first, for two thirds of the time that it takes to search all the program's before. What
// had replaced the allocator would then be passed over.
extern "C" G_MODULE_EXPORT const gchar* g_module_check_init(GModule* /*module*/)
{
    vantro_engine
        = dlopen("vantro-engine.so", RTLD_LAZY | RTLD_LOCAL | (AllocatesByLibc() ? RTLD_DEEPBIND : 0));
    return vantro_engine != nullptr ? nullptr : dlerror();
}
