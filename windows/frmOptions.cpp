#include "windows/frmOptions.h"

#include "settings/MinutesText.h"
#include "settings/modRegistry.h"
#include "toolkit/Screen.h"
#include "windows/modFrmCtrl.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>
#include <wx/checkbox.h>
#include <wx/statbox.h>
#include <wx/textctrl.h>

namespace vantro {

namespace {

constexpr std::string_view kFormName = "frmOptions";
constexpr const char* kSettings = "The settings"; // that could not be stored
constexpr std::string_view kMinutesValue = "Check Interval Minutes";
constexpr Rectangle kClientArea{0, 0, 4590, 4320};

// Twips.
struct FrameRow {
    const char* name;
    const char* caption;
    Rectangle place;
};
constexpr std::array<FrameRow, 4> kFrames{{
    {"Frame1", "General", {120, 120, 4335, 1215}},
    {"Frame3", "Xbins", {120, 1440, 4335, 855}},
    {"Frame4", "Xbox-Scene", {120, 2400, 4335, 855}},
    {"Frame5", "Max Console", {120, 3360, 4335, 735}},
}};

struct CheckBoxRow {
    const char* name;
    const char* caption;
    std::string_view value;
    std::size_t frame;
    Rectangle place; // in its frame
};
constexpr std::size_t kNewAtStartup = 1;
constexpr std::size_t kCheckInterval = 2;
constexpr std::array<CheckBoxRow, 7> kCheckBoxes{{
    {"chkAutoExpandNew", "Auto expand sites with New items", "Auto Expand New", 0, {240, 240, 2775, 255}},
    {"chkNewAtStartup", "Check for new items at start up", "Check At Startup", 0, {240, 480, 2535, 255}},
    {"chkCheckInterval", "Check for new items every                minutes", "Check Interval", 0,
        {240, 720, 3495, 315}},
    {"chkXbinsAutoNFO", "Auto display NFO link", "Xbins Auto NFO", 1, {240, 240, 1815, 255}},
    {"chkXbinsExternalPage", "Open author/product homepage in external browser", "Xbins External Page", 1,
        {240, 480, 3975, 255}},
    {"chkXboxSceneExternalPage", "Open news in external browser", "XboxScene External", 2,
        {240, 240, 2535, 255}},
    {"chkMaxConsoleExternalPage", "Open news in external browser", "Max Console External", 3,
        {240, 240, 2535, 255}},
}};
constexpr std::int32_t kRowPitch = 240; // from one check box to the next
constexpr int kAroundMinutes = 5; // pixels above and below the digits in their box
constexpr int kAfterCaption = 4; // pixels that GTK's check box leaves to the right of its caption

void MakeRoom(double& twipsPerPixel, std::int32_t place, int pixels)
{
    twipsPerPixel = std::min(twipsPerPixel, 1.0 * place / pixels);
}

wxRect InPixels(const Rectangle& place, TwipsPerPixel scale)
{
    const Rectangle pixels = ToPixels(place, scale);
    return {pixels.left, pixels.top, pixels.width, pixels.height};
}

} // namespace

frmOptions::frmOptions(wxWindow* parent, modRegistry& registry, std::function<void()> startRefreshTimer,
    std::function<void()> stopRefreshTimer, std::function<void(const std::string&)> say)
    : wxDialog(
        parent, wxID_ANY, "Options", wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE, "frmOptions"),
      registry_(registry),
      startRefreshTimer_(std::move(startRefreshTimer)),
      stopRefreshTimer_(std::move(stopRefreshTimer)),
      say_(std::move(say))
{
    AddControls();
    LayOut();
    RestoreWindowPosition({*this, kFormName, registry_});
    Store(kSettings, [this] { Fill(); });
    for (std::size_t index = 0; index < checkBoxes_.size(); ++index)
        checkBoxes_[index]->Bind(wxEVT_CHECKBOX,
            [this, index](wxCommandEvent&) { Store(kSettings, [this, index] { CheckBox_Click(index); }); });
    txtCheckInterval_->Bind(
        wxEVT_TEXT, [this](wxCommandEvent&) { Store(kSettings, [this] { txtCheckInterval_Change(); }); });
    Bind(wxEVT_CLOSE_WINDOW, &frmOptions::OnClose, this);
    Bind(wxEVT_CHAR_HOOK, &frmOptions::OnKey, this);
    checkBoxes_.front()->SetFocus();
}

void frmOptions::AddControls()
{
    for (std::size_t index = 0; index < kFrames.size(); ++index)
        frames_[index] = new wxStaticBox(
            this, wxID_ANY, kFrames[index].caption, wxDefaultPosition, wxDefaultSize, 0, kFrames[index].name);
    for (std::size_t index = 0; index < kCheckBoxes.size(); ++index) {
        const CheckBoxRow& row = kCheckBoxes[index];
        checkBoxes_[index] = new wxCheckBox(frames_[row.frame], wxID_ANY, row.caption, wxDefaultPosition,
            wxDefaultSize, 0, wxDefaultValidator, row.name);
    }
    // Made after the check box whose caption it covers, and so above it.
    txtCheckInterval_ = new wxTextCtrl(frames_[kCheckBoxes[kCheckInterval].frame], wxID_ANY, "",
        wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, "txtCheckInterval");
}

// That of the screen, enlarged in each direction until every text fits its place: texts are larger under GTK
// than where the places were drawn.
TwipsPerPixel frmOptions::ScaleForText() const
{
    TwipsPerPixel scale = ScreenTwipsPerPixel();
    for (std::size_t index = 0; index < kCheckBoxes.size(); ++index) {
        const wxSize best = checkBoxes_[index]->GetBestSize();
        MakeRoom(scale.horizontal, kCheckBoxes[index].place.width, best.x);
        MakeRoom(scale.vertical, kRowPitch, best.y);
    }
    MakeRoom(scale.vertical, kCheckBoxes[kCheckInterval].place.height,
        txtCheckInterval_->GetCharHeight() + 2 * kAroundMinutes);
    return scale;
}

void frmOptions::LayOut()
{
    const TwipsPerPixel scale = ScaleForText();
    SetClientSize(InPixels(kClientArea, scale).GetSize());
    for (std::size_t index = 0; index < kFrames.size(); ++index)
        frames_[index]->SetSize(InPixels(kFrames[index].place, scale));
    for (std::size_t index = 0; index < kCheckBoxes.size(); ++index) {
        Rectangle place = kCheckBoxes[index].place;
        if (index != kCheckInterval)
            place.height = kRowPitch;
        wxRect pixels = InPixels(place, scale);
        int caption = 0, border = 0;
        frames_[kCheckBoxes[index].frame]->GetBordersForSizer(&caption, &border);
        pixels.Offset(-border, -caption);
        checkBoxes_[index]->SetSize(pixels);
    }
    PlaceMinutesBox();
}

void frmOptions::PlaceMinutesBox()
{
    const wxCheckBox* box = checkBoxes_[kCheckInterval];
    const wxString caption = box->GetLabelText();
    const auto blanks = caption.find("  ");
    const auto minutes = caption.find_last_of(' ');
    const int captionLeft = box->GetBestSize().x - kAfterCaption - box->GetTextExtent(caption).x;
    // One blank stays free at either side.
    const int left = captionLeft + box->GetTextExtent(caption.substr(0, blanks + 1)).x;
    const int right = captionLeft + box->GetTextExtent(caption.substr(0, minutes)).x;
    const int height = txtCheckInterval_->GetCharHeight() + 2 * kAroundMinutes;
    const wxRect row = box->GetRect();
    txtCheckInterval_->SetSize(row.x + left, row.y + (row.height - height) / 2, right - left, height);
}

void frmOptions::Fill()
{
    for (std::size_t index = 0; index < checkBoxes_.size(); ++index) {
        FillCheckBox(index);
        if (index == kCheckInterval)
            FillMinutesBox();
    }
}

void frmOptions::FillCheckBox(std::size_t index)
{
    const bool checked = registry_.ReadRegValue(RegRoot, RegPath, kCheckBoxes[index].value) == 1;
    checkBoxes_[index]->SetValue(checked);
    if (checked)
        CheckBox_Click(index);
    else if (index == kCheckInterval)
        txtCheckInterval_->Disable();
}

void frmOptions::FillMinutesBox()
{
    const RegValue minutes = registry_.ReadRegValue(RegRoot, RegPath, kMinutesValue);
    txtCheckInterval_->ChangeValue(wxString::FromUTF8(minutes.ToText()));
    if (!minutes.IsEmpty())
        txtCheckInterval_Change();
}

void frmOptions::Store(const char* what, const std::function<void()>& writes)
{
    if (const auto failure = registry_.StoreTogether(writes))
        say_(std::string(what) + " could not be stored: " + *failure);
}

void frmOptions::CheckBox_Click(std::size_t index)
{
    const bool checked = checkBoxes_[index]->GetValue();
    registry_.WriteRegValue(RegRoot, RegPath, kCheckBoxes[index].value, checked ? 1 : 0, RegType::Dword);
    if (index != kCheckInterval)
        return;
    txtCheckInterval_->Enable(checked);
    if (checked)
        startRefreshTimer_();
    else
        stopRefreshTimer_();
}

void frmOptions::txtCheckInterval_Change()
{
    registry_.WriteRegValue(RegRoot, RegPath, kMinutesValue,
        MinutesFromText(txtCheckInterval_->GetValue().utf8_string()), RegType::Dword);
}

void frmOptions::OnClose(wxCloseEvent&)
{
    Store("The place of the options", [this] { SaveWindowPosition({*this, kFormName, registry_}); });
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

// The toolkit would go through each frame from top to bottom; here "Check for new items at start up" comes
// last.
void frmOptions::MoveFocus(bool forward)
{
    std::vector<wxWindow*> order;
    for (std::size_t index = 0; index < checkBoxes_.size(); ++index) {
        if (index != kNewAtStartup)
            order.push_back(checkBoxes_[index]);
        if (index == kCheckInterval && txtCheckInterval_->IsEnabled())
            order.push_back(txtCheckInterval_);
    }
    order.push_back(checkBoxes_[kNewAtStartup]);
    if (!forward)
        std::ranges::reverse(order);
    const auto focused = std::ranges::find(order, FindFocus());
    const auto next = focused == order.end() || focused + 1 == order.end() ? order.begin() : focused + 1;
    (*next)->SetFocus();
}

} // namespace vantro
