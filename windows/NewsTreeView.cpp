#include "windows/NewsTreeView.h"

#include "base/TextCoding.h"
#include "base/Words.h"
#include "feeds/Site.h"
#include "platform/IdleCall.h"
#include "toolkit/Accessibility.h"
#include "toolkit/ModalInput.h"
#include "windows/Icons.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>
#include <wx/menu.h>
#include <wx/utils.h>
#include <wx/weakref.h>

namespace vantro {

namespace {

constexpr std::size_t kLongestText = 200; // characters; more would only slow the layout of the row
constexpr float kFontScale = 0.9F; // the tree is narrow and its captions are long

wxDataViewItem ItemOf(const NewsNode* node)
{
    return wxDataViewItem(const_cast<NewsNode*>(node));
}
NewsNode* NodeOf(const wxDataViewItem& item)
{
    return static_cast<NewsNode*>(item.GetID());
}

int IndexOf(const std::vector<std::unique_ptr<NewsNode>>& nodes, const NewsNode* node)
{
    return static_cast<int>(std::ranges::find(nodes, node, &std::unique_ptr<NewsNode>::get) - nodes.begin());
}

// Tells in words what the pictures do.
class RowRenderer final : public wxDataViewIconTextRenderer {
public:
    RowRenderer() : wxDataViewIconTextRenderer(GetDefaultType(), wxDATAVIEW_CELL_INERT, wxALIGN_LEFT) { }

    bool SetValue(const wxVariant& value) override
    {
        SayAfterText(*this, StateWord(NodeOf(m_itemBeingRendered)->Image()));
        return wxDataViewIconTextRenderer::SetValue(value);
    }
};

// Sets a flag for the length of a block.
class Showing {
public:
    explicit Showing(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
    ~Showing() { flag_ = before_; }
    Showing(const Showing&) = delete;
    Showing& operator=(const Showing&) = delete;

private:
    bool& flag_;
    bool before_;
};

} // namespace

class NewsTreeView::Model final : public wxDataViewModel {
public:
    explicit Model(const NewsTree& tree) : tree_(tree) { }

    void ForgetIcons() { icons_.clear(); }

    [[nodiscard]] unsigned int GetColumnCount() const override { return 1; }
    [[nodiscard]] wxString GetColumnType(unsigned int /*column*/) const override
    {
        return "wxDataViewIconText";
    }

    void GetValue(wxVariant& value, const wxDataViewItem& item, unsigned int /*column*/) const override
    {
        const NewsNode* node = NodeOf(item);
        value << wxDataViewIconText(
            wxString::FromUTF8(OneLine(node->Text(), kLongestText)), Icon(node->Image()));
    }

    bool SetValue(
        const wxVariant& /*value*/, const wxDataViewItem& /*item*/, unsigned int /*column*/) override
    {
        return false;
    }

    bool GetAttr(const wxDataViewItem& item, unsigned int /*column*/, wxDataViewItemAttr& attr) const override
    {
        const NewsNode* node = NodeOf(item);
        attr.SetBold(node->Bold());
        if (const auto back = node->BackColor()) {
            attr.SetBackgroundColour(wxColour(back->red, back->green, back->blue));
            attr.SetColour(*wxBLACK); // a dark theme's light text would vanish on it
        }
        return true;
    }

    [[nodiscard]] wxDataViewItem GetParent(const wxDataViewItem& item) const override
    {
        return item.IsOk() ? ItemOf(NodeOf(item)->Parent()) : wxDataViewItem();
    }

    [[nodiscard]] bool IsContainer(const wxDataViewItem& item) const override
    {
        return !item.IsOk() || NodeOf(item)->Parent() == nullptr;
    }
    [[nodiscard]] bool HasContainerColumns(const wxDataViewItem& /*item*/) const override { return true; }

    unsigned int GetChildren(const wxDataViewItem& item, wxDataViewItemArray& children) const override
    {
        const auto& nodes = item.IsOk() ? NodeOf(item)->Children() : tree_.Roots();
        children.Alloc(nodes.size());
        for (const auto& node : nodes)
            children.Add(ItemOf(node.get()));
        return static_cast<unsigned int>(nodes.size());
    }

private:
    const wxBitmapBundle& Icon(TreeImage image) const
    {
        const auto [entry, isNew] = icons_.try_emplace(image);
        if (isNew)
            entry->second = LoadIcon(ImageKey(image));
        return entry->second;
    }

