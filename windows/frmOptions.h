#pragma once

#include "base/Twips.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <wx/dialog.h>

class wxCheckBox;
class wxStaticBox;
class wxTextCtrl;

namespace vantro {

class modRegistry;

// The options dialog, modeless. Every change is stored the moment it is made. Closing it (Escape does, too)
// saves its position under "frmOptions" and destroys it; the window that owns it is to Close() it before its
// own end.
class frmOptions final : public wxDialog {
public:
    // Places and fills itself, which writes set boxes and a number of minutes back and runs
    // `startRefreshTimer` when periodic checking is on. What cannot be stored, now or later, is told to `say`
    // in a sentence. `registry` and whatever the functions use must outlive the dialog.
    frmOptions(wxWindow* parent, modRegistry& registry, std::function<void()> startRefreshTimer,
        std::function<void()> stopRefreshTimer, std::function<void(const std::string&)> say);

private:
    void AddControls();
    [[nodiscard]] TwipsPerPixel ScaleForText() const;
    void LayOut();
    void PlaceMinutesBox();
    void Fill();
    void FillCheckBox(std::size_t index);
    void FillMinutesBox();
    void Store(const char* what, const std::function<void()>& writes);
    void CheckBox_Click(std::size_t index);
    void txtCheckInterval_Change();
    void OnClose(wxCloseEvent& event);
    void OnKey(wxKeyEvent& event);
    void MoveFocus(bool forward);

    modRegistry& registry_;
    std::function<void()> startRefreshTimer_;
    std::function<void()> stopRefreshTimer_;
    std::function<void(const std::string&)> say_;
    std::array<wxStaticBox*, 4> frames_{}; // the windows below are owned by the toolkit
    std::array<wxCheckBox*, 7> checkBoxes_{};
    wxTextCtrl* txtCheckInterval_ = nullptr;
};

} // namespace vantro
