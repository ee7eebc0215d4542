#pragma once

#include <functional>
#include <string>
#include <wx/dialog.h>

namespace vantro {

// A message with an OK button. Application-modal while it is shown: the other windows take no input. But
// Show() returns at once and there is no event loop inside, so everything else goes on underneath.
class MessageDialog final : public wxDialog {
public:
    // `title` is shown whole, `text` as ReadableText() leaves it. `closed` is called when the user closes the
    // dialog, which then destroys itself; not when it goes with its parent.
    MessageDialog(wxWindow* parent, const std::string& title, const std::string& text, bool stopIcon,
        std::function<void()> closed);

    // Puts another text in the place of the one shown.
    void SetText(const std::string& text);

private:
    void Finish();

    wxSizer* texts_;
    std::function<void()> closed_;
};

} // namespace vantro
