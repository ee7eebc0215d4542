#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace vantro {

// "1 site", "2 sites", for a `thing` whose plural ends in s.
[[nodiscard]] std::string CountText(std::int64_t count, std::string_view thing);
// Limits as they stand in sentences for the user: "64 MiB", "1 minute" and "10 minutes", or "70 bytes" and
// "90 seconds" where the larger unit does not divide them.
[[nodiscard]] std::string SizeText(std::int64_t bytes);
[[nodiscard]] std::string TimeText(std::chrono::seconds time);

} // namespace vantro
