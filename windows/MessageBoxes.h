#pragma once

#include <deque>
#include <string>
#include <wx/weakref.h>

class wxWindow;

namespace vantro {

class MessageDialog;

// Shows message boxes with an OK button over the window, one at a time, and waits for none of them. There is
// one box for each subject: a newer one takes its place, in sight or in the queue, so that an unattended
// program does not pile them up. Interface thread only.
class MessageBoxes {
public:
    struct Box {
        std::string subject; // what it is about; the user does not see it
        std::string title;
        std::string text;
        bool stop = false; // with a stop icon
    };

    // Boxes stand over the active window, over `parent` when there is none. `parent` outlives this.
    explicit MessageBoxes(wxWindow* parent) : parent_(parent) { }

    // Returns at once.
    void Show(Box box);

private:
    void ShowFirst();
    void ShowFirstOver(wxWindow* window);

    wxWindow* parent_;
    wxWeakRef<MessageDialog> dialog_; // owned by the window library
    std::deque<Box> boxes_; // the first is the one in sight
};

} // namespace vantro
