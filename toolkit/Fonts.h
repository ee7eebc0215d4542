#pragma once

namespace vantro {

// Has the toolkit begin to list the system's fonts, which it does in a thread of its own: the first text that
// is measured needs them.
void BeginToListFonts();

} // namespace vantro
