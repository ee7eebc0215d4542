#pragma once

#include "feeds/NewsTree.h"
#include "feeds/TitleSearch.h"

#include <cstdint>
#include <functional>
#include <string>
#include <wx/event.h>
#include <wx/timer.h>

class wxWindow;

namespace vantro {

// What keys do in the news tree, besides moving as in any list. Interface thread only.
class TreeKeys final : public wxEvtHandler {
public:
    struct Actions {
        std::function<void(std::int16_t button)> click; // of TreeClicks, on the selected node
        // Shows what is looked for; "" when the search has ended.
        std::function<void(const std::string& sentence)> say;
    };

    // From now on the keys of `list` are heard, which shows `tree`. Both outlive this.
    TreeKeys(wxWindow& list, NewsTree& tree, Actions actions);

private:
    void OnKey(wxKeyEvent& event);
    void OnCharacter(wxKeyEvent& event);
    [[nodiscard]] bool ChangeSearch(int key);
    [[nodiscard]] bool ToggleBranch(int key);
    void TellSearch(bool found);
    void EndSearch();
    void ShowNextUnread();

    NewsTree& tree_;
    Actions actions_;
    TitleSearch search_;
    wxTimer pause_; // after it letters begin a new search
};

} // namespace vantro
