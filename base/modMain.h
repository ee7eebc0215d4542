#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantro {

// The program-wide values. All but MinuteCount never change.
inline constexpr std::string_view ProductName = "Vantro";
inline constexpr std::string_view UnreadMarker = "<UNREAD>";
inline constexpr std::string_view ReadMarker = "<READ>";
inline constexpr std::string_view NewMarker = "<NEW>"; // lives inside a merge only
extern const std::string VersionLine; // such as "v1.0 build 0229"; not before main()
inline std::int32_t MinuteCount = 0; // minutes since the refresh timer was armed

// "v" major "." minor " build " and the last four digits of the revision, with zeros in front.
[[nodiscard]] std::string MakeVersionLine(int major, int minor, int revision);

} // namespace vantro
