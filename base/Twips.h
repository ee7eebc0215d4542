#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vantro {

// How many twips (1/1440 inch) one of the toolkit's pixels is long, in each direction.
struct TwipsPerPixel {
    double horizontal = 15.0;
    double vertical = 15.0;
};

// A rectangle in the unit that its place of use names.
struct Rectangle {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

// Halves go to the even neighbour; what exceeds 32 bits becomes the nearest 32-bit number.
[[nodiscard]] inline std::int32_t RoundToInt32(double number)
{
    return static_cast<std::int32_t>(
        std::nearbyint(std::clamp(number, double{INT32_MIN}, double{INT32_MAX})));
}

// A number of pixels survives the way there and back as long as a pixel is longer than one twip.
[[nodiscard]] inline std::int32_t ToTwips(std::int32_t pixels, double twipsPerPixel)
{
    return RoundToInt32(pixels * twipsPerPixel);
}

[[nodiscard]] inline std::int32_t ToPixels(std::int32_t twips, double twipsPerPixel)
{
    return RoundToInt32(twips / twipsPerPixel);
}

// Rounds the edges, not the lengths, so that what touches in twips touches in pixels.
[[nodiscard]] inline Rectangle ToPixels(const Rectangle& twips, TwipsPerPixel scale)
{
    const auto edge = [](std::int32_t start, std::int32_t length, double twipsPerPixel) {
        return RoundToInt32((double{1} * start + length) / twipsPerPixel);
    };
    const std::int32_t left = ToPixels(twips.left, scale.horizontal);
    const std::int32_t top = ToPixels(twips.top, scale.vertical);
    return {left, top, edge(twips.left, twips.width, scale.horizontal) - left,
        edge(twips.top, twips.height, scale.vertical) - top};
}

} // namespace vantro