    const NewsTree& tree_;
    mutable std::map<TreeImage, wxBitmapBundle> icons_; // each from its first use on
};

NewsTreeView::NewsTreeView(wxWindow* parent, NewsTree& tree, TreeClicks& clicks,
    std::function<void(const std::string& sentence)> say)
    : wxDataViewCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
        wxDV_SINGLE | wxDV_NO_HEADER | wxBORDER_THEME, wxDefaultValidator, "tv"),
      tree_(tree),
      clicks_(clicks),
      model_(new Model(tree)),
      placeTimer_(this),
      keys_(*this, tree,
          {[this](std::int16_t button) {
               byKey_ = true;
               Click(button);
               byKey_ = false;
           },
              std::move(say)})
{
    AssociateModel(model_.get());
    SetAccessibleName(*this, Words("News"));
    auto* column
        = new wxDataViewColumn(wxString(), new RowRenderer, 0, wxCOL_WIDTH_AUTOSIZE, wxALIGN_LEFT, 0);
    AppendColumn(column);
    SetExpanderColumn(column);
    SetFont(GetFont().Scaled(kFontScale));
    ShowScrollBars(*this);
    DrawArrowsBlack(*this);
    ShowCutTextsInTooltips(*this);
    SwitchOffSearch(*this);
    BindEvents();
    tree_.Attach(this);
}

NewsTreeView::~NewsTreeView()
{
    tree_.Attach(nullptr);
}

void NewsTreeView::RootAdded(const NewsNode& root)
{
    model_->ItemAdded({}, ItemOf(&root));
}

void NewsTreeView::BranchReplaced(const NewsNode& /*root*/)
{
    ShowAnew();
}

void NewsTreeView::ShowAnew()
{
    // Cleared() costs a fraction of removing and adding the rows, but the view then forgets how it stood.
    const Showing showing(showing_);
    KeepPlace();
    model_->Cleared();
    for (const auto& root : tree_.Roots()) {
        if (root->Expanded())
            Expand(ItemOf(root.get()));
    }
    ShowSelection();
    FitWidth(*this);
    if (place_)
        ScrollTo(*this, PlaceNow());
}

// Until the toolkit has measured and laid out the new rows, which takes it some frames, the view does not say
// where it stands, and the next merge of a check comes before; so the place that was kept first counts.
void NewsTreeView::KeepPlace()
{
    constexpr int kUntilRest = 300; // milliseconds
    const NewsNode* top = NodeOf(GetTopItem());
    if (!place_ && top != nullptr) {
        const bool isItem = top->Parent() != nullptr;
        place_ = Place{isItem ? top->Parent()->Key() : top->Key(),
            isItem ? std::optional(Hold(*top)) : std::nullopt, HiddenPartOfTopRow(*this)};
    }
    RestorePlaceWhenIdle(false);
    placeTimer_.StartOnce(kUntilRest);
}

void NewsTreeView::RestorePlaceWhenIdle(bool forTheLastTime)
{
    CallWhenIdle([view = wxWeakRef<NewsTreeView>(this), forTheLastTime] {
        if (view && wxGetMouseState().LeftIsDown())
            view->place_.reset(); // the user may hold the scroll bar
        if (!view || !view->place_)
            return;
        ScrollTo(*view, view->PlaceNow(), view->place_->hidden);
        if (forTheLastTime && !view->placeTimer_.IsRunning())
            view->place_.reset();
    });
}

// The row of the story kept, or the place where it stood when it has gone.
ListRow NewsTreeView::PlaceNow() const
{
    const NewsNode* root = tree_.Find(place_->root);
    ListRow row{IndexOf(tree_.Roots(), root)};
    const int items = static_cast<int>(root->Children().size());
    if (!place_->item || items == 0)
        return row;
    const NewsNode* same = tree_.Find(*place_->item);
    row.child = same != nullptr ? IndexOf(root->Children(), same)
                                : std::clamp(ItemNumber(place_->item->key), 1, items) - 1;
    return row;
}

void NewsTreeView::FollowTextScale()
{
    model_->ForgetIcons();
    ShowAnew();
}

void NewsTreeView::NodeChanged(const NewsNode& node)
{
    model_->ItemChanged(ItemOf(&node));
    // That measures every row again: of a list this long, seldom shown, not for one row.
    constexpr std::size_t kLongList = 2000;
    if (std::ranges::none_of(tree_.Roots(),
            [](const auto& root) { return root->Expanded() && root->Children().size() > kLongList; }))
        FitWidth(*this);
}

void NewsTreeView::ExpandedChanged(const NewsNode& node)
{
    if (!showing_) {
        const Showing showing(showing_);
        if (node.Expanded())
            Expand(ItemOf(&node));
        else
            Collapse(ItemOf(&node));
    }
    if (!node.Expanded())
        FitWidth(*this);
}

void NewsTreeView::SelectionChanged()
{
    if (showing_)
        return;
    const Showing showing(showing_);
    ShowSelection();
    // A branch may just have been opened.
    CallWhenIdle([view = wxWeakRef<NewsTreeView>(this)] {
        if (view)
            view->MoveCursorToSelection();
    });
}

void NewsTreeView::MoveCursorToSelection()
{
    const NewsNode* node = tree_.SelectedItem();
    if (node == nullptr)
        return;
    const Showing showing(showing_);
    const NewsNode* root = node->Parent();
    if (root == nullptr)
        MoveCursor(*this, {IndexOf(tree_.Roots(), node)});
    else if (root->Expanded())
        MoveCursor(*this, {IndexOf(tree_.Roots(), root), IndexOf(root->Children(), node)});
}

void NewsTreeView::ShowSelection()
{
    if (tree_.SelectedItem() == nullptr) {
        UnselectAll();
        return;
    }
    Select(ItemOf(tree_.SelectedItem()));
    SetCurrentItem(ItemOf(tree_.SelectedItem()));
}

void NewsTreeView::BindEvents()
{
    Bind(wxEVT_DATAVIEW_SELECTION_CHANGED, [this](wxDataViewEvent&) {
        // In passing, a press with the right button reports that nothing is selected.
        if (const wxDataViewItem item = GetSelection(); item.IsOk() && !showing_) {
            const Showing showing(showing_);
            tree_.Select(NodeOf(item));
        }
    });
    const auto toggled = [this](wxDataViewEvent& event, bool expanded) {
        if (showing_)
            return;
        const Showing showing(showing_);
        tree_.SetExpanded(*NodeOf(event.GetItem()), expanded);
    };
    Bind(wxEVT_DATAVIEW_ITEM_EXPANDED, [toggled](wxDataViewEvent& event) { toggled(event, true); });
    Bind(wxEVT_DATAVIEW_ITEM_COLLAPSED, [toggled](wxDataViewEvent& event) { toggled(event, false); });
    Bind(wxEVT_LEFT_UP, &NewsTreeView::OnLeftUp, this);
    Bind(wxEVT_RIGHT_DOWN, &NewsTreeView::OnRightDown, this);
    Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, [this](wxDataViewEvent& event) {
        if (NewsNode* node = NodeOf(event.GetItem()); node != nullptr && node->Parent() == nullptr)
            tree_.SetExpanded(*node, !node->Expanded());
    });
    Bind(wxEVT_DATAVIEW_ITEM_CONTEXT_MENU, [this](wxDataViewEvent&) {
        {
            const Showing showing(showing_);
            ShowSelection(); // the press has selected the row, and the focus is to go with it
        }
        Click(TreeClicks::kRightButton);
    });
    Bind(wxEVT_TIMER, [this](wxTimerEvent&) { RestorePlaceWhenIdle(true); });
    // What the user does moves the list from where it was kept.
    const auto moves = [this](wxEvent& event) {
        event.Skip();
        place_.reset();
    };
    Bind(wxEVT_MOUSEWHEEL, moves);
    Bind(wxEVT_KEY_DOWN, moves);
}

