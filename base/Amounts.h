#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vantro {

// Limits as they stand in sentences for the user: "64 MiB" and "10 minutes", or "70 bytes" and "90 seconds"
// where the larger unit does not divide them. No singular: a limit of one is not meant.
[[nodiscard]] std::string SizeText(std::int64_t bytes);
[[nodiscard]] std::string TimeText(std::chrono::seconds time);

} // namespace vantro
