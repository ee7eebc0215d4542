#include "settings/frmOptions.h"
#include "tests/window/WindowTest.h"

#include <gtk/gtk.h>
#include <wx/checkbox.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>
#include <wx/weakref.h>

namespace vantro {
namespace {

using test::PumpUntil;

class OptionsDialogTest : public test::WindowTest {
protected:
    ~OptionsDialogTest() override
    {
        if (dialog)
            test::DestroyAndWait(*dialog);
    }
    void Open()
    {
        timer.clear();
        dialog = new frmOptions(
            nullptr, registry, [this] { timer += "start "; }, [this] { timer += "stop "; });
        ASSERT_TRUE(test::ShowAndSettle(*dialog));
    }
    [[nodiscard]] wxCheckBox* Box(const char* name)
    {
        return wxDynamicCast(dialog->FindWindow(name), wxCheckBox);
    }
    [[nodiscard]] wxTextCtrl* Minutes()
    {
        return wxDynamicCast(dialog->FindWindow("txtCheckInterval"), wxTextCtrl);
    }
    void Click(const wxWindow* window, int x)
    {
        wxUIActionSimulator().MouseMove(window->ClientToScreen(wxPoint(x, window->GetSize().y / 2)));
        wxUIActionSimulator().MouseClick();
    }
    void Press(int key, int modifiers = wxMOD_NONE) { wxUIActionSimulator().Char(key, modifiers); }

    wxWeakRef<frmOptions> dialog;
    std::string timer;
};

TEST_F(OptionsDialogTest, OpeningShowsTheStoreAndRestartsTheCountdownOnlyWhenCheckingIsOn)
{
    Open();
    EXPECT_EQ(Minutes()->GetValue(), "");
    EXPECT_FALSE(Minutes()->IsEnabled());
    EXPECT_TRUE(Stored("Check Interval").IsEmpty());
    EXPECT_TRUE(Stored("Check Interval Minutes").IsEmpty());
    EXPECT_EQ(timer, "");
    test::DestroyAndWait(*dialog);

    Store("Check Interval", 1);
    Store("Check Interval Minutes", -7);
    Open();
    EXPECT_EQ(Minutes()->GetValue(), "-7");
    EXPECT_TRUE(Minutes()->IsEnabled());
    EXPECT_EQ(timer, "start ");
}

TEST_F(OptionsDialogTest, StoresEveryClickUnderItsOwnNameAtOnce)
{
    const std::pair<const char*, const char*> settings[] = {{"chkAutoExpandNew", "Auto Expand New"},
        {"chkNewAtStartup", "Check At Startup"}, {"chkCheckInterval", "Check Interval"},
        {"chkXbinsAutoNFO", "Xbins Auto NFO"}, {"chkXbinsExternalPage", "Xbins External Page"},
        {"chkXboxSceneExternalPage", "XboxScene External"},
        {"chkMaxConsoleExternalPage", "Max Console External"}};
    Open();
    for (const int expected : {1, 0}) {
        for (const auto& [box, value] : settings) {
            EXPECT_EQ(Box(box)->GetValue(), expected == 0) << box;
            Click(Box(box), 40);
            EXPECT_TRUE(PumpUntil([&, v = value] { return Stored(v).IsNumber() && Stored(v) == expected; }))
                << value;
        }
        EXPECT_EQ(Minutes()->IsEnabled(), expected == 1);
    }
    EXPECT_EQ(timer, "start stop ");
}

TEST_F(OptionsDialogTest, StoresTheMinutesWithEveryKeystroke)
{
    Store("Check Interval", 1);
    Open();
    Click(Minutes(), Minutes()->GetSize().x / 2); // also shows that the box lies above the caption
    ASSERT_TRUE(PumpUntil([&] { return Minutes()->HasFocus(); }));
    for (const auto& [key, minutes] : {std::pair('1', 1), {'5', 15}, {'.', 15}, {'5', 16}, {'x', 16}}) {
        const auto length = Minutes()->GetValue().length();
        Press(key);
        ASSERT_TRUE(PumpUntil([&] { return Minutes()->GetValue().length() > length; }));
        EXPECT_EQ(Stored("Check Interval Minutes").ToNumber(), minutes);
    }
    EXPECT_EQ(timer, "start "); // of the opening; typing leaves the timer alone
}

TEST_F(OptionsDialogTest, TabGoesThroughTheBoxesInTheirGivenOrderAndEscapeCloses)
{
    Store("Check Interval", 1);
    Open();
    const char* const order[] = {"chkAutoExpandNew", "chkCheckInterval", "txtCheckInterval",
        "chkXbinsAutoNFO", "chkXbinsExternalPage", "chkXboxSceneExternalPage", "chkMaxConsoleExternalPage",
        "chkNewAtStartup", "chkAutoExpandNew"};
    for (const char* name : order) {
        EXPECT_TRUE(PumpUntil([&] { return dialog->FindWindow(name)->HasFocus(); })) << name;
        Press(WXK_TAB);
    }
    ASSERT_TRUE(PumpUntil([&] { return Box("chkCheckInterval")->HasFocus(); }));
    Press(WXK_TAB, wxMOD_SHIFT);
    EXPECT_TRUE(PumpUntil([&] { return Box("chkAutoExpandNew")->HasFocus(); }));
    Press(WXK_ESCAPE);
    EXPECT_TRUE(PumpUntil([&] { return !dialog; }));
    EXPECT_FALSE(Stored("frmOptionsTop").IsEmpty());
}

TEST_F(OptionsDialogTest, ClipsNoTextAndPutsTheMinutesBoxOnTheBlanks)
{
    Open();
    for (wxWindow* frame : dialog->GetChildren()) {
        EXPECT_TRUE(wxRect(dialog->GetClientSize()).Contains(frame->GetRect())) << frame->GetName();
        const wxWindow* above = nullptr;
        for (wxWindow* box : frame->GetChildren()) {
            EXPECT_GE(frame->GetClientSize().x, box->GetRect().GetRight()) << box->GetName();
            EXPECT_GE(frame->GetClientSize().y, box->GetRect().GetBottom()) << box->GetName();
            if (box == Minutes())
                continue;
            EXPECT_GE(box->GetSize().x, box->GetBestSize().x) << box->GetName();
            EXPECT_GE(box->GetSize().y, box->GetBestSize().y) << box->GetName();
            EXPECT_TRUE(!above || above->GetRect().GetBottom() < box->GetRect().y) << box->GetName();
            above = box;
        }
    }
    const wxCheckBox* box = Box("chkCheckInterval");
    int left = 0,
        top = 0; // where GTK really draws the caption, from the frame's corner as the controls' places
    gtk_label_get_layout_offsets(GTK_LABEL(gtk_bin_get_child(GTK_BIN(box->GetHandle()))), &left, &top);
    const wxString caption = box->GetLabelText();
    EXPECT_GE(Minutes()->GetRect().x, left + box->GetTextExtent("Check for new items every").x);
    EXPECT_LE(Minutes()->GetRect().GetRight(),
        left + box->GetTextExtent(caption.substr(0, caption.length() - strlen("minutes"))).x);
}

} // namespace
} // namespace vantro
