#include "settings/modRegistry.h"
#include "tests/support/FeedFixture.h"
#include "tests/window/WindowTest.h"
#include "windows/frmOptions.h"

#include <gtk/gtk.h>
#include <wx/checkbox.h>
#include <wx/textctrl.h>

namespace vantro::test {

struct OptionsDialogTest : FeedFixture {
    void Open()
    {
        dialog = new frmOptions(
            nullptr, *registry_, [this] { timer += "start "; }, [this] { timer += "stop "; }, Services().say);
        box = wxDynamicCast(dialog->FindWindow(kCheckInterval.control), wxCheckBox);
        minutes = wxDynamicCast(dialog->FindWindow(kCheckIntervalMinutes.control), wxTextCtrl);
        ASSERT_TRUE(ShowAndSettle(*dialog));
    }

    frmOptions* dialog = nullptr;
    wxCheckBox* box = nullptr; // "Check for new items every ... minutes"
    wxTextCtrl* minutes = nullptr;
    std::string timer; // what it was told
};

TEST_F(OptionsDialogTest, FillingCountsAsAChangeOfWhatIsStored)
{
    SetOption(kCheckInterval.name, 1);
    registry_->WriteRegValue(RegRoot, RegPath, kCheckIntervalMinutes.name, "-7.0", RegType::Sz);
    Open();
    EXPECT_EQ(minutes->GetValue(), "-7.0");
    EXPECT_TRUE(minutes->IsEnabled() && Option(kCheckIntervalMinutes.name).IsNumber());
    EXPECT_EQ(timer, "start ");
    dialog->Close();
    EXPECT_TRUE(PumpUntil([&] { return Option("frmOptionsTop").IsNumber(); }));
}

TEST_F(OptionsDialogTest, TheMouseSwitchesCheckingOnAndOff)
{
    Open();
    EXPECT_FALSE(minutes->IsEnabled());
    Click(*box, {40, 10});
    ASSERT_TRUE(PumpUntil([&] { return Option(kCheckInterval.name) == 1 && minutes->IsEnabled(); }));
    Click(*minutes, {10, 10}); // also shows that it lies above the caption
    ASSERT_TRUE(PumpUntil([&] { return minutes->HasFocus(); }));
    Click(*box, {40, 10});
    ASSERT_TRUE(PumpUntil([&] { return Option(kCheckInterval.name) == 0 && !minutes->IsEnabled(); }));
    EXPECT_EQ(timer, "start stop ");
    DestroyAndWait(*dialog);
}

TEST_F(OptionsDialogTest, AssistiveTechnologyFindsEveryBoxUnderItsOwnSite)
{
    Open();
    EXPECT_EQ(Told(*dialog),
        "frame Options\n"
        "panel General\n"
        "check box Auto expand sites with New items\n"
        "check box Check for new items at start up\n"
        "check box Check for new items every                minutes\n"
        "text Minutes between two checks\n"
        "label General\n"
        "panel Xbins\n"
        "check box Auto display NFO link\n"
        "check box Open author/product homepage in external browser\n"
        "label Xbins\n"
        "panel Xbox-Scene\n"
        "check box Open news in external browser\n"
        "label Xbox-Scene\n"
        "panel Max Console\n"
        "check box Open news in external browser\n"
        "label Max Console\n");
    DestroyAndWait(*dialog);
}

TEST_F(OptionsDialogTest, TheTabKeyGoesThroughAllBoxesAndEveryKeystrokeStoresItsOwnOption)
{
    Open();
    dialog->Raise();
    ASSERT_TRUE(PumpUntil([this] { return dialog->IsActive(); }));
    for (const auto& [frame, caption, option, keys, numbers] :
        {std::tuple{"General", "Auto expand", "Auto Expand New", " ", std::vector{1}},
            {"General", "Check for new items every", "Check Interval", " ", {1}},
            {"General", "", "Check Interval Minutes", "15.5x", {1, 15, 15, 16, 16}},
            {"Xbins", "Auto display NFO", "Xbins Auto NFO", " ", {1}},
            {"Xbins", "Open author/product homepage", "Xbins External Page", " ", {1}},
            {"Xbox-Scene", "Open news in external", "XboxScene External", " ", {1}},
            {"Max Console", "Open news in external", "Max Console External", " ", {1}},
            {"General", "Check for new items at start up", "Check At Startup", " ", {1}}}) {
        EXPECT_TRUE(Option(option).IsEmpty()) << option;
        const wxWindow* focused = wxWindow::FindFocus();
        EXPECT_TRUE(focused->GetParent()->GetLabel() == frame && focused->GetLabel().StartsWith(caption));
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            wxUIActionSimulator().Char(keys[i]);
            EXPECT_TRUE(PumpUntil([&, name = option, to = numbers[i]] { return Option(name) == to; }))
                << option;
        }
        wxUIActionSimulator().Char(WXK_TAB);
        ASSERT_TRUE(PumpUntil([&] { return wxWindow::FindFocus() != focused; }));
    }
    EXPECT_EQ(timer, "start ") << "typing leaves the timer alone";
    wxUIActionSimulator().Char(WXK_ESCAPE);
    EXPECT_TRUE(PumpUntil([] { return wxWindow::FindWindowByLabel("Options") == nullptr; }));
}

TEST_F(OptionsDialogTest, WhatAHeldStoreDoesNotTakeIsSaidOnceForEachBatch)
{
    SetOption(kAutoExpandNew.name, 1);
    SetOption(kCheckInterval.name, 1);
    RegistryStore other(folder_.Path() / "registry.db");
    RegistryStore::Batch holds(other);
    other.CreateKey("held");
    Open();
    Click(*box, {40, 10});
    ASSERT_TRUE(PumpUntil([&] { return said_.size() == 2; }));
    EXPECT_TRUE(PumpUntil([&] { return box->GetValue() && minutes->IsEnabled(); })) << "as it is stored";
    dialog->Close();
    const std::string lost = " could not be stored: The store is held by another program.";
    EXPECT_EQ(
        said_, (Titles{"The settings" + lost, "The settings" + lost, "The place of the options" + lost}));
}

TEST_F(OptionsDialogTest, ClipsNoTextAndPutsTheMinutesBoxOnTheBlanks)
{
    Open();
    for (wxWindow* frame : dialog->GetChildren()) {
        EXPECT_TRUE(wxRect(dialog->GetClientSize()).Contains(frame->GetRect())) << frame->GetName();
        for (wxWindow* child : frame->GetChildren()) {
            if (child == minutes)
                continue;
            const wxRect place = child->GetRect();
            EXPECT_TRUE(wxRect(frame->GetClientSize()).Contains(place)) << child->GetName();
            EXPECT_TRUE(wxRect(place.GetSize()).Contains(wxRect(child->GetBestSize()))) << child->GetName();
        }
    }
    int left = 0, top = 0; // where GTK really draws the caption, in the frame
    gtk_label_get_layout_offsets(GTK_LABEL(gtk_bin_get_child(GTK_BIN(box->GetHandle()))), &left, &top);
    const wxString caption = box->GetLabelText();
    EXPECT_GE(minutes->GetRect().x, left + box->GetTextExtent("Check for new items every").x);
    EXPECT_LE(minutes->GetRect().GetRight(), left + box->GetTextExtent(caption.BeforeLast('m')).x);
    DestroyAndWait(*dialog);
}

} // namespace vantro::test
