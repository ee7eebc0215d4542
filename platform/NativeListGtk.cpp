#include "platform/NativeList.h"

#include <gtk/gtk.h>
#include <wx/dataview.h>

namespace vantro {

namespace {

GtkTreeView* TreeOf(wxDataViewCtrl& list)
{
    return GTK_TREE_VIEW(list.GtkGetTreeView());
}

// Where the row begins in the whole list, scrolled out or not.
int TopOf(GtkTreeView* tree, GtkTreePath* path)
{
    GdkRectangle area;
    gtk_tree_view_get_background_area(tree, path, nullptr, &area);
    int top = 0;
    gtk_tree_view_convert_bin_window_to_tree_coords(tree, 0, area.y, nullptr, &top);
    return top;
}

} // namespace

void ShowScrollBars(wxDataViewCtrl& list)
{
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(list.GetHandle()), FALSE);
}

void IgnoreLetters(wxDataViewCtrl& list)
{
    gtk_tree_view_set_enable_search(TreeOf(list), FALSE);
}

int HiddenPartOfTopRow(wxDataViewCtrl& list)
{
    GtkTreeView* tree = TreeOf(list);
    GtkTreePath* top = nullptr;
    if (gtk_tree_view_get_visible_range(tree, &top, nullptr) == FALSE)
        return 0;
    GdkRectangle visible;
    gtk_tree_view_get_visible_rect(tree, &visible);
    const int hidden = visible.y - TopOf(tree, top);
    gtk_tree_path_free(top);
    return hidden;
}

void ScrollTo(wxDataViewCtrl& list, const ListRow& row, int hidden)
{
    GtkTreeView* tree = TreeOf(list);
    GtkTreePath* path = row.child ? gtk_tree_path_new_from_indices(row.root, *row.child, -1)
                                  : gtk_tree_path_new_from_indices(row.root, -1);
    gtk_tree_view_scroll_to_cell(tree, path, nullptr, TRUE, 0, 0);
    GtkAdjustment* vertical = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(tree));
    gtk_adjustment_set_value(vertical, TopOf(tree, path) + hidden);
    gtk_tree_path_free(path);
}

} // namespace vantro
