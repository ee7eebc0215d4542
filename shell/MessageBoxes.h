#pragma once

#include "platform/WxEventPump.h"

#include <deque>
#include <string>
#include <wx/event.h>
#include <wx/weakref.h>
#include <wx/window.h>

namespace vantro {

// Shows message boxes with an OK button over the window, one at a time, never inside a pass of the event
// pump. A box that says the same as one that is open or waits is left out, so an unattended program does not
// pile them up.
class MessageBoxes final : public wxEvtHandler {
public:
    struct Box {
        std::string title;
        std::string text;
        bool stop = false; // with a stop icon

        friend bool operator==(const Box&, const Box&) = default;
    };

    MessageBoxes(wxWindow* parent, WxEventPump& pump) : parent_(parent), pump_(pump) { }

    // Returns at once; the box follows from the event loop.
    void Show(Box box);

private:
    void ShowNext();

    wxWindow* parent_;
    WxEventPump& pump_;
    std::deque<Box> boxes_; // the first is open, or about to be
};

} // namespace vantro
