#pragma once

#include "base/Twips.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantro {

// Where windows and the parts of the main window go, as arithmetic alone. All lengths are twips unless they
// are named pixels; shell/modFrmCtrl applies the results.

inline constexpr std::int32_t kDefaultWindowWidth = 640; // pixels
inline constexpr std::int32_t kDefaultWindowHeight = 480; // pixels
inline constexpr std::int32_t kTreeWidth = 3750;
inline constexpr std::int32_t kDownloadHeight = 60;

// The width or height for a stored one, in twips: at least `minimumPixels`, and `defaultPixels` for a stored
// 0 that no minimum raised.
[[nodiscard]] std::int32_t RestoredLength(
    std::int32_t stored, std::int32_t minimumPixels, std::int32_t defaultPixels, double twipsPerPixel);

// `form` has the stored left and top and the form's present width and height. A top of 0 centres the form on
// the first of `screens`; any other place is pulled back onto the screen it lies on, or else the nearest, as
// far as the form fits. REQUIRES: `screens` is not empty.
[[nodiscard]] Rectangle RestoredPosition(const Rectangle& form, std::span<const Rectangle> screens);

// The inside of the main window; its height reaches from the menu bar to the window's lower edge.
struct MainWindowInside {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t statusBarHeight = 0;
};

// What is set once. Of picDownload only the size counts, of the others everything.
struct StartLayout {
    Rectangle tv;
    Rectangle picDownload;
    std::vector<Rectangle> download; // the strips, inside picDownload
};
// The border is what picDownload is larger outside than inside, in each direction.
[[nodiscard]] StartLayout LayOutAtStart(
    const MainWindowInside& inside, std::size_t strips, std::int32_t borderWidth, std::int32_t borderHeight);

// What every resize sets.
struct ResizeLayout {
    Rectangle picDownload;
    Rectangle tv;
    Rectangle web;
};
[[nodiscard]] ResizeLayout LayOutResized(const MainWindowInside& inside, const StartLayout& start);

} // namespace vantro
