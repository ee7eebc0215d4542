#pragma once

#include "base/EventPump.h"
#include "downloader/DownloadEngine.h"
#include "platform/AsyncRead.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <wx/window.h>

class wxDC;

namespace vantro {

class PropertyBag;

// What the mouse does on a download control. A handler left empty is skipped; none may destroy the control.
// `Button` is 1 left, 2 right, 4 middle: the one pressed or released, for MouseMove all that are held.
// `Shift` adds up 1 shift, 2 control, 4 alt. `X` and `Y` are twips from the drawing area's top left corner.
struct MouseEvents {
    using Handler = std::function<void(std::int16_t Button, std::int16_t Shift, float X, float Y)>;
    std::function<void()> Click; // after the MouseUp of a press that ends over the control
    std::function<void()> DblClick; // takes the place of the second MouseDown; no second Click follows
    Handler MouseDown;
    Handler MouseMove; // also outside of the control while a button is held
    Handler MouseUp;
};

// The visible side of a download: a bar that grows from the left with the part of the file received, and else
// a plain area. It has no text and takes no keyboard focus. Interface thread only.
//
// A colour is 0x00BBGGRR, or with the top bit set the number of a system colour, which follows the user's
// theme. Writing a property calls PropertyChanged with its name; nothing of the engine's is changed by the
// appearance.
class bkDLControl final : public wxWindow {
public:
    // A new instance, as InitProperties() leaves it; `reader` and `pump` must outlive it. Destroying it
    // abandons a transfer without any event.
    bkDLControl(wxWindow* parent, AsyncRead& reader, EventPump& pump);
    ~bkDLControl() override;

    [[nodiscard]] DownloadEngine& Engine() { return engine_; }
    MouseEvents Mouse;
    std::function<void(std::string_view name)> PropertyChanged; // the saved form is out of date
    // Shows the box of a refused start; an error box with one button unless replaced.
    std::function<void(const std::string& title, const std::string& text)> ShowStartFailure;

    [[nodiscard]] std::uint32_t BackColor() const { return backColor_; }
    void SetBackColor(std::uint32_t colour);
    [[nodiscard]] std::uint32_t ForeColor() const { return foreColor_; }
    void SetForeColor(std::uint32_t colour);
    [[nodiscard]] bool Enabled() const { return IsThisEnabled(); }
    // A disabled control takes no mouse input; its transfer goes on.
    void SetEnabled(bool enabled);
    [[nodiscard]] wxFont Font() const { return GetFont(); }
    void AssignFont(const wxFont& font);
    // 0 none, 1 a single line of one pixel inside the control's edge; any other counts as 1.
    [[nodiscard]] std::int16_t BorderStyle() const { return borderStyle_; }
    void SetBorderStyle(std::int16_t style);

    // The settings of an instance that is new on its form: the parent's font, no address, no folder, both
    // redirect flags and ShowProgress set.
    void InitProperties();
    // The ten persisted properties, "BackColor" to "ShowProgress"; neither calls PropertyChanged. The font
    // stands in the bag as a text: face name, size in points, then "bold" and "italic" where they apply:
    // "Sans,9,bold". A font text that is none gives the parent's font.
    void ReadProperties(const PropertyBag& bag);
    void WriteProperties(PropertyBag& bag) const;

    // Repaints at once: it has been painted when this returns, unless it is not on the screen.
    void Refresh(bool eraseBackground = true, const wxRect* area = nullptr) override;

    [[nodiscard]] bool AcceptsFocus() const override { return false; }
    [[nodiscard]] bool AcceptsFocusFromKeyboard() const override { return false; }

private:
    void OnPaint(wxPaintEvent& event);
    void OnButtonDown(wxMouseEvent& event);
    void OnButtonUp(wxMouseEvent& event);
    void OnDoubleClick(wxMouseEvent& event);
    void OnMove(wxMouseEvent& event);
    void Draw(wxDC& dc) const;
    [[nodiscard]] double ShownPart() const; // of the file, 0 to 1
    void RaiseMouse(
        const MouseEvents::Handler& handler, std::int16_t button, const wxMouseEvent& event) const;
    void MarkChanged(std::string_view name);

    std::uint32_t backColor_;
    std::uint32_t foreColor_;
    std::int16_t borderStyle_;
    bool clickPending_ = false; // a press whose release raises Click
    DownloadEngine engine_; // its hooks use what stands above
};

} // namespace vantro
