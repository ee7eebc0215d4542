#include "windows/MessageBoxes.h"

#include "toolkit/MessageDialog.h"

#include <algorithm>
#include <utility>

namespace vantro {

void MessageBoxes::Show(Box box)
{
    const auto same = std::ranges::find(boxes_, box.subject, &Box::subject);
    if (same == boxes_.end()) {
        boxes_.push_back(std::move(box));
        if (boxes_.size() == 1)
            ShowFirst();
        return;
    }
    *same = std::move(box);
    if (same == boxes_.begin() && dialog_) {
        dialog_->SetTitle(wxString::FromUTF8(same->title));
        dialog_->SetText(same->text);
    }
}

void MessageBoxes::ShowFirst()
{
    // The window that is active now gets the keyboard back.
    wxWindow* active = wxGetTopLevelParent(wxGetActiveWindow());
    ShowFirstOver(active != nullptr ? active : parent_);
}

void MessageBoxes::ShowFirstOver(wxWindow* window)
{
    const Box& box = boxes_.front();
    dialog_ = new MessageDialog(window, box.title, box.text, box.stop, [this, window] {
        boxes_.pop_front();
        if (!boxes_.empty())
            ShowFirstOver(window);
    });
    dialog_->Show();
}

} // namespace vantro
