#pragma once

#include <string_view>
#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>

namespace vantro {

// The icon of that key at 16 and 32 pixels, or as much larger as text is, from the program's resources; empty
// when there is none of that key.
[[nodiscard]] wxBitmapBundle LoadIcon(std::string_view key);

// The program's own for window frames, in all its sizes (16 to 256 pixels) that are no larger than that.
[[nodiscard]] wxIconBundle ProgramIcons(int largest);

} // namespace vantro