void NewsTreeView::OnLeftUp(wxMouseEvent& event)
{
    event.Skip();
    // The selection is the view's own business and settled only afterwards.
    if (IsOnRow(event.GetPosition()))
        CallAfter([this] { Click(TreeClicks::kLeftButton); });
}

// On a row the toolkit selects it and asks for its menu; on the empty area it does nothing.
void NewsTreeView::OnRightDown(wxMouseEvent& event)
{
    wxDataViewItem item;
    wxDataViewColumn* column = nullptr;
    HitTest(event.GetPosition(), item, column);
    event.Skip(item.IsOk());
    if (!item.IsOk())
        Click(TreeClicks::kRightButton);
}

// The arrow of a branch, left of its caption, is no part of its row, and neither is the empty area.
bool NewsTreeView::IsOnRow(const wxPoint& position) const
{
    wxDataViewItem item;
    wxDataViewColumn* column = nullptr;
    HitTest(position, item, column);
    return item.IsOk() && (NodeOf(item)->Parent() != nullptr || position.x >= GetItemRect(item, column).x);
}

void NewsTreeView::ShowPopup(wxMenu& menu)
{
    if (byKey_)
        OpenPopupAt(menu, *this, GetItemRect(GetSelection(), GetColumn(0)));
    else
        OpenPopup(menu, *this);
}

void NewsTreeView::Click(std::int16_t button)
{
    clicks_.tv_MouseDown(button);
    clicks_.tv_Click();
}

} // namespace vantro
