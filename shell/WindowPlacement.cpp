#include "shell/WindowPlacement.h"

#include "base/ClampValue.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace vantro {

namespace {

constexpr std::int32_t kNoMaximum = -1;

std::int32_t Difference(std::int32_t from, std::int32_t what)
{
    return RoundToInt32(double{1} * from - what);
}

double DistanceTo(const Rectangle& screen, std::int32_t left, std::int32_t top)
{
    const auto outside = [](double value, double start, double length) {
        return std::max({start - value, value - (start + length - 1), 0.0});
    };
    return std::hypot(outside(left, screen.left, screen.width), outside(top, screen.top, screen.height));
}

const Rectangle& ScreenOf(std::int32_t left, std::int32_t top, std::span<const Rectangle> screens)
{
    return *std::ranges::min_element(
        screens, {}, [&](const Rectangle& screen) { return DistanceTo(screen, left, top); });
}

std::int32_t PulledBack(
    std::int32_t value, std::int32_t length, std::int32_t screenStart, std::int32_t screenLength)
{
    return screenStart + ClampValue(Difference(value, screenStart), 0, Difference(screenLength, length));
}

} // namespace

std::int32_t RestoredLength(
    std::int32_t stored, std::int32_t minimumPixels, std::int32_t defaultPixels, double twipsPerPixel)
{
    if (minimumPixels > 0 && stored < minimumPixels * twipsPerPixel)
        return ToTwips(minimumPixels, twipsPerPixel);
    return stored != 0 ? stored : ToTwips(defaultPixels, twipsPerPixel);
}

Rectangle RestoredPosition(const Rectangle& form, std::span<const Rectangle> screens)
{
    assert(!screens.empty());
    Rectangle placed = form;
    if (form.top == 0) {
        const Rectangle& screen = screens.front();
        placed.left = screen.left + Difference(screen.width, form.width) / 2;
        placed.top = screen.top + Difference(screen.height, form.height) / 2;
        return placed;
    }
    const Rectangle& screen = ScreenOf(form.left, form.top, screens);
    placed.left = PulledBack(form.left, form.width, screen.left, screen.width);
    placed.top = PulledBack(form.top, form.height, screen.top, screen.height);
    return placed;
}

StartLayout LayOutAtStart(
    const MainWindowInside& inside, std::size_t strips, std::int32_t borderWidth, std::int32_t borderHeight)
{
    StartLayout layout;
    layout.picDownload.width = kTreeWidth;
    for (std::int32_t top = 0; layout.download.size() < strips; top += kDownloadHeight)
        layout.download.push_back({0, top, kTreeWidth - borderWidth, kDownloadHeight});
    layout.picDownload.height = static_cast<std::int32_t>(strips) * kDownloadHeight + borderHeight;
    layout.tv = {0, 0, kTreeWidth, Difference(inside.height, inside.statusBarHeight)};
    return layout;
}

ResizeLayout LayOutResized(const MainWindowInside& inside, const StartLayout& start)
{
    const std::int32_t statusBarTop = Difference(inside.height, inside.statusBarHeight);
    ResizeLayout layout{.picDownload = start.picDownload, .tv = start.tv, .web = {}};
    layout.picDownload.top = Difference(statusBarTop, start.picDownload.height);
    layout.tv.height = ClampValue(layout.picDownload.top, 0, kNoMaximum);
    layout.web = {start.tv.width, 0, ClampValue(Difference(inside.width, start.tv.width), 0, kNoMaximum),
        ClampValue(statusBarTop, 0, kNoMaximum)};
    return layout;
}

} // namespace vantro
