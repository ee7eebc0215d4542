#pragma once

#include <string>

class wxDataViewCtrl;
class wxDataViewRenderer;
class wxStatusBar;
class wxWindow;

namespace vantro {

// What screen readers and other assistive technology are told of windows that do not show it in words. The
// window library tells them nothing itself under GTK. Nothing is built for it before it is asked for.

void SetAccessibleName(wxWindow& window, const std::string& name);
void SetAccessibleName(wxDataViewCtrl& list, const std::string& name);

// A bar that is filled to that part, 0 to 1, of its length. To be called before anybody can ask for the
// window, and again for each change. The window has no children.
void TellAsProgressBar(wxWindow& window, double part);

// The text that the status bar shows now; a new one is announced.
void TellAsStatusBar(wxStatusBar& bar, const std::string& text);

// What is read after the text of the row that `renderer`, one of texts, is about to show; null for nothing.
// The words live as long as the program.
void SayAfterText(wxDataViewRenderer& renderer, const char* words);

} // namespace vantro
