#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vantro {

// Limits as they stand in sentences for the user: "64 MiB", "1 minute" and "10 minutes", or "70 bytes" and
// "90 seconds" where the larger unit does not divide them.
[[nodiscard]] std::string SizeText(std::int64_t bytes);
[[nodiscard]] std::string TimeText(std::chrono::seconds time);

} // namespace vantro
