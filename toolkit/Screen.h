#pragma once

#include "base/Twips.h"

#include <functional>
#include <vector>

class wxTopLevelWindow;
class wxSize;

namespace vantro {

// 15 at 96 dots per inch. Follows the resolution that fonts are drawn with, so that lengths in twips keep
// their proportion to the text in them; a screen whose pixels the toolkit doubles by itself still counts as
// one of 96.
[[nodiscard]] TwipsPerPixel ScreenTwipsPerPixel();

// The size of text against that at 96 dots per inch.
[[nodiscard]] double TextScale();
// Calls `changed` from the main loop whenever that changes, as long as `window` lives.
void WatchTextScale(wxTopLevelWindow& window, std::function<void()> changed);

// The monitors in the toolkit's pixels, the primary one first; never empty.
[[nodiscard]] std::vector<Rectangle> Screens();

// Whether windows know where on the screen they stand. Under Wayland they do not, and GetPosition() makes a
// place up.
[[nodiscard]] bool WindowsKnowTheirPlace();

// What the window manager adds to a window in pixels, title bar included, as far as it is known: nothing
// before the window has been shown for the first time.
[[nodiscard]] wxSize DecorationSize(const wxTopLevelWindow& window);

// Gives a window this size in pixels without its decoration. A window not yet shown keeps it when the
// decoration becomes known.
void SetUndecoratedSize(wxTopLevelWindow& window, const wxSize& size);

} // namespace vantro
