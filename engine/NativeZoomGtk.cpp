#include "engine/NativeZoomGtk.h"

#include <algorithm>
#include <cmath>
#include <gtk/gtk.h>

namespace vantro {

namespace {

constexpr double kStep = 1.1;
constexpr double kSmallest = 0.5;
constexpr double kLargest = 3;

void Zoom(WebKitWebView* view, double steps)
{
    const double level = webkit_web_view_get_zoom_level(view) * std::pow(kStep, steps);
    webkit_web_view_set_zoom_level(view, std::clamp(level, kSmallest, kLargest));
}

// Plus is typed with Shift on many keyboards.
bool HasControl(guint state)
{
    return (state & gtk_accelerator_get_default_mod_mask() & ~static_cast<guint>(GDK_SHIFT_MASK))
        == GDK_CONTROL_MASK;
}

gboolean OnWindowEvent(GtkWidget* /*window*/, const GdkEvent* event, WebKitWebView* view)
{
    if (event->type != GDK_KEY_PRESS || !HasControl(event->key.state))
        return FALSE;
    switch (event->key.keyval) {
    case GDK_KEY_plus:
    case GDK_KEY_equal:
    case GDK_KEY_KP_Add: Zoom(view, 1); return TRUE;
    case GDK_KEY_minus:
    case GDK_KEY_KP_Subtract: Zoom(view, -1); return TRUE;
    case GDK_KEY_0:
    case GDK_KEY_KP_0: webkit_web_view_set_zoom_level(view, 1); return TRUE;
    default: return FALSE;
    }
}

gboolean OnWheel(WebKitWebView* view, const GdkEventScroll* event, gpointer /*data*/)
{
    if (!HasControl(event->state))
        return FALSE;
    if (event->direction == GDK_SCROLL_SMOOTH)
        Zoom(view, -event->delta_y);
    else if (event->direction == GDK_SCROLL_UP || event->direction == GDK_SCROLL_DOWN)
        Zoom(view, event->direction == GDK_SCROLL_UP ? 1 : -1);
    return TRUE;
}

} // namespace

void ConnectZoom(WebKitWebView* view)
{
    // The keys count wherever in the window the focus is; the window library ends "key-press-event" there.
    g_signal_connect_object(
        gtk_widget_get_toplevel(GTK_WIDGET(view)), "event", G_CALLBACK(OnWindowEvent), view, GConnectFlags{});
    g_signal_connect(view, "scroll-event", G_CALLBACK(OnWheel), nullptr);
}

} // namespace vantro
