#include "toolkit/Keys.h"

#include <gtk/gtk.h>
#include <utility>
#include <wx/toplevel.h>

namespace vantro {

namespace {

struct Heard {
    guint key = 0;
    GdkModifierType modifiers{};
    std::function<void()> action;
};
using AllHeard = std::vector<Heard>;

gboolean OnWindowEvent(GtkWidget* /*window*/, const GdkEvent* event, const AllHeard* all)
{
    if (event->type != GDK_KEY_PRESS)
        return FALSE;
    const guint modifiers = event->key.state & gtk_accelerator_get_default_mod_mask();
    for (const Heard& heard : *all) {
        if (gdk_keyval_to_lower(event->key.keyval) == heard.key && modifiers == heard.modifiers) {
            heard.action();
            return TRUE;
        }
    }
    return FALSE;
}

} // namespace

void HearKeys(wxTopLevelWindow& window, std::vector<Shortcut> shortcuts)
{
    auto* all = new AllHeard;
    for (Shortcut& shortcut : shortcuts) {
        Heard heard{.action = std::move(shortcut.action)};
        gtk_accelerator_parse(shortcut.keys, &heard.key, &heard.modifiers);
        all->push_back(std::move(heard));
    }
    // The window library ends "key-press-event" at the control that has the focus.
    g_signal_connect_data(
        window.GetHandle(), "event", G_CALLBACK(OnWindowEvent), all,
        [](gpointer data, GClosure*) { delete static_cast<AllHeard*>(data); }, GConnectFlags{});
}

} // namespace vantro
