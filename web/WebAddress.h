#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace vantro {

// Why a transfer could not even be started, in the system's number and words.
struct ReadRefused {
    std::int32_t number = 0; // libcurl's number for the fault of an address
    std::string description;
};

// The address as it may be requested (spaces and other bytes that may not stand in an address
// percent-encoded), or the reason why it is no http or https address. Without a scheme it is none: nothing is
// guessed.
[[nodiscard]] std::variant<std::string, ReadRefused> CheckWebAddress(const std::string& address);

// The host that `address` names, or "" when it is no address.
[[nodiscard]] std::string HostOf(const std::string& address);

// Whether `address` names a port that browsers open nothing at, because other services than the web's listen
// there (WHATWG Fetch Standard, section "Port blocking"). False when it is no address.
[[nodiscard]] bool HasBarredPort(const std::string& address);

// The server that `address` names, such as "http://a.example:8080/", without user, path and query; "" when
// it is no address.
[[nodiscard]] std::string OriginOf(const std::string& address);

// What `location` means when the server at `base` redirects to it: an absolute address of any scheme, in
// ASCII. Nothing when it is malformed or absurdly long.
[[nodiscard]] std::optional<std::string> ResolveRedirect(
    const std::string& base, const std::string& location);

} // namespace vantro
