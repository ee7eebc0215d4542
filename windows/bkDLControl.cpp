#include "windows/bkDLControl.h"

#include "downloader/PropertyBag.h"
#include "toolkit/Accessibility.h"
#include "toolkit/MessageDialog.h"
#include "toolkit/Screen.h"

#include <algorithm>
#include <wx/dcbuffer.h>
#include <wx/font.h>
#include <wx/settings.h>
#include <wx/tokenzr.h>

namespace vantro {

namespace {

constexpr std::uint32_t kSystemColour = 0x80000000U;
constexpr std::uint32_t kButtonFace = kSystemColour | wxSYS_COLOUR_BTNFACE;
constexpr std::uint32_t kButtonText = kSystemColour | wxSYS_COLOUR_BTNTEXT;
constexpr std::int16_t kNoBorder = 0;
constexpr std::int16_t kSingleLine = 1;

// The toolkit numbers the system colours as the saved form does.
wxColour ToColour(std::uint32_t colour)
{
    if (!(colour & kSystemColour))
        return {static_cast<unsigned long>(colour & 0xFFFFFFU)};
    const std::uint32_t index = colour & ~kSystemColour;
    return wxSystemSettings::GetColour(
        index < wxSYS_COLOUR_MAX ? static_cast<wxSystemColour>(index) : wxSYS_COLOUR_BTNFACE);
}

std::string FontText(const wxFont& font)
{
    wxString text = font.GetFaceName() + "," + wxString::FromCDouble(font.GetFractionalPointSize());
    if (font.GetWeight() >= wxFONTWEIGHT_BOLD)
        text += ",bold";
    if (font.GetStyle() != wxFONTSTYLE_NORMAL)
        text += ",italic";
    return text.utf8_string();
}

wxFont FontFromText(const std::string& text, const wxFont& otherwise)
{
    const wxArrayString parts = wxStringTokenize(wxString::FromUTF8(text), ",", wxTOKEN_RET_EMPTY_ALL);
    double points = 0;
    if (parts.size() < 2 || parts[0].empty() || !parts[1].ToCDouble(&points)
        || !(points >= 1 && points <= 1000))
        return otherwise;
    return {wxFontInfo(points)
                .FaceName(parts[0])
                .Bold(parts.Index("bold") != wxNOT_FOUND)
                .Italic(parts.Index("italic") != wxNOT_FOUND)};
}

std::int16_t ButtonOf(const wxMouseEvent& event)
{
    switch (event.GetButton()) {
    case wxMOUSE_BTN_LEFT: return 1;
    case wxMOUSE_BTN_RIGHT: return 2;
    default: return 4;
    }
}

std::int16_t HeldButtons(const wxMouseEvent& event)
{
    return static_cast<std::int16_t>(
        (event.LeftIsDown() ? 1 : 0) + (event.RightIsDown() ? 2 : 0) + (event.MiddleIsDown() ? 4 : 0));
}

std::int16_t ShiftKeys(const wxMouseEvent& event)
{
    return static_cast<std::int16_t>(
        (event.ShiftDown() ? 1 : 0) + (event.ControlDown() ? 2 : 0) + (event.AltDown() ? 4 : 0));
}

} // namespace

bkDLControl::bkDLControl(wxWindow* parent, AsyncRead& reader, EventPump& pump)
    : backColor_(kButtonFace),
      foreColor_(kButtonText),
      borderStyle_(kSingleLine),
      engine_(reader, pump,
          {.Refresh = [this] { Refresh(); },
              .ShowStartFailure
              = [this](const std::string& title, const std::string& text) { ShowStartFailure(title, text); },
              .PropertyChanged = [this](std::string_view name) { MarkChanged(name); }})
{
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxFULL_REPAINT_ON_RESIZE);
    ShowStartFailure = [this](const std::string& title, const std::string& text) {
        (new MessageDialog(wxGetTopLevelParent(this), title, text, true, {}))->Show();
    };
    Bind(wxEVT_PAINT, &bkDLControl::OnPaint, this);
    for (const auto& pressed : {wxEVT_LEFT_DOWN, wxEVT_RIGHT_DOWN, wxEVT_MIDDLE_DOWN})
        Bind(pressed, &bkDLControl::OnButtonDown, this);
    for (const auto& released : {wxEVT_LEFT_UP, wxEVT_RIGHT_UP, wxEVT_MIDDLE_UP})
        Bind(released, &bkDLControl::OnButtonUp, this);
    for (const auto& doubled : {wxEVT_LEFT_DCLICK, wxEVT_RIGHT_DCLICK, wxEVT_MIDDLE_DCLICK})
        Bind(doubled, &bkDLControl::OnDoubleClick, this);
    Bind(wxEVT_MOTION, &bkDLControl::OnMove, this);
    Bind(wxEVT_MOUSE_CAPTURE_LOST, [this](wxMouseCaptureLostEvent&) { clickPending_ = false; });
    Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
        event.Skip();
        Refresh();
    });
    InitProperties();
}

bkDLControl::~bkDLControl()
{
    if (HasCapture())
        ReleaseMouse();
}

