#pragma once

#include "feeds/NewsTree.h"
#include "feeds/Site.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace vantro {

// What a click on the news tree does: always to the node that is selected when the click arrives.
// Interface thread only.
class TreeClicks {
public:
    // Called from tv_Click() and by nothing else.
    struct Actions {
        std::function<void(const Site&, const std::string& nodeKey)> showPage;
        // Which of the two entries are enabled: never both, and none for a site.
        std::function<void(bool markRead, bool markUnread)> showPopup;
        std::function<void(const std::string& text)> showMessage;
    };
    enum Button : std::int16_t { kNoButton = 0, kLeftButton = 1, kRightButton = 2 };

    // `tree` outlives this.
    TreeClicks(NewsTree& tree, Actions actions) : tree_(tree), actions_(std::move(actions)) { }

    void tv_MouseDown(std::int16_t button) { LastButton = button; }
    // Acts by the button pressed last. With no node selected it does nothing.
    void tv_Click();

    // The item for which the popup was opened last, wherever a merge has put it since. Null when it was
    // opened for a site, or the story is gone.
    [[nodiscard]] NewsNode* PopupItem() const;

    std::int16_t LastButton = kNoButton;

private:
    NewsTree& tree_;
    Actions actions_;
    std::optional<HeldItem> popupItem_;
};

} // namespace vantro
