#include "shell/MessageBoxes.h"

#include "platform/MessageDialog.h"

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
    const Box& box = boxes_.front();
    dialog_ = new MessageDialog(parent_, box.title, box.text, box.stop, [this] {
        boxes_.pop_front();
        if (!boxes_.empty())
            ShowFirst();
    });
    dialog_->Show();
}

} // namespace vantro
