#include "base/Owned.h"
#include "tests/window/WindowTest.h"
#include "windows/NewsTreeView.h"

#include <gtk/gtk.h>
#include <string>
#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/sizer.h>

namespace vantro::test {

// The list on the screen over a tree of two sites.
struct NewsTreeViewTest : testing::Test {
    NewsTreeViewTest()
    {
        for (const char* site : {"XBINS", "XBOXSCENE"})
            tree.AddRoot({site, site, {TreeImage::Site, false, site}}, Colour{255, 255, 192});
        Merge("XBINS", 1, 40);
        Merge("XBOXSCENE", 1, 40);
        frame->SetSizer(new wxBoxSizer(wxVERTICAL));
        frame->GetSizer()->Add(view, 1, wxEXPAND);
        menu.Append(wxID_ANY, "Entry");
        EXPECT_TRUE(ShowAndSettle(*frame));
        view->SetFocus();
    }
    ~NewsTreeViewTest() override { DestroyAndWait(*frame); }

    // A feed whose titles are the numbers from `first` on.
    void Merge(const std::string& site, int first, int count)
    {
        std::vector<NodeData> items;
        for (int i = 1; i <= count; ++i)
            items.push_back(
                {(site == "XBINS" ? "xbin" : "xbsc") + std::to_string(i), std::to_string(first++), {}});
        tree.ReplaceBranch(*tree.Find(site), std::move(items));
    }
    NewsNode& Root(const char* key) { return *tree.Find(key); }
    [[nodiscard]] wxRect Row(const char* key) const
    {
        return view->GetItemRect(wxDataViewItem(tree.Find(key)), view->GetColumn(0));
    }
    static void Rest() { test::Rest(std::chrono::milliseconds(150)); }
    [[nodiscard]] std::string TopRow() const
    {
        const auto* node = static_cast<const NewsNode*>(view->GetTopItem().GetID());
        return node != nullptr ? node->Text() : "none";
    }
    [[nodiscard]] bool MenuIsOpen() const { return gtk_widget_get_visible(menu.m_menu) != FALSE; }

    NewsTree tree;
    std::string clicks;
    std::string said;
    wxMenu menu;
    NewsTreeView* view = nullptr;
    TreeClicks handler{tree,
        {[this](const Site&, const std::string& key) { clicks += key + " "; },
            [this](bool, bool) {
                clicks += "popup ";
                view->ShowPopup(menu);
            },
            [this](const std::string&) { clicks += "message "; }}};
    wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "List", wxPoint(100, 100), wxSize(300, 300));
    int made
        = (view = new NewsTreeView(frame, tree, handler, [this](const std::string& text) { said = text; }),
            0);
};

TEST_F(NewsTreeViewTest, ArrowAndDoubleClickOpenABranchWithoutAClickOnItsItems)
{
    tree.SetExpanded(Root("XBINS"), true);
    tree.Select(tree.Find("xbin2"));
    Rest();
    const wxRect row = Row("XBINS");
    EXPECT_EQ(ColourAt(*view, {row.x - 8, row.y + row.height / 2}), std::string(3, 0)) << "not the theme's";
    for (const bool expanded : {false, true}) {
        Click(*view, {row.x - 8, row.y + row.height / 2});
        EXPECT_EQ(Root("XBINS").Expanded(), expanded);
    }
    Rest(); // or these clicks and the next are one series
    Click(*view, row.GetPosition() + wxPoint(30, 5));
    wxUIActionSimulator().MouseClick();
    Rest();
    EXPECT_FALSE(Root("XBINS").Expanded());
    Click(*view, {150, 200}); // below the rows
    EXPECT_EQ(clicks, "");
}

TEST_F(NewsTreeViewTest, KeepsItsPlaceThroughMerges)
{
    for (const char* site : {"XBINS", "XBOXSCENE"})
        tree.SetExpanded(Root(site), true);
    tree.Select(tree.Find("XBINS"));
    Rest();
    GtkAdjustment* scroll = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(view->GtkGetTreeView()));
    for (const double place : {300.0, 1207.0}) { // in the first branch and in the second
        ASSERT_TRUE(PumpUntil([this] { return !view->IsMoving(); }));
        gtk_adjustment_set_value(scroll, place);
        Rest();
        const std::string top = TopRow();
        ASSERT_EQ(gtk_adjustment_get_value(scroll), place);
        Merge("XBOXSCENE", 1, 42); // the branch below, or the one in sight with two more at its end
        Rest();
        EXPECT_EQ(gtk_adjustment_get_value(scroll), place);
        Merge("XBINS", -1, 42); // two more items above the rows in sight
        Rest();
        EXPECT_EQ(TopRow(), top);
        EXPECT_GT(gtk_adjustment_get_value(scroll), place);
        Merge("XBINS", 1, 40);
        Rest();
        EXPECT_EQ(gtk_adjustment_get_value(scroll), place);
    }
}

