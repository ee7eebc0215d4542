// A graphics library that has a display and nothing on it. The engine ends where it finds no display, though
// our pages are drawn without one; the system's library would bring a compiler of shaders, 20 MiB in each
// process. libEGL loads this one in its place when told so in the environment (WebEngine.h), and finds
// `__egl_Main` by its name.

#include <glvnd/libeglabi.h>
#include <string_view>

namespace {

using Function = void (*)();

EGLBoolean Initialize(EGLDisplay /*display*/, EGLint* major, EGLint* minor)
{
    if (major != nullptr)
        *major = 1;
    if (minor != nullptr)
        *minor = 5;
    return EGL_TRUE;
}

const char* QueryString(EGLDisplay /*display*/, EGLint name)
{
    switch (name) {
    case EGL_VERSION: return "1.5";
    case EGL_VENDOR: return "none";
    case EGL_CLIENT_APIS: return "OpenGL_ES";
    default: return "EGL_EXT_platform_base";
    }
}

EGLBoolean GetNoConfigs(EGLDisplay /*display*/, EGLConfig* /*configs*/, EGLint /*size*/, EGLint* count)
{
    if (count != nullptr)
        *count = 0;
    return EGL_TRUE;
}

EGLBoolean ChooseNoConfig(
    EGLDisplay display, const EGLint* /*wanted*/, EGLConfig* configs, EGLint size, EGLint* count)
{
    return GetNoConfigs(display, configs, size, count);
}

EGLint GetError()
{
    return EGL_BAD_CONFIG;
}

EGLBoolean Succeed()
{
    return EGL_TRUE;
}

// EGL_FALSE, or nothing where a context, a surface or an image was asked for. Callers of the system's calling
// convention need not agree with it on arguments that are not looked at.
void* Fail()
{
    return nullptr;
}

void* GetFunction(const char* wanted)
{
    const std::string_view name(wanted);
    struct Named {
        std::string_view name;
        Function function;
    };
    static const Named kFunctions[] = {
        {"eglInitialize", reinterpret_cast<Function>(Initialize)},
        {"eglQueryString", reinterpret_cast<Function>(QueryString)},
        {"eglGetConfigs", reinterpret_cast<Function>(GetNoConfigs)},
        {"eglChooseConfig", reinterpret_cast<Function>(ChooseNoConfig)},
        {"eglGetError", reinterpret_cast<Function>(GetError)},
        {"eglBindAPI", reinterpret_cast<Function>(Succeed)},
        {"eglReleaseThread", reinterpret_cast<Function>(Succeed)},
        {"eglTerminate", reinterpret_cast<Function>(Succeed)},
    };
    for (const Named& known : kFunctions) {
        if (known.name == name)
            return reinterpret_cast<void*>(known.function);
    }
    return name.starts_with("egl") ? reinterpret_cast<void*>(Fail) : nullptr;
}

} // namespace

EGLBoolean __egl_Main(uint32_t version, const __EGLapiExports* /*exports*/, __EGLvendorInfo* /*vendor*/,
    __EGLapiImports* imports)
{
    if (EGL_VENDOR_ABI_GET_MAJOR_VERSION(version) != EGL_VENDOR_ABI_MAJOR_VERSION)
        return EGL_FALSE;
    imports->getPlatformDisplay = [](EGLenum, void*, const EGLAttrib*) {
        static char display;
        return static_cast<EGLDisplay>(&display);
    };
    imports->getSupportsAPI
        = [](EGLenum api) -> EGLBoolean { return api == EGL_OPENGL_ES_API ? EGL_TRUE : EGL_FALSE; };
    imports->getVendorString = [](int) { return "EGL_EXT_platform_base EGL_MESA_platform_surfaceless"; };
    imports->getProcAddress = GetFunction;
    imports->getDispatchAddress = [](const char*) -> void* { return nullptr; };
    imports->setDispatchIndex = [](const char*, int) {};
    return EGL_TRUE;
}
