// The least that can be called a window with a list: what the start of the program is measured against.

#include <wx/app.h>
#include <wx/dataview.h>
#include <wx/frame.h>
#include <wx/sizer.h>

namespace vantro {

namespace {

class BareApp final : public wxApp {
public:
    bool OnInit() override
    {
        auto* frame = new wxFrame(nullptr, wxID_ANY, "Bare", wxDefaultPosition, wxSize(900, 600));
        auto* tree = new wxDataViewTreeCtrl(frame, wxID_ANY);
        for (const char* site : {"One", "Two", "Three", "Four"})
            tree->AppendContainer(wxDataViewItem(), site);
        frame->SetSizer(new wxBoxSizer(wxVERTICAL));
        frame->GetSizer()->Add(tree, 1, wxEXPAND);
        frame->CreateStatusBar();
        frame->Show();
        return true;
    }
};

} // namespace

} // namespace vantro

wxIMPLEMENT_APP(vantro::BareApp);
