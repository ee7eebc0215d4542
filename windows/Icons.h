#pragma once

#include <string_view>
#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>

namespace vantro {

// The icon of that key at 16 and 32 pixels, or as much larger as text is, from the program's resources; empty
// when there is none of that key.
[[nodiscard]] wxBitmapBundle LoadIcon(std::string_view key);

// The program's own, for window frames.
[[nodiscard]] wxIconBundle ProgramIcons();

} // namespace vantro
