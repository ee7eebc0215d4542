#pragma once

#include "feeds/NewsTree.h"
#include "shell/TreeClicks.h"

#include <array>
#include <wx/bmpbndl.h>
#include <wx/dataview.h>

namespace vantro {

// The tree `tv` on the screen: shows the model and turns mouse and keyboard into clicks. Holds no state that
// the model has.
class NewsTreeView final : public wxDataViewCtrl, private NewsTreeListener {
public:
    // Attaches itself to `tree`; both `tree` and `clicks` outlive it.
    NewsTreeView(wxWindow* parent, NewsTree& tree, TreeClicks& clicks);
    ~NewsTreeView() override;

private:
    class Model;

    void RootAdded(const NewsNode& root) override;
    void BranchReplaced(const NewsNode& root) override;
    void NodeChanged(const NewsNode& node) override;
    void ExpandedChanged(const NewsNode& node) override;
    void SelectionChanged() override;

    void BindEvents();
    void OnKey(wxKeyEvent& event);
    void OnMotion(wxMouseEvent& event);
    void Click(std::int16_t button);
    void ShowSelection();
    [[nodiscard]] bool ToggleBranch(int key);

    NewsTree& tree_;
    TreeClicks& clicks_;
    wxObjectDataPtr<Model> model_;
    bool showing_ = false; // what the view reports meanwhile is not the user's doing
    bool toggled_ = false; // the click under way opened or closed a branch
};

} // namespace vantro
