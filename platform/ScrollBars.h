#pragma once

class wxWindow;

namespace vantro {

// Keeps the scroll bars of a native list in sight as long as there is something to scroll; GTK would show
// them only while the pointer moves over them, which hides that a row goes on.
void ShowScrollBars(wxWindow& list);

} // namespace vantro
