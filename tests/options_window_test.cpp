#include "settings/frmOptions.h"
#include "tests/support/FeedFixture.h"
#include "tests/window/WindowTest.h"

#include <gtk/gtk.h>
#include <wx/checkbox.h>
#include <wx/textctrl.h>

namespace vantro::test {

struct OptionsDialogTest : FeedFixture {
    void Open()
    {
        dialog = new frmOptions(
            nullptr, *registry_, [this] { timer += "start "; }, [this] { timer += "stop "; }, Services().say);
        box = wxDynamicCast(dialog->FindWindow("chkCheckInterval"), wxCheckBox);
        minutes = wxDynamicCast(dialog->FindWindow("txtCheckInterval"), wxTextCtrl);
        ASSERT_TRUE(ShowAndSettle(*dialog));
    }

    frmOptions* dialog = nullptr;
    wxCheckBox* box = nullptr; // "Check for new items every ... minutes"
    wxTextCtrl* minutes = nullptr;
    std::string timer; // what it was told
};

TEST_F(OptionsDialogTest, FillingCountsAsAChangeOfWhatIsStored)
{
    SetOption("Check Interval", 1);
    registry_->WriteRegValue(RegRoot, RegPath, "Check Interval Minutes", "-7.0", RegType::Sz);
    Open();
    EXPECT_EQ(minutes->GetValue(), "-7.0");
    EXPECT_TRUE(minutes->IsEnabled() && Option("Check Interval Minutes").IsNumber());
    EXPECT_EQ(timer, "start ");
    dialog->Close();
    EXPECT_TRUE(PumpUntil([&] { return Option("frmOptionsTop").IsNumber(); }));
}

TEST_F(OptionsDialogTest, TheMouseSwitchesCheckingOnAndOffAndEveryKeystrokeStoresTheMinutes)
{
    Open();
    EXPECT_TRUE(Option("Check Interval").IsEmpty() && Option("Check Interval Minutes").IsEmpty());
    EXPECT_FALSE(minutes->IsEnabled());
    Click(*box, {40, 10});
    ASSERT_TRUE(PumpUntil([&] { return Option("Check Interval") == 1 && minutes->IsEnabled(); }));
    Click(*minutes, {10, 10}); // also shows that it lies above the caption
    ASSERT_TRUE(PumpUntil([&] { return minutes->HasFocus(); }));
    for (const auto& [key, stored] : {std::pair('1', 1), {'5', 15}, {'.', 15}, {'5', 16}, {'x', 16}}) {
        const auto length = minutes->GetValue().length();
        wxUIActionSimulator().Char(key);
        ASSERT_TRUE(PumpUntil([&] { return minutes->GetValue().length() > length; }));
        EXPECT_EQ(Option("Check Interval Minutes").ToNumber(), stored);
    }
    Click(*box, {40, 10});
    ASSERT_TRUE(PumpUntil([&] { return Option("Check Interval") == 0 && !minutes->IsEnabled(); }));
    EXPECT_EQ(timer, "start stop ") << "typing leaves the timer alone";
    DestroyAndWait(*dialog);
}

TEST_F(OptionsDialogTest, WhatAHeldStoreDoesNotTakeIsSaidOnceForEachBatch)
{
    SetOption("Auto Expand New", 1);
    SetOption("Check Interval", 1);
    RegistryStore other(folder_.Path() / "registry.db");
    RegistryStore::Batch holds(other);
    other.CreateKey("held");
    Open();
    Click(*box, {40, 10});
    ASSERT_TRUE(PumpUntil([&] { return said_.size() == 2; }));
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
