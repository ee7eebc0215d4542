#include "toolkit/Screen.h"

#include <gtk/gtk.h>
#include <string_view>
#include <utility>
#include <wx/display.h>
#include <wx/toplevel.h>

namespace vantro {

namespace {

constexpr double kTwipsPerInch = 1440;
constexpr double kUsualResolution = 96; // dots per inch

} // namespace

double TextScale()
{
    // wxWindow::GetDPI() and wxDisplay::GetPPI() (wxWidgets 3.2) leave out the font resolution of the desktop
    // (Xft.dpi, GDK_DPI_SCALE, "large text"): they say 96 while every text is twice as large. And they count
    // the doubling of GDK_SCALE, which the toolkit's pixels have behind them already.
    GdkScreen* screen = gdk_screen_get_default();
    const double resolution = screen ? gdk_screen_get_resolution(screen) : -1.0;
    return resolution > 0 ? resolution / kUsualResolution : 1;
}

TwipsPerPixel ScreenTwipsPerPixel()
{
    const double twips = kTwipsPerInch / kUsualResolution / TextScale();
    return {twips, twips};
}

void WatchTextScale(wxTopLevelWindow& window, std::function<void()> changed)
{
    using Changed = std::function<void()>;
    constexpr const char* kKey = "vantro-text-scale";
    const auto call = [](GObject*, GParamSpec*, GObject* widget) {
        (*static_cast<Changed*>(g_object_get_data(widget, kKey)))();
    };
    GtkWidget* widget = window.GetHandle();
    g_object_set_data_full(G_OBJECT(widget), kKey, new Changed(std::move(changed)),
        [](gpointer data) { delete static_cast<Changed*>(data); });
    g_signal_connect_object(gtk_settings_get_default(), "notify::gtk-xft-dpi",
        G_CALLBACK(static_cast<void (*)(GObject*, GParamSpec*, GObject*)>(call)), widget, GConnectFlags{});
}

std::vector<Rectangle> Screens()
{
    std::vector<Rectangle> screens;
    for (unsigned int index = 0; index < wxDisplay::GetCount(); ++index) {
        const wxDisplay display(index);
        const wxRect area = display.GetGeometry();
        screens.insert(
            display.IsPrimary() ? screens.begin() : screens.end(), {area.x, area.y, area.width, area.height});
    }
    if (screens.empty()) {
        const wxSize size = wxGetDisplaySize();
        screens.push_back({0, 0, size.x, size.y});
    }
    return screens;
}

bool WindowsKnowTheirPlace()
{
    return std::string_view(G_OBJECT_TYPE_NAME(gdk_display_get_default())) != "GdkWaylandDisplay";
}

wxSize DecorationSize(const wxTopLevelWindow& window)
{
    wxSize undecorated;
    window.GTKDoGetSize(&undecorated.x, &undecorated.y);
    return window.GetSize() - undecorated;
}

void SetUndecoratedSize(wxTopLevelWindow& window, const wxSize& size)
{
    window.SetSize(size + DecorationSize(window));
    // A window whose whole size was set last is put off by wxWidgets 3.2 on X11 until the size of the
    // decoration is known, and then loses its position and is shrunk by the decoration: at every start a bit
    // smaller. One whose client size was set last appears at once and keeps it.
    if (!window.IsShown())
        window.SetClientSize(window.GetClientSize());
}

} // namespace vantro
