#include "shell/WindowPlacement.h"

#include <gtest/gtest.h>
#include <tuple>
#include <vector>

namespace vantro {

TEST(WindowPlacementTest, RestoresALengthNoSmallerThanTheMinimum)
{
    for (const auto& [stored, minimum, twips, expected] :
        {std::tuple{0, 640, 15.0, 9600}, {3000, 640, 15, 9600}, {-3000, 640, 15, 9600}, {9601, 640, 15, 9601},
            {0, 640, 7.5, 4800}, {4799, 640, 7.5, 4800}, {0, 0, 15, 9600}, {3000, 0, 15, 3000}})
        EXPECT_EQ(RestoredLength(stored, minimum, 640, twips), expected) << stored << " " << minimum;
}

TEST(WindowPlacementTest, PutsAWindowOnTheScreenItsPlaceLiesOn)
{
    const std::vector<Rectangle> one{{0, 0, 1024 * 15, 768 * 15}};
    const std::vector<Rectangle> two{one[0], {-15000, 1500, 15000, 9000}}; // a smaller one to the left
    for (const auto& [what, form, screens, left, top] : {
             std::tuple{"kept as it was", Rectangle{1500, 1515, 9600, 7200}, one, 1500, 1515},
             {"centred when the top is 0, the half twip dropped", {50000, 0, 9601, 7201}, one, 2879, 2159},
             {"pulled in from the right and from below", {50000, 50000, 9600, 7200}, one, 5760, 4320},
             {"pulled in from the left and from above", {-50, -50, 9600, 7200}, one, 0, 0},
             {"too large for the screen: no maximum", {1500, 1500, 16000, 12000}, one, 1500, 1500},
             {"pulled in on the second screen", {-1000, 1, 9600, 7200}, two, 0, 1},
             {"pulled in to the screen that is nearest", {-90000, 90000, 9600, 7200}, two, -15000, 3300},
             {"a place at the far end of 32 bits", {INT32_MAX, INT32_MIN, 9600, 7200}, one, 5760, 0},
         })
        EXPECT_EQ(RestoredPosition(form, screens), (Rectangle{left, top, form.width, form.height})) << what;
}

TEST(WindowPlacementTest, LeavesNoNegativeSizesInTheSmallestWindow)
{
    const ResizeLayout tiny = LayOutResized({3000, 300, 330}, LayOutAtStart({9600, 7200, 330}, 3, 30, 30));
    EXPECT_EQ(tiny.tv, (Rectangle{0, 0, 3750, 0}));
    EXPECT_EQ(tiny.web, (Rectangle{3750, 0, 0, 0}));
}

TEST(TwipsTest, BringBackEveryNumberOfPixelsAndLeaveNoGapBetweenStrips)
{
    const StartLayout start = LayOutAtStart({9600, 7200, 330}, 3, 30, 30);
    for (const double twips : {15.0, 12.0, 1440 / 110.0, 10.0, 7.5, 3.75}) {
        for (std::int32_t end = 0; const Rectangle& strip : start.download) {
            const Rectangle pixels = ToPixels(strip, {twips, twips});
            EXPECT_EQ(pixels.top, end) << twips;
            end = pixels.top + pixels.height;
        }
        for (std::int32_t pixels = -100; pixels < 4000; ++pixels)
            ASSERT_EQ(ToPixels(ToTwips(pixels, twips), twips), pixels) << twips;
    }
}

} // namespace vantro