TEST_F(NewsTreeViewTest, ScrollsSidewaysAndTellsACaptionWholeOnlyWhileItIsTooLong)
{
    GtkWidget* bar = gtk_scrolled_window_get_hscrollbar(GTK_SCROLLED_WINDOW(view->GetHandle()));
    const Owned<GtkTooltip, g_object_unref> tip(GTK_TOOLTIP(g_object_new(GTK_TYPE_TOOLTIP, nullptr)));
    const auto seen = [&](const char* key) {
        Rest();
        gboolean told = FALSE;
        g_signal_emit_by_name(
            view->GtkGetTreeView(), "query-tooltip", Row(key).x, Row(key).y + 5, FALSE, tip.get(), &told);
        return std::string(gtk_widget_get_mapped(bar) != FALSE ? "bar " : "") + (told != FALSE ? "told" : "");
    };
    tree.SetExpanded(Root("XBINS"), true);
    tree.SetCaption(*tree.Find("xbin2"), std::string(40, 'w'), true);
    EXPECT_EQ(seen("xbin2"), "bar told");
    EXPECT_EQ(seen("xbin1"), "bar ");
    tree.SetExpanded(Root("XBINS"), false);
    EXPECT_EQ(seen("XBINS"), "");
    tree.SetExpanded(Root("XBINS"), true);
    EXPECT_EQ(seen("xbin2"), "bar told");
    Merge("XBINS", 1, 40);
    EXPECT_EQ(seen("xbin2"), "");
}

TEST_F(NewsTreeViewTest, KeysAndRightClicksKeepFocusAndSelectionTogether)
{
    tree.Select(tree.Find("XBINS"));
    wxUIActionSimulator().Char('3');
    Rest();
    EXPECT_TRUE(view->HasFocus());
    EXPECT_EQ(view->GetSelection().GetID(), tree.Find("XBINS"));
    for (const wxPoint place : {Row("XBOXSCENE").GetPosition() + wxPoint(20, 5), {150, 200}}) {
        Click(*view, place, wxMOUSE_BTN_RIGHT); // on a row, and below the rows
        EXPECT_EQ(std::exchange(clicks, ""), "popup ");
        EXPECT_TRUE(MenuIsOpen());
        EXPECT_EQ(tree.SelectedItem(), tree.Find("XBOXSCENE"));
        EXPECT_EQ(view->GetSelection().GetID(), tree.Find("XBOXSCENE"));
        EXPECT_EQ(view->GetCurrentItem().GetID(), tree.Find("XBOXSCENE"));
        Merge("XBINS", 5, 3);
        EXPECT_TRUE(MenuIsOpen()) << "a merge does not close it";
        wxUIActionSimulator().Char(WXK_ESCAPE);
        ASSERT_TRUE(PumpUntil([this] { return !MenuIsOpen(); }));
    }
}

TEST_F(NewsTreeViewTest, LettersFindTitlesInSightAndNTheNextUnreadItem)
{
    const auto type = [](const char* keys) {
        for (; *keys != 0; ++keys)
            wxUIActionSimulator().Char(*keys);
        Rest();
    };
    tree.SetExpanded(Root("XBOXSCENE"), true);
    tree.Select(tree.Find("XBINS"));
    type("39");
    EXPECT_EQ(tree.SelectedItem(), tree.Find("xbsc39")) << "xbin39 is out of sight";
    EXPECT_EQ(view->GetSelection().GetID(), tree.Find("xbsc39"));
    type("n");
    EXPECT_EQ(said, "No title in sight holds: 39n");
    EXPECT_EQ(tree.SelectedItem(), tree.Find("xbsc39"));
    wxUIActionSimulator().Char(WXK_BACK);
    wxUIActionSimulator().Char(WXK_BACK);
    type("8");
    EXPECT_EQ(tree.SelectedItem(), tree.Find("xbsc38"));
    wxUIActionSimulator().Char(WXK_ESCAPE);
    type("n");
    EXPECT_EQ(said, "There is no unread item.");
    tree.SetState(*tree.Find("xbin7"), {TreeImage::ItemUnread, true, "<UNREAD>"});
    type("n");
    EXPECT_EQ(clicks, "xbin7 ") << "round the end, into a closed branch";
    EXPECT_TRUE(Root("XBINS").Expanded());
    EXPECT_TRUE(view->HasFocus());
    tree.SetState(*tree.Find("xbin30"), {TreeImage::ItemUnread, true, "<UNREAD>"});
    tree.SetState(*tree.Find("xbin7"), {});
    type("n");
    EXPECT_LT(Row("xbin30").y, view->GetClientSize().y) << "in sight";
    wxUIActionSimulator().Char(WXK_DOWN);
    Rest();
    EXPECT_EQ(tree.SelectedItem(), tree.Find("xbin31"));
}

} // namespace vantro::test
