#include "shell/TreeClicks.h"

#include "feeds/ItemTag.h"
#include "feeds/SiteOperations.h"

namespace vantro {

void TreeClicks::tv_Click()
{
    const NewsNode* node = tree_.SelectedItem();
    if (node == nullptr)
        return;
    const std::string tag = node->Tag();
    if (LastButton == kRightButton) {
        popupItem_.reset();
        if (node->Parent() != nullptr)
            popupItem_ = Hold(*node);
        actions_.showPopup(IsUnread(tag), IsItemTag(tag) && !IsUnread(tag));
    } else if (LastButton == kLeftButton) {
        const std::string key = node->Key();
        if (const Site* site = FindSite(key))
            actions_.showPage(*site, key);
        else if (IsItemTag(tag))
            actions_.showMessage("Unknown item tag!. Please contact Tobrin");
    }
}

NewsNode* TreeClicks::PopupItem() const
{
    return popupItem_ ? tree_.Find(*popupItem_) : nullptr;
}

} // namespace vantro