void bkDLControl::SetBackColor(std::uint32_t colour)
{
    backColor_ = colour;
    Refresh();
    MarkChanged("BackColor");
}

void bkDLControl::SetForeColor(std::uint32_t colour)
{
    foreColor_ = colour;
    Refresh();
    MarkChanged("ForeColor");
}

void bkDLControl::SetEnabled(bool enabled)
{
    Enable(enabled);
    MarkChanged("Enabled");
}

void bkDLControl::AssignFont(const wxFont& font)
{
    SetFont(font);
    MarkChanged("Font");
}

void bkDLControl::SetBorderStyle(std::int16_t style)
{
    borderStyle_ = style == kNoBorder ? kNoBorder : kSingleLine;
    Refresh();
    MarkChanged("BorderStyle");
}

void bkDLControl::InitProperties()
{
    SetFont(GetParent()->GetFont());
    engine_.ReadProperties(PropertyBag()); // every setting of the engine starts at its default
}

void bkDLControl::ReadProperties(const PropertyBag& bag)
{
    backColor_ = bag.ReadColour("BackColor", kButtonFace);
    foreColor_ = bag.ReadColour("ForeColor", kButtonText);
    Enable(bag.ReadBool("Enabled", true));
    SetFont(FontFromText(bag.ReadString("Font", ""), GetParent()->GetFont()));
    borderStyle_ = bag.ReadInt32("BorderStyle", kSingleLine) == kNoBorder ? kNoBorder : kSingleLine;
    engine_.ReadProperties(bag);
    Refresh();
}

void bkDLControl::WriteProperties(PropertyBag& bag) const
{
    bag.WriteColour("BackColor", backColor_, kButtonFace);
    bag.WriteColour("ForeColor", foreColor_, kButtonText);
    bag.WriteBool("Enabled", Enabled(), true);
    bag.WriteString("Font", FontText(GetFont()), FontText(GetParent()->GetFont()));
    bag.WriteInt32("BorderStyle", borderStyle_, kSingleLine);
    engine_.WriteProperties(bag);
}

void bkDLControl::OnPaint(wxPaintEvent&)
{
    wxAutoBufferedPaintDC dc(this);
    Draw(dc);
}

void bkDLControl::Draw(wxDC& dc) const
{
    wxRect area(GetClientSize());
    dc.SetPen(*wxTRANSPARENT_PEN);
    if (borderStyle_ == kSingleLine) {
        dc.SetBrush(wxBrush(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWFRAME)));
        dc.DrawRectangle(area);
        area.Deflate(1);
    }
    dc.SetBrush(wxBrush(ToColour(backColor_)));
    dc.DrawRectangle(area);
    wxRect bar = area;
    bar.width = RoundToInt32(ShownPart() * area.width);
    if (bar.width == 0)
        return;
    dc.SetBrush(wxBrush(ToColour(foreColor_)));
    dc.DrawRectangle(bar);
}

double bkDLControl::ShownPart() const
{
    return engine_.ShowProgress() && engine_.Percent() > 0 ? std::min(engine_.Percent(), 1.0F) : 0.0;
}

void bkDLControl::OnButtonDown(wxMouseEvent& event)
{
    if (!HasCapture())
        CaptureMouse();
    clickPending_ = true;
    RaiseMouse(Mouse.MouseDown, ButtonOf(event), event);
}

void bkDLControl::OnButtonUp(wxMouseEvent& event)
{
    if (HasCapture() && HeldButtons(event) == 0)
        ReleaseMouse();
    const bool clicked = clickPending_ && wxRect(GetClientSize()).Contains(event.GetPosition());
    clickPending_ = false;
    RaiseMouse(Mouse.MouseUp, ButtonOf(event), event);
    if (clicked && Mouse.Click)
        Mouse.Click();
}

void bkDLControl::OnDoubleClick(wxMouseEvent&)
{
    if (!HasCapture())
        CaptureMouse();
    clickPending_ = false;
    if (Mouse.DblClick)
        Mouse.DblClick();
}

void bkDLControl::OnMove(wxMouseEvent& event)
{
    RaiseMouse(Mouse.MouseMove, HeldButtons(event), event);
}

void bkDLControl::RaiseMouse(
    const MouseEvents::Handler& handler, std::int16_t button, const wxMouseEvent& event) const
{
    if (!handler)
        return;
    const TwipsPerPixel scale = ScreenTwipsPerPixel();
    const int border = borderStyle_ == kSingleLine ? 1 : 0;
    handler(button, ShiftKeys(event), static_cast<float>((event.GetX() - border) * scale.horizontal),
        static_cast<float>((event.GetY() - border) * scale.vertical));
}

void bkDLControl::MarkChanged(std::string_view name)
{
    if (PropertyChanged)
        PropertyChanged(name);
}

void bkDLControl::Refresh(bool eraseBackground, const wxRect* area)
{
    TellAsProgressBar(*this, ShownPart());
    wxWindow::Refresh(eraseBackground, area);
    Update();
}

} // namespace vantro
