#include "toolkit/Screen.h"

#include <gtk/gtk.h>
#include <string_view>
#include <wx/display.h>
#include <wx/toplevel.h>

namespace vantro {

TwipsPerPixel ScreenTwipsPerPixel()
{
    // wxWindow::GetDPI() and wxDisplay::GetPPI() (wxWidgets 3.2) leave out the font resolution of the desktop
    // (Xft.dpi, GDK_DPI_SCALE, "large text"): they say 96 while every text is twice as large. And they count
    // the doubling of GDK_SCALE, which the toolkit's pixels have behind them already.
    GdkScreen* screen = gdk_screen_get_default();
    const double resolution = screen ? gdk_screen_get_resolution(screen) : -1.0;
    const double twips = 1440.0 / (resolution > 0 ? resolution : 96.0);
    return {twips, twips};
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
