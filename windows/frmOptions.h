#pragma once

#include "base/Twips.h"
#include "feeds/SiteOperations.h"

#include <functional>
#include <string>
#include <vector>
#include <wx/dialog.h>

class wxCheckBox;
class wxStaticBox;
class wxTextCtrl;

namespace vantro {

class modRegistry;
struct Option;
struct OptionFrame;

// The options dialog, modeless: a frame for the general options and one for each site that has any, one below
// the other, as high as they are together. Every change is stored the moment it is made. Closing it (Escape
// does, too) saves its position under "frmOptions" and destroys it; the window that owns it is to Close() it
// before its own end.
class frmOptions final : public wxDialog {
public:
    // Places and fills itself, which writes set boxes and a number of minutes back and runs
    // `startRefreshTimer` when periodic checking is on. What cannot be stored, now or later, is told to `say`
    // in a sentence. `registry` and whatever the functions use must outlive the dialog.
    frmOptions(wxWindow* parent, modRegistry& registry, std::function<void()> startRefreshTimer,
        std::function<void()> stopRefreshTimer, decltype(FeedServices::say) say);

private:
    // The windows are owned by the toolkit.
    struct Frame {
        const OptionFrame* row;
        wxStaticBox* box;
    };
    struct CheckBox {
        const Option* option;
        wxStaticBox* frame;
        wxCheckBox* box;
        const Option* minutesOption = nullptr; // null, as is the next, unless minutes stand in the caption
        wxTextCtrl* minutes = nullptr;
    };

    void AddFrame(const wxString& caption, const OptionFrame& row);
    void BindEvents();
    [[nodiscard]] TwipsPerPixel ScaleForText() const;
    void LayOut();
    void PlaceMinutesBox(const CheckBox& row);
    void Fill();
    void FillCheckBox(const CheckBox& row);
    void FillMinutesBox(const CheckBox& row);
    // False when nothing of it was stored, which is said.
    bool Store(const char* failed, const std::function<void()>& writes);
    void CheckBox_Click(const CheckBox& row);
    // Sets what hangs on the box to its state.
    void FollowCheckBox(const CheckBox& row);
    void MinutesBox_Change(const CheckBox& row);
    void OnClose(wxCloseEvent& event);
    void OnKey(wxKeyEvent& event);
    void MoveFocus(bool forward);

    modRegistry& registry_;
    std::function<void()> startRefreshTimer_;
    std::function<void()> stopRefreshTimer_;
    decltype(FeedServices::say) say_;
    std::vector<Frame> frames_;
    std::vector<CheckBox> checkBoxes_; // of all frames, in the order in which they are filled
};

} // namespace vantro
