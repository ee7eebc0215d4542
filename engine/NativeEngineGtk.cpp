#include "engine/NativeEngineGtk.h"

#include "base/Owned.h"
#include "toolkit/WebEngine.h"
#include "web/DisplayAddress.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantro {

namespace {

using Serve = std::function<std::optional<PagePart>(const std::string&)>;

// The engine takes itself to be in a Flatpak where this file lies, and makes no sandbox with bwrap.
constexpr const char* kMarkOfFlatpak = "/.flatpak-info";

bool TrySandbox()
{
    if (g_file_test(kMarkOfFlatpak, G_FILE_TEST_EXISTS) != FALSE)
        return false;
    std::vector<const char*> command{
        "bwrap", "--ro-bind", "/", "/", "--proc", "/proc", "--dev", "/dev", "--unshare-all", "true", nullptr};
    gint status = 1;
    const gboolean ran = g_spawn_sync(nullptr, const_cast<char**>(command.data()), nullptr,
        static_cast<GSpawnFlags>(
            G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL),
        nullptr, nullptr, nullptr, nullptr, &status, nullptr);
    const Owned<gchar, g_free> proxy(
        g_find_program_in_path("xdg-dbus-proxy")); // the sandbox needs it as well
    return ran != FALSE && status == 0 && proxy;
}

void Answer(WebKitURISchemeRequest* request, gpointer serve)
{
    std::optional<PagePart> part = (*static_cast<Serve*>(serve))(webkit_uri_scheme_request_get_uri(request));
    if (!part) {
        const Owned<GError, g_error_free> error(
            g_error_new_literal(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "No part of the page shown"));
        webkit_uri_scheme_request_finish_error(request, error.get());
        return;
    }
    const auto size = static_cast<gint64>(part->bytes.size());
    const Owned<GInputStream, g_object_unref> stream(
        g_memory_input_stream_new_from_data(g_memdup2(part->bytes.data(), part->bytes.size()), size, g_free));
    webkit_uri_scheme_request_finish(request, stream.get(), size, std::string(part->mimeType).c_str());
}

// What <link> can have done ahead of a click. Looking names up is forbidden by no policy of a page, and the
// engine no longer heeds its setting "enable-dns-prefetching" (2.50); most of the others are off by default.
constexpr std::string_view kLookingAhead[]
    = {"LinkDNSPrefetch", "LinkPreconnect", "LinkPreconnectEarlyHints", "LinkPrefetch", "LinkPreload"};

} // namespace

bool SandboxWorks()
{
    static const bool works = TrySandbox();
    return works;
}

Engine NewEngine(Serve serve)
{
    Engine engine(webkit_web_context_new_ephemeral());
    if (SandboxWorks()) {
        if (const char* graphics = std::getenv(kGraphicsVariable)) {
            const std::string folder = std::filesystem::path(graphics).parent_path();
            webkit_web_context_add_path_to_sandbox(engine.get(), folder.c_str(), TRUE);
        }
        webkit_web_context_set_sandbox_enabled(engine.get(), TRUE);
    }
    // Else the pictures of all pages stay in memory, up to some 50 MiB.
    webkit_web_context_set_cache_model(engine.get(), WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
    const std::string scheme(kPageScheme);
    // Pages that were followed can neither show nor link to what is ours.
    webkit_security_manager_register_uri_scheme_as_display_isolated(
        webkit_web_context_get_security_manager(engine.get()), scheme.c_str());
    webkit_web_context_register_uri_scheme(engine.get(), scheme.c_str(), Answer, new Serve(std::move(serve)),
        [](gpointer given) { delete static_cast<Serve*>(given); });
    return engine;
}

void DeleteSandboxFiles()
{
    namespace fs = std::filesystem;
    const std::string ours = "webkit-" + std::to_string(getpid()) + "-";
    std::error_code ignored;
    for (const auto& entry :
        fs::directory_iterator(fs::path(g_get_user_runtime_dir()) / ".flatpak", ignored)) {
        if (entry.path().filename().native().starts_with(ours))
            fs::remove_all(entry.path(), ignored);
    }
}

void Restrict(WebKitSettings* settings)
{
    g_object_set(settings, "allow-file-access-from-file-urls", FALSE, "allow-universal-access-from-file-urls",
        FALSE, "javascript-can-open-windows-automatically", FALSE, "javascript-can-access-clipboard", FALSE,
        "enable-dns-prefetching", FALSE, "enable-page-cache", FALSE, "enable-developer-extras", FALSE,
        "enable-html5-database", FALSE, "enable-media", FALSE, "enable-fullscreen", FALSE, "enable-webgl",
        FALSE, "hardware-acceleration-policy", WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER, nullptr);
    const Owned<WebKitFeatureList, webkit_feature_list_unref> features(webkit_settings_get_all_features());
    for (gsize i = 0; i < webkit_feature_list_get_length(features.get()); ++i) {
        WebKitFeature* feature = webkit_feature_list_get(features.get(), i);
        if (std::ranges::find(kLookingAhead, webkit_feature_get_identifier(feature))
            != std::end(kLookingAhead))
            webkit_settings_set_feature_enabled(settings, feature, FALSE);
    }
}

} // namespace vantro
