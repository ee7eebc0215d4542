#include "feeds/HostsFile.h"

#include "base/AsciiText.h"
#include "base/Owned.h"
#include "base/TextCoding.h"
#include "feeds/Sites.h"

#include <glib.h>

namespace vantro {

namespace {

bool IsBaseAddress(const std::string& address)
{
    const Owned<gchar, g_free> scheme(g_uri_parse_scheme(address.c_str()));
    if (!scheme || (!IsSameIgnoringCase(scheme.get(), "http") && !IsSameIgnoringCase(scheme.get(), "https")))
        return false;
    const Owned<GUri, g_uri_unref> uri(g_uri_parse(address.c_str(), G_URI_FLAGS_NONE, nullptr));
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    return host != nullptr && *host != '\0';
}

void Take(GKeyFile* ini, const std::string& key, std::string& address, std::string& notice)
{
    const Owned<gchar, g_free> value(g_key_file_get_string(ini, "Hosts", key.c_str(), nullptr));
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
    const Owned<GKeyFile, g_key_file_free> ini(g_key_file_new());
    GError* raw = nullptr;
    const bool loaded = g_key_file_load_from_file(ini.get(), file.c_str(), G_KEY_FILE_NONE, &raw) != FALSE;
    const Owned<GError, g_error_free> error(raw);
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
