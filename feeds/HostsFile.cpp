#include "feeds/HostsFile.h"

#include "base/AsciiText.h"
#include "base/Owned.h"
#include "base/TextCoding.h"
#include "feeds/Sites.h"
#include "platform/Files.h"

#include <cerrno>
#include <cstddef>
#include <glib.h>
#include <string_view>

namespace vantro {

namespace {

constexpr std::size_t kLongestInNotice = 40; // characters of an address
constexpr std::string_view kUnreadable = "vantro.ini cannot be read, the built-in addresses are used: ";

// What keeps a path from being added to it; empty when nothing does.
std::string_view FaultOf(const std::string& address)
{
    constexpr std::string_view kNoAddress = "is no http address";
    const Owned<gchar, g_free> scheme(g_uri_parse_scheme(address.c_str()));
    if (!scheme || (!IsSameIgnoringCase(scheme.get(), "http") && !IsSameIgnoringCase(scheme.get(), "https")))
        return kNoAddress;
    const Owned<GUri, g_uri_unref> uri(g_uri_parse(address.c_str(), G_URI_FLAGS_NONE, nullptr));
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    if (host == nullptr || *host == '\0')
        return kNoAddress;
    const bool endsThere = g_uri_get_query(uri.get()) != nullptr || g_uri_get_fragment(uri.get()) != nullptr;
    return endsThere ? "has a query or a fragment" : "";
}

// Takes the address of the key over where it can be used; else what is wrong with it.
std::string Take(GKeyFile* ini, const std::string& key, std::string& address)
{
    GError* raw = nullptr;
    const Owned<gchar, g_free> value(g_key_file_get_string(ini, "Hosts", key.c_str(), &raw));
    const Owned<GError, g_error_free> error(raw);
    if (!value)
        return g_error_matches(raw, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_UNKNOWN_ENCODING)
                || g_error_matches(raw, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_INVALID_VALUE)
            ? "cannot be read"
            : "";
    std::string given(Trim(value.get()));
    while (given.ends_with('/'))
        given.pop_back();
    const std::string_view fault = FaultOf(given);
    if (!fault.empty())
        return "(\"" + OneLine(given, kLongestInNotice) + "\") " + std::string(fault);
    address = given;
    return {};
}

} // namespace

FeedHosts ReadHostsFile(const std::filesystem::path& file)
{
    FeedHosts hosts;
    for (const Site* site : Sites())
        hosts.addresses[site] = BuiltInHost(*site);
    const auto text = ReadWholeFile(file);
    if (!text) {
        if (const int error = errno; error != ENOENT)
            hosts.notice = std::string(kUnreadable)
                + (error == EINVAL ? "It is no file." : DescribeError(error) + ".");
        return hosts;
    }
    const Owned<GKeyFile, g_key_file_free> ini(g_key_file_new());
    GError* raw = nullptr;
    g_key_file_load_from_data(ini.get(), text->data(), text->size(), G_KEY_FILE_NONE, &raw);
    const Owned<GError, g_error_free> error(raw);
    if (error) {
        hosts.notice = std::string(kUnreadable) + OneLine(DecodeFeedText(error->message), 120);
        return hosts;
    }
    std::string faults;
    for (const Site* site : Sites()) {
        const std::string key(site->identifier);
        if (const std::string fault = Take(ini.get(), key, hosts.addresses[site]); !fault.empty())
            faults.append(faults.empty() ? "" : ", ").append(key).append(" ").append(fault);
    }
    if (!faults.empty())
        hosts.notice = "vantro.ini: " + faults + "; the built-in address is used.";
    return hosts;
}

} // namespace vantro
