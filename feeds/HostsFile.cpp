#include "feeds/HostsFile.h"

#include "base/AsciiText.h"
#include "base/Owned.h"
#include "base/TextCoding.h"
#include "base/Words.h"
#include "feeds/Sites.h"
#include "platform/Files.h"

#include <cerrno>
#include <cstddef>
#include <glib.h>
#include <string_view>

namespace vantro {

namespace {

constexpr std::size_t kLongestInNotice = 40; // characters of an address

std::string Unreadable(const std::string& reason)
{
    return Words("vantro.ini cannot be read, the built-in addresses are used: %1", {reason});
}

// What keeps a path from being added to it, as a sentence about a key "%1" and its value "%2"; null when
// nothing does.
const char* FaultOf(const std::string& address)
{
    constexpr const char* kNoAddress = Marked("%1 (\"%2\") is no http address");
    const Owned<gchar, g_free> scheme(g_uri_parse_scheme(address.c_str()));
    if (!scheme || (!IsSameIgnoringCase(scheme.get(), "http") && !IsSameIgnoringCase(scheme.get(), "https")))
        return kNoAddress;
    const Owned<GUri, g_uri_unref> uri(g_uri_parse(address.c_str(), G_URI_FLAGS_NONE, nullptr));
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    if (host == nullptr || *host == '\0')
        return kNoAddress;
    const bool endsThere = g_uri_get_query(uri.get()) != nullptr || g_uri_get_fragment(uri.get()) != nullptr;
    return endsThere ? Marked("%1 (\"%2\") has a query or a fragment") : nullptr;
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
            ? Words("%1 cannot be read", {key})
            : "";
    std::string given(Trim(value.get()));
    while (given.ends_with('/'))
        given.pop_back();
    if (const char* fault = FaultOf(given))
        return Words(fault, {key, OneLine(given, kLongestInNotice)});
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
            hosts.notice = Unreadable(error == EINVAL ? Words("It is no file.") : DescribeError(error) + ".");
        return hosts;
    }
    const Owned<GKeyFile, g_key_file_free> ini(g_key_file_new());
    GError* raw = nullptr;
    g_key_file_load_from_data(ini.get(), text->data(), text->size(), G_KEY_FILE_NONE, &raw);
    const Owned<GError, g_error_free> error(raw);
    if (error) {
        hosts.notice = Unreadable(OneLine(DecodeFeedText(error->message), 120));
        return hosts;
    }
    std::string faults;
    for (const Site* site : Sites()) {
        const std::string key(site->identifier);
        if (const std::string fault = Take(ini.get(), key, hosts.addresses[site]); !fault.empty())
            faults.append(faults.empty() ? "" : ", ").append(fault);
    }
    if (!faults.empty())
        hosts.notice = Words("vantro.ini: %1; the built-in address is used.", {faults});
    return hosts;
}

} // namespace vantro
