#include "windows/frmOptions.h"

#include "base/Words.h"
#include "feeds/Sites.h"
#include "settings/MinutesText.h"
#include "settings/Options.h"
#include "settings/modRegistry.h"
#include "toolkit/Accessibility.h"
#include "toolkit/Screen.h"
#include "windows/modFrmCtrl.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <wx/checkbox.h>
#include <wx/statbox.h>
#include <wx/textctrl.h>

namespace vantro {

namespace {

constexpr std::string_view kFormName = "frmOptions";
constexpr const char* kSettings = Marked("The settings could not be stored: %1");

// Twips.
constexpr std::int32_t kWidth = 4590;
constexpr std::int32_t kMargin = 120; // above the frames, to their left and below them
constexpr std::int32_t kFrameWidth = 4335;
constexpr std::int32_t kBetweenFrames = 105;
constexpr std::int32_t kBelowBoxes = 120; // at least, inside a frame
constexpr std::int32_t kRowPitch = 240; // from one check box to the next

constexpr int kAroundMinutes = 5; // pixels above and below the digits in their box
constexpr int kAfterCaption = 4; // pixels that GTK's check box leaves to the right of its caption

void MakeRoom(double& twipsPerPixel, std::int32_t place, int pixels)
{
    twipsPerPixel = std::min(twipsPerPixel, 1.0 * place / pixels);
}

std::int32_t HeightOf(const OptionFrame& frame)
{
    std::int32_t height = frame.height;
    for (const Option& option : frame.options)
        height = std::max(height, option.place.top + option.place.height + kBelowBoxes);
    return height;
}

// The window library declares the caption of a frame the label of the frame that follows.
class FrameBox final : public wxStaticBox {
public:
    using wxStaticBox::wxStaticBox;

protected:
    [[nodiscard]] bool GTKWidgetNeedsMnemonic() const override { return false; }
};

wxRect InPixels(const Rectangle& place, TwipsPerPixel scale)
{
    const Rectangle pixels = ToPixels(place, scale);
    return {pixels.left, pixels.top, pixels.width, pixels.height};
}

} // namespace

frmOptions::frmOptions(wxWindow* parent, modRegistry& registry, std::function<void()> startRefreshTimer,
    std::function<void()> stopRefreshTimer, decltype(FeedServices::say) say)
    : wxDialog(
        parent, wxID_ANY, "Options", wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE, "frmOptions"),
      registry_(registry),
      startRefreshTimer_(std::move(startRefreshTimer)),
      stopRefreshTimer_(std::move(stopRefreshTimer)),
      say_(std::move(say))
{
    AddFrame("General", kGeneralFrame);
    for (const Site* site : Sites()) {
        if (!site->optionFrame.options.empty())
            AddFrame(
                wxString::FromUTF8(site->displayName.data(), site->displayName.size()), site->optionFrame);
    }
    LayOut();
    RestoreWindowPosition({*this, kFormName, registry_});
    Store(kSettings, [this] { Fill(); });
    BindEvents();
    MoveFocus(true);
}

void frmOptions::AddFrame(const wxString& caption, const OptionFrame& row)
{
    auto* frame = new FrameBox(this, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize, 0, row.control);
    frames_.push_back({&row, frame});
    for (const Option& option : row.options) {
        switch (option.kind) {
        case OptionKind::OnOff:
            checkBoxes_.push_back({&option, frame,
                new wxCheckBox(frame, wxID_ANY, option.caption, wxDefaultPosition, wxDefaultSize, 0,
                    wxDefaultValidator, option.control)});
            break;
        case OptionKind::Minutes:
            // Made after the check box whose caption it covers, and so above it.
            checkBoxes_.back().minutesOption = &option;
            checkBoxes_.back().minutes = new wxTextCtrl(
                frame, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, option.control);
            SetAccessibleName(*checkBoxes_.back().minutes, Words(option.caption));
            break;
        }
    }
}

void frmOptions::BindEvents()
{
    for (const CheckBox& row : checkBoxes_) {
        row.box->Bind(wxEVT_CHECKBOX, [this, &row](wxCommandEvent&) {
            if (Store(kSettings, [this, &row] { CheckBox_Click(row); }))
                return;
            row.box->SetValue(!row.box->GetValue()); // what is stored
            FollowCheckBox(row);
        });
        if (row.minutes != nullptr)
            row.minutes->Bind(wxEVT_TEXT, [this, &row](wxCommandEvent&) {
                Store(kSettings, [this, &row] { MinutesBox_Change(row); });
            });
    }
    Bind(wxEVT_CLOSE_WINDOW, &frmOptions::OnClose, this);
    Bind(wxEVT_CHAR_HOOK, &frmOptions::OnKey, this);
}

// That of the screen, enlarged in each direction until every text fits its place: texts are larger under GTK
// than where the places were drawn.
TwipsPerPixel frmOptions::ScaleForText() const
{
    TwipsPerPixel scale = ScreenTwipsPerPixel();
    for (const CheckBox& row : checkBoxes_) {
        const Rectangle& place = row.option->place;
        const wxSize best = row.box->GetBestSize();
        MakeRoom(scale.horizontal, place.width, best.x);
        MakeRoom(scale.vertical, kRowPitch, best.y);
        if (row.minutes != nullptr)
            MakeRoom(scale.vertical, place.height, row.minutes->GetCharHeight() + 2 * kAroundMinutes);
    }
    return scale;
}

void frmOptions::LayOut()
{
    const TwipsPerPixel scale = ScaleForText();
    std::int32_t top = kMargin;
    for (const Frame& frame : frames_) {
        const std::int32_t height = HeightOf(*frame.row);
        frame.box->SetSize(InPixels({kMargin, top, kFrameWidth, height}, scale));
        top += height + kBetweenFrames;
    }
    SetClientSize(InPixels({0, 0, kWidth, top + kMargin}, scale).GetSize());
    for (const CheckBox& row : checkBoxes_) {
        Rectangle place = row.option->place;
        if (row.minutes == nullptr)
            place.height = kRowPitch;
        wxRect pixels = InPixels(place, scale);
        int caption = 0, border = 0;
        row.frame->GetBordersForSizer(&caption, &border);
        pixels.Offset(-border, -caption);
        row.box->SetSize(pixels);
        if (row.minutes != nullptr)
            PlaceMinutesBox(row);
    }
}

void frmOptions::PlaceMinutesBox(const CheckBox& row)
{
    const wxString caption = row.box->GetLabelText();
    const auto blanks = caption.find("  ");
    const auto minutes = caption.find_last_of(' ');
    const int captionLeft = row.box->GetBestSize().x - kAfterCaption - row.box->GetTextExtent(caption).x;
    // One blank stays free at either side.
    const int left = captionLeft + row.box->GetTextExtent(caption.substr(0, blanks + 1)).x;
    const int right = captionLeft + row.box->GetTextExtent(caption.substr(0, minutes)).x;
    const int height = row.minutes->GetCharHeight() + 2 * kAroundMinutes;
    const wxRect box = row.box->GetRect();
    row.minutes->SetSize(box.x + left, box.y + (box.height - height) / 2, right - left, height);
}

void frmOptions::Fill()
{
    for (const CheckBox& row : checkBoxes_) {
        FillCheckBox(row);
        if (row.minutes != nullptr)
            FillMinutesBox(row);
    }
}

void frmOptions::FillCheckBox(const CheckBox& row)
{
    const bool checked = IsOn(registry_, *row.option);
    row.box->SetValue(checked);
    if (checked)
        CheckBox_Click(row);
    else if (row.minutes != nullptr)
        row.minutes->Disable();
}

void frmOptions::FillMinutesBox(const CheckBox& row)
{
    const RegValue minutes = ReadOption(registry_, *row.minutesOption);
    row.minutes->ChangeValue(wxString::FromUTF8(minutes.ToText()));
    if (!minutes.IsEmpty())
        MinutesBox_Change(row);
}

bool frmOptions::Store(const char* failed, const std::function<void()>& writes)
{
    const auto failure = registry_.StoreTogether(writes);
    say_(failed, failure ? Words(failed, {*failure}) : "");
    return !failure;
}

void frmOptions::CheckBox_Click(const CheckBox& row)
{
    StoreOption(registry_, *row.option, row.box->GetValue() ? 1 : 0);
    FollowCheckBox(row);
}

void frmOptions::FollowCheckBox(const CheckBox& row)
{
    const bool checked = row.box->GetValue();
    if (row.minutes != nullptr)
        row.minutes->Enable(checked);
    if (row.option->name != kCheckInterval.name)
        return;
    if (checked)
        startRefreshTimer_();
    else
        stopRefreshTimer_();
}

void frmOptions::MinutesBox_Change(const CheckBox& row)
{
    StoreOption(registry_, *row.minutesOption, MinutesFromText(row.minutes->GetValue().utf8_string()));
}

void frmOptions::OnClose(wxCloseEvent&)
{
    Store(Marked("The place of the options could not be stored: %1"), [this] {
        SaveWindowPosition({*this, kFormName, registry_});
    });
    Destroy();
}

void frmOptions::OnKey(wxKeyEvent& event)
{
    if (event.GetKeyCode() == WXK_ESCAPE)
        Close();
    else if (event.GetKeyCode() == WXK_TAB && !event.ControlDown() && !event.AltDown())
        MoveFocus(!event.ShiftDown());
    else
        event.Skip();
}

// The toolkit would go through each frame from top to bottom; the options have an order of their own.
void frmOptions::MoveFocus(bool forward)
{
    struct Stop {
        int tabOrder;
        wxWindow* window;
    };
    std::vector<Stop> stops;
    for (const CheckBox& row : checkBoxes_) {
        stops.push_back({row.option->tabOrder, row.box});
        if (row.minutes != nullptr && row.minutes->IsEnabled())
            stops.push_back({row.minutesOption->tabOrder, row.minutes});
    }
    std::ranges::stable_sort(stops, {}, &Stop::tabOrder);
    if (!forward)
        std::ranges::reverse(stops);
    const auto focused = std::ranges::find(stops, FindFocus(), &Stop::window);
    const auto next = focused == stops.end() || focused + 1 == stops.end() ? stops.begin() : focused + 1;
    next->window->SetFocus();
}

} // namespace vantro
