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

// Whether the text of the row, which the column's renderers are set for, is partly out of sight.
bool IsCut(GtkTreeView* tree, GtkTreePath* path, GtkTreeViewColumn* column)
{
    GtkCellArea* cells = gtk_cell_layout_get_area(GTK_CELL_LAYOUT(column));
    // The column's own context knows the widest row only.
    const Owned<GtkCellAreaContext, g_object_unref> row(gtk_cell_area_create_context(cells));
    int width = 0;
    gtk_cell_area_get_preferred_width(cells, row.get(), GTK_WIDGET(tree), nullptr, &width);
    GdkRectangle area;
    gtk_tree_view_get_cell_area(tree, path, column, &area);
    gtk_tree_view_convert_bin_window_to_widget_coords(tree, area.x, 0, &area.x, nullptr);
    return area.x < 0 || area.x + width > gtk_widget_get_allocated_width(GTK_WIDGET(tree));
}

// The text that the column's renderers are set for.
Owned<char, g_free> TextOf(GtkTreeViewColumn* column)
{
    char* text = nullptr;
    const Owned<GList, g_list_free> renderers(gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(column)));
    for (const GList* each = renderers.get(); each != nullptr && text == nullptr; each = each->next) {
        if (GTK_IS_CELL_RENDERER_TEXT(each->data))
            g_object_get(each->data, "text", &text, nullptr);
    }
    return Owned<char, g_free>(text);
}

gboolean OnQueryTooltip(
    GtkTreeView* tree, int left, int top, gboolean byKey, GtkTooltip* tooltip, gpointer /*data*/)
{
    GtkTreeModel* model = nullptr;
    GtkTreePath* found = nullptr;
    GtkTreeIter place;
    if (gtk_grab_get_current() != nullptr // a menu, which it would lie over
        || gtk_tree_view_get_tooltip_context(tree, &left, &top, byKey, &model, &found, &place) == FALSE)
        return FALSE;
    const Path row(found);
    GtkTreeViewColumn* column = gtk_tree_view_get_column(tree, 0);
    gtk_tree_view_column_cell_set_cell_data(column, model, &place, TRUE, FALSE);
    if (!IsCut(tree, row.get(), column))
        return FALSE;
    gtk_tooltip_set_text(tooltip, TextOf(column).get());
    gtk_tree_view_set_tooltip_row(tree, tooltip, row.get());
    return TRUE;
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

void FitWidth(wxDataViewCtrl& list)
{
    gtk_tree_view_column_queue_resize(gtk_tree_view_get_column(TreeOf(list), 0));
}

void ShowCutTextsInTooltips(wxDataViewCtrl& list)
{
    GtkTreeView* tree = TreeOf(list);
    gtk_widget_set_has_tooltip(GTK_WIDGET(tree), TRUE);
    g_signal_connect(tree, "query-tooltip", G_CALLBACK(OnQueryTooltip), nullptr);
}

void MoveCursor(wxDataViewCtrl& list, const ListRow& row)
{
    gtk_tree_view_set_cursor(TreeOf(list), PathOf(row).get(), nullptr, FALSE);
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
