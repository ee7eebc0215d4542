#pragma once

#include <cstdint>

namespace vantro {

// The value between two bounds. A negative bound is no bound; when the bounds cross, the maximum wins.
[[nodiscard]] constexpr std::int32_t ClampValue(
    std::int32_t value, std::int32_t minimum, std::int32_t maximum)
{
    if (maximum >= 0 && value > maximum)
        return maximum;
    return minimum >= 0 && value < minimum ? minimum : value;
}

} // namespace vantro
