#include "toolkit/NativeList.h"

#include "base/Owned.h"

#include <gtk/gtk.h>
#include <wx/dataview.h>

namespace vantro {

namespace {

GtkTreeView* TreeOf(wxDataViewCtrl& list)
{
    return GTK_TREE_VIEW(list.GtkGetTreeView());
}

using Path = Owned<GtkTreePath, gtk_tree_path_free>;

Path PathOf(const ListRow& row)
{
    return Path(row.child ? gtk_tree_path_new_from_indices(row.root, *row.child, -1)
                          : gtk_tree_path_new_from_indices(row.root, -1));
}

using Provider = Owned<GtkCssProvider, g_object_unref>;

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

void SwitchOffSearch(wxDataViewCtrl& list)
{
    gtk_tree_view_set_enable_search(TreeOf(list), FALSE);
}

void DrawArrowsBlack(wxDataViewCtrl& list)
{
    const Provider style(gtk_css_provider_new());
    gtk_css_provider_load_from_data(style.get(), ".expander:not(:selected) { color: black; }", -1, nullptr);
    gtk_style_context_add_provider(gtk_widget_get_style_context(GTK_WIDGET(TreeOf(list))),
        GTK_STYLE_PROVIDER(style.get()), GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

int HiddenPartOfTopRow(wxDataViewCtrl& list)
{
    GtkTreeView* tree = TreeOf(list);
    GtkTreePath* first = nullptr;
    if (gtk_tree_view_get_visible_range(tree, &first, nullptr) == FALSE)
        return 0;
    const Path top(first);
    GdkRectangle visible;
    gtk_tree_view_get_visible_rect(tree, &visible);
    return visible.y - TopOf(tree, top.get());
}

void ScrollTo(wxDataViewCtrl& list, const ListRow& row)
{
    gtk_tree_view_scroll_to_cell(TreeOf(list), PathOf(row).get(), nullptr, TRUE, 0, 0);
}

void ScrollTo(wxDataViewCtrl& list, const ListRow& row, int hidden)
{
    GtkTreeView* tree = TreeOf(list);
    gtk_adjustment_set_value(
        gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(tree)), TopOf(tree, PathOf(row).get()) + hidden);
}

} // namespace vantro
