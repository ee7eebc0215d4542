#include "windows/modFrmCtrl.h"

#include "settings/modRegistry.h"
#include "toolkit/Screen.h"

#include <algorithm>
#include <string>
#include <vector>
#include <wx/frame.h>
#include <wx/statusbr.h>

namespace vantro {

namespace {

// Larger windows cannot be drawn on X11 (32767 device pixels, two of them to a pixel on fine screens).
constexpr std::int32_t kLargestWindow = 16000;

bool IsNormal(const wxTopLevelWindow& window)
{
    return !window.IsIconized() && !window.IsMaximized() && !window.IsFullScreen();
}

void Write(const Form& form, std::string_view property, std::int32_t twips)
{
    form.registry.WriteRegValue(
        RegRoot, RegPath, std::string(form.name).append(property), twips, RegType::Dword);
}

std::int32_t Read(const Form& form, std::string_view property)
{
    return form.registry.ReadRegValue(RegRoot, RegPath, std::string(form.name).append(property)).ToNumber();
}

Rectangle InTwips(const wxRect& pixels, TwipsPerPixel scale)
{
    return {ToTwips(pixels.x, scale.horizontal), ToTwips(pixels.y, scale.vertical),
        ToTwips(pixels.width, scale.horizontal), ToTwips(pixels.height, scale.vertical)};
}

void MoveOntoScreen(wxTopLevelWindow& window, std::int32_t left, std::int32_t top)
{
    const TwipsPerPixel scale = ScreenTwipsPerPixel();
    std::vector<Rectangle> screens = Screens();
    for (Rectangle& screen : screens)
        screen = InTwips(wxRect(screen.left, screen.top, screen.width, screen.height), scale);
    Rectangle form = InTwips(wxRect(window.GetSize()), scale);
    form.left = left;
    form.top = top;
    const Rectangle placed = RestoredPosition(form, screens);
    window.Move(ToPixels(placed.left, scale.horizontal), ToPixels(placed.top, scale.vertical),
        wxSIZE_ALLOW_MINUS_ONE);
}

// The toolkit counts the decoration into a minimum size, and learns of the decoration only when the window is
// shown.
void KeepMinimumSize(wxSizeEvent& event)
{
    event.Skip();
    auto* window = dynamic_cast<wxTopLevelWindow*>(event.GetEventObject());
    if (!window)
        return;
    const wxSize minimum = wxSize(kDefaultWindowWidth, kDefaultWindowHeight) + DecorationSize(*window);
    if (window->GetMinSize() != minimum)
        window->SetMinSize(minimum);
}

MainWindowInside InsideOf(const wxFrame& form, TwipsPerPixel scale)
{
    const wxStatusBar* sBar = form.GetStatusBar();
    const std::int32_t statusBarHeight = sBar && sBar->IsShown() ? sBar->GetSize().y : 0;
    const wxSize inside = form.GetClientSize();
    return {ToTwips(inside.x, scale.horizontal), ToTwips(inside.y + statusBarHeight, scale.vertical),
        ToTwips(statusBarHeight, scale.vertical)};
}

void Place(wxWindow& window, const Rectangle& twips, TwipsPerPixel scale)
{
    const Rectangle pixels = ToPixels(twips, scale);
    window.SetSize(pixels.left, pixels.top, pixels.width, pixels.height, wxSIZE_ALLOW_MINUS_ONE);
}

} // namespace

void SaveWindowPosition(const Form& form)
{
    if (!IsNormal(form.window) || !WindowsKnowTheirPlace())
        return;
    const TwipsPerPixel scale = ScreenTwipsPerPixel();
    const wxPoint position = form.window.GetPosition();
    Write(form, "Top", ToTwips(position.y, scale.vertical));
    Write(form, "Left", ToTwips(position.x, scale.horizontal));
}

void SaveWindowSize(const Form& form)
{
    if (!IsNormal(form.window))
        return;
    const TwipsPerPixel scale = ScreenTwipsPerPixel();
    const wxSize size = form.window.GetSize() - DecorationSize(form.window);
    Write(form, "Width", ToTwips(size.x, scale.horizontal));
    Write(form, "Height", ToTwips(size.y, scale.vertical));
}

void RestoreWindowSize(const Form& form, std::int32_t minW, std::int32_t minH)
{
    const TwipsPerPixel scale = ScreenTwipsPerPixel();
    const std::int32_t width
        = RestoredLength(Read(form, "Width"), minW, kDefaultWindowWidth, scale.horizontal);
    const std::int32_t height
        = RestoredLength(Read(form, "Height"), minH, kDefaultWindowHeight, scale.vertical);
    if (!IsNormal(form.window))
        return;
    SetUndecoratedSize(form.window,
        wxSize(std::clamp(ToPixels(width, scale.horizontal), 1, kLargestWindow),
            std::clamp(ToPixels(height, scale.vertical), 1, kLargestWindow)));
}

void RestoreWindowPosition(const Form& form)
{
    const std::int32_t top = Read(form, "Top");
    const std::int32_t left = Read(form, "Left");
    if (!IsNormal(form.window))
        return;
    MoveOntoScreen(form.window, left, top);
    if (form.window.IsShown())
        return;
    // The decoration, which has to be on the screen as well, becomes known when the window is shown.
    wxTopLevelWindow& window = form.window;
    window.Bind(wxEVT_SIZE,
        [&window, left, top, known = DecorationSize(window), placed = window.GetPosition(), done = false](
            wxSizeEvent& event) mutable {
            event.Skip();
            if (done || DecorationSize(window) == known)
                return;
            done = true;
            if (window.GetPosition() == placed)
                MoveOntoScreen(window, left, top);
        });
}

void HookMainWindow(wxTopLevelWindow& window)
{
    window.SetMinSize(wxSize(kDefaultWindowWidth, kDefaultWindowHeight) + DecorationSize(window));
    window.Bind(wxEVT_SIZE, &KeepMinimumSize);
}

void UnhookMainWindow(wxTopLevelWindow& window)
{
    window.Unbind(wxEVT_SIZE, &KeepMinimumSize);
    window.SetMinSize(wxDefaultSize);
}

StartLayout LayOutMainWindowAtStart(const wxFrame& form, const MainWindowParts& parts)
{
    const TwipsPerPixel scale = ScreenTwipsPerPixel();
    const wxSize border = parts.picDownload.GetWindowBorderSize();
    const wxWindowList& strips = parts.picDownload.GetChildren();
    StartLayout layout = LayOutAtStart(InsideOf(form, scale), strips.size(),
        ToTwips(border.x, scale.horizontal), ToTwips(border.y, scale.vertical));
    Place(parts.picDownload, layout.picDownload, scale);
    for (auto place = layout.download.begin(); wxWindow * strip : strips)
        Place(*strip, *place++, scale);
    Place(parts.tv, layout.tv, scale);
    return layout;
}

void LayOutMainWindow(const wxFrame& form, const MainWindowParts& parts, const StartLayout& start)
{
    const TwipsPerPixel scale = ScreenTwipsPerPixel();
    const ResizeLayout layout = LayOutResized(InsideOf(form, scale), start);
    Place(parts.picDownload, layout.picDownload, scale);
    Place(parts.tv, layout.tv, scale);
    Place(parts.web, layout.web, scale);
}

} // namespace vantro
