#include "platform/ScrollBars.h"

#include <gtk/gtk.h>
#include <wx/window.h>

namespace vantro {

void ShowScrollBars(wxWindow& list)
{
    if (GtkWidget* widget = list.GetHandle(); GTK_IS_SCROLLED_WINDOW(widget))
        gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(widget), FALSE);
}

} // namespace vantro
