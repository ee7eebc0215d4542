#include "feeds/HostsFile.h"

#include "base/AsciiText.h"
#include "base/TextCoding.h"
#include "feeds/Sites.h"

#include <glib.h>
#include <memory>

namespace vantro {

namespace {

struct GlibFree {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(gchar* text) const { g_free(text); }
};
template <typename T>
using Glib = std::unique_ptr<T, GlibFree>;

bool IsBaseAddress(const std::string& address)
{
    Glib<gchar> scheme(g_uri_parse_scheme(address.c_str()));
    if (!scheme || (!IsSameIgnoringCase(scheme.get(), "http") && !IsSameIgnoringCase(scheme.get(), "https")))
        return false;
    GUri* uri = g_uri_parse(address.c_str(), G_URI_FLAGS_NONE, nullptr);
    if (uri == nullptr)
        return false;
    const char* host = g_uri_get_host(uri);
    const bool named = host != nullptr && *host != '\0';
    g_uri_unref(uri);
    return named;
}

void Take(GKeyFile* ini, const std::string& key, std::string& address, std::string& notice)
{
    Glib<gchar> value(g_key_file_get_string(ini, "Hosts", key.c_str(), nullptr));
    if (!value)
        return;
    std::string given = value.get();
    while (given.ends_with('/'))
        given.pop_back();
    if (IsBaseAddress(given))
        address = given;
    else
        notice = "vantro.ini: the address of " + key + " (\"" + OneLine(given, 60)
            + "\") is no http address; the built-in one is used.";
}

} // namespace

FeedHosts ReadHostsFile(const std::filesystem::path& file)
{
    FeedHosts hosts;
    for (const Site* site : Sites())
        hosts.addresses[site] = BuiltInHost(*site);
    Glib<GKeyFile> ini(g_key_file_new());
    GError* raw = nullptr;
    const bool loaded = g_key_file_load_from_file(ini.get(), file.c_str(), G_KEY_FILE_NONE, &raw) != FALSE;
    Glib<GError> error(raw);
    if (!loaded) {
        // An empty file counts as "not found" too.
        if (!g_error_matches(raw, G_FILE_ERROR, G_FILE_ERROR_NOENT)
            && !g_error_matches(raw, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_NOT_FOUND))
            hosts.notice = "vantro.ini cannot be read, the built-in addresses are used: "
                + OneLine(DecodeFeedText(raw->message), 120);
        return hosts;
    }
    for (const Site* site : Sites())
        Take(ini.get(), std::string(site->identifier), hosts.addresses[site], hosts.notice);
    return hosts;
}

} // namespace vantro
