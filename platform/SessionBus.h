#pragma once

namespace vantro {

// Where programs look for the session bus, and what says that there is none.
inline constexpr const char* kSessionBusVariable = "DBUS_SESSION_BUS_ADDRESS";
inline constexpr const char* kNoSessionBus = "disabled:";

// Libraries that are asked for a session bus that nobody has announced start one, wait for it and leave it
// behind. Once this program has set the variable, they and this function find none.
[[nodiscard]] bool IsSessionBusAnnounced();

} // namespace vantro
