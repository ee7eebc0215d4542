#pragma once

#include "feeds/NewsTree.h"
#include "shell/TreeClicks.h"
#include "toolkit/NativeList.h"
#include "windows/TreeKeys.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <wx/bmpbndl.h>
#include <wx/dataview.h>
#include <wx/timer.h>

namespace vantro {

// The tree `tv` on the screen: shows the model and turns mouse and keyboard into clicks. Holds no state that
// the model has. Interface thread only.
class NewsTreeView final : public wxDataViewCtrl, private NewsTreeListener {
public:
    // Attaches itself to `tree` for as long as it lives; both `tree` and `clicks` outlive it. `say` shows
    // what a search by letters looks for; "" when it has ended.
    NewsTreeView(wxWindow* parent, NewsTree& tree, TreeClicks& clicks,
        std::function<void(const std::string& sentence)> say);
    ~NewsTreeView() override;

    // Opens `menu` for the click under way: at the pointer, or at the selected row when a key asked for it.
    // Its choices come to the parent window as wxEVT_MENU.
    void ShowPopup(wxMenu& menu);
    // Draws the icons anew for the size of text; that of the rows follows by itself.
    void FollowTextScale();
    // Whether it is still finding back to where it stood before a merge.
    [[nodiscard]] bool IsMoving() const { return place_.has_value(); }

private:
    class Model;

    // What stands in the first visible row.
    struct Place {
        std::string root;
        std::optional<HeldItem> item;
        int hidden = 0; // pixels of the row that are out of sight
    };

    void RootAdded(const NewsNode& root) override;
    void BranchReplaced(const NewsNode& root) override;
    void NodeChanged(const NewsNode& node) override;
    void ExpandedChanged(const NewsNode& node) override;
    void SelectionChanged() override;

    void BindEvents();
    void ShowAnew();
    void Click(std::int16_t button);
    void KeepPlace();
    [[nodiscard]] ListRow PlaceNow() const;
    void RestorePlaceWhenIdle(bool forTheLastTime);
    void ShowSelection();
    void MoveCursorToSelection();
    void OnLeftUp(wxMouseEvent& event);
    void OnRightDown(wxMouseEvent& event);
    [[nodiscard]] bool IsOnRow(const wxPoint& position) const;

    NewsTree& tree_;
    TreeClicks& clicks_;
    wxObjectDataPtr<Model> model_;
    bool showing_ = false; // what the view reports meanwhile is not the user's doing
    std::optional<Place> place_; // what the view is to stand at again after the merges of a check
    wxTimer placeTimer_; // until the toolkit has come to rest after them
    bool byKey_ = false; // the click under way was made with a key
    TreeKeys keys_;
};

} // namespace vantro
