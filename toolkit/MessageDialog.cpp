#include "toolkit/MessageDialog.h"

#include "base/ReadableText.h"
#include "toolkit/ModalInput.h"

#include <utility>
#include <wx/artprov.h>
#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>

namespace vantro {

namespace {

// Device-independent pixels.
constexpr int kWidestText = 420;
constexpr int kGap = 12;
constexpr int kBesideTitle = 120; // what the window manager's buttons take of the title bar

} // namespace

MessageDialog::MessageDialog(wxWindow* parent, const std::string& title, const std::string& text,
    bool stopIcon, std::function<void()> closed)
    : wxDialog(parent, wxID_ANY, wxString::FromUTF8(title), wxDefaultPosition, wxDefaultSize,
        wxDEFAULT_DIALOG_STYLE, "messageBox"),
      texts_(new wxBoxSizer(wxVERTICAL)),
      closed_(std::move(closed))
{
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    if (stopIcon)
        row->Add(new wxStaticBitmap(
                     this, wxID_ANY, wxArtProvider::GetBitmapBundle(wxART_ERROR, wxART_MESSAGE_BOX)),
            wxSizerFlags().Border(wxRIGHT, FromDIP(kGap)));
    row->Add(texts_, wxSizerFlags(1).CentreVertical());
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(row, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(kGap)));
    auto* ok = new wxButton(this, wxID_OK);
    column->Add(ok, wxSizerFlags().Centre().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(kGap)));
    column->SetMinSize(GetTextExtent(GetTitle()).x + FromDIP(kBesideTitle), -1);
    SetSizer(column);
    SetText(text);

    ok->SetDefault();
    ok->SetFocus();
    SetEscapeId(wxID_OK);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { Finish(); }, wxID_OK);
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) { Finish(); });
    TakeAllInput(*this);
}

void MessageDialog::SetText(const std::string& text)
{
    texts_->Clear(true);
    texts_->Add(CreateTextSizer(wxString::FromUTF8(ReadableText(text)), FromDIP(kWidestText)));
    SetMinSize(wxDefaultSize);
    GetSizer()->SetSizeHints(this);
    Layout(); // which an unchanged size would leave out
    CentreOnParent();
}

void MessageDialog::Finish()
{
    Hide();
    Destroy();
    if (const auto closed = std::exchange(closed_, {}))
        closed();
}

} // namespace vantro
