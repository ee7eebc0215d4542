#include "toolkit/ModalInput.h"

#include <functional>
#include <gtk/gtk.h>
#include <memory>
#include <utility>
#include <wx/dialog.h>
#include <wx/menu.h>
#include <wx/weakref.h>

namespace vantro {

namespace {

// The window whose close requests are always heard.
wxWeakRef<wxTopLevelWindow>& Heard()
{
    static wxWeakRef<wxTopLevelWindow> window;
    return window;
}

void OnEvent(GdkEvent* event, gpointer /*data*/)
{
    wxTopLevelWindow* window = Heard();
    const bool asked = event->type == GDK_DELETE && window != nullptr
        && event->any.window == gtk_widget_get_window(window->GetHandle());
    if (asked && gtk_grab_get_current() != nullptr)
        window->Close();
    else
        gtk_main_do_event(event);
}

// The event under way, which the desktop wants to see before it opens a menu.
struct Trigger {
    Trigger() : event(gtk_get_current_event()) { }
    ~Trigger()
    {
        if (event != nullptr)
            gdk_event_free(event);
    }
    Trigger(const Trigger&) = delete;
    Trigger& operator=(const Trigger&) = delete;

    GdkEvent* event;
};

GtkMenu* Prepare(wxMenu& menu, wxWindow& window)
{
    if (menu.GetInvokingWindow() == nullptr)
        menu.SetInvokingWindow(&window);
    return GTK_MENU(menu.m_menu);
}

} // namespace

void TakeAllInput(wxDialog& dialog)
{
    gtk_window_set_modal(GTK_WINDOW(dialog.GetHandle()), TRUE);
}

void OpenPopup(wxMenu& menu, wxWindow& window)
{
    const Trigger trigger;
    gtk_menu_popup_at_pointer(Prepare(menu, window), trigger.event);
}

void OpenPopupAt(wxMenu& menu, wxWindow& window, const wxRect& row)
{
    const Trigger trigger;
    GtkWidget* widget = window.GetHandle();
    int x = row.x;
    int y = row.y;
    gtk_widget_translate_coordinates(widget, gtk_widget_get_toplevel(widget), x, y, &x, &y);
    const GdkRectangle place{x, y, row.width, row.height};
    gtk_menu_popup_at_rect(Prepare(menu, window), gtk_widget_get_window(gtk_widget_get_toplevel(widget)),
        &place, GDK_GRAVITY_SOUTH_WEST, GDK_GRAVITY_NORTH_WEST, trigger.event);
}

void CallWhenInputIsFree(std::function<void()> action)
{
    constexpr guint kPause = 20; // milliseconds between two looks
    if (gtk_grab_get_current() == nullptr) {
        action();
        return;
    }
    g_timeout_add_once(
        kPause,
        [](gpointer data) {
            const std::unique_ptr<std::function<void()>> waiting(static_cast<std::function<void()>*>(data));
            CallWhenInputIsFree(std::move(*waiting));
        },
        new std::function<void()>(std::move(action)));
}

void HearCloseRequests(wxTopLevelWindow& window)
{
    Heard() = &window;
    gdk_event_handler_set(OnEvent, nullptr, nullptr);
}

} // namespace vantro
