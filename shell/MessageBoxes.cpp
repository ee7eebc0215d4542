#include "shell/MessageBoxes.h"

#include <algorithm>
#include <utility>
#include <wx/msgdlg.h>

namespace vantro {

void MessageBoxes::Show(Box box)
{
    if (std::ranges::find(boxes_, box) != boxes_.end())
        return;
    boxes_.push_back(std::move(box));
    if (boxes_.size() == 1)
        pump_.WhenUnwound([self = wxWeakRef<MessageBoxes>(this)] {
            if (self)
                self->CallAfter(&MessageBoxes::ShowNext);
        });
}

void MessageBoxes::ShowNext()
{
    while (!boxes_.empty()) {
        // The window waits with its closing until the box is answered, and no box comes once it has begun.
        const WxEventPump::Pass pass(pump_);
        if (!pump_.IsStopping()) {
            const Box& box = boxes_.front();
            wxMessageDialog dialog(parent_, wxString::FromUTF8(box.text), wxString::FromUTF8(box.title),
                wxOK | (box.stop ? wxICON_STOP : wxICON_NONE));
            dialog.ShowModal();
        }
        boxes_.pop_front();
    }
}

} // namespace vantro
