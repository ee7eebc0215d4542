#include "tests/support/FeedFixture.h"
#include "tests/window/WindowTest.h"
#include "windows/modFrmCtrl.h"

#include <gtk/gtk.h>
#include <wx/display.h>
#include <wx/frame.h>

namespace vantro::test {

struct FormPlacementTest : FeedFixture {
    void Start()
    {
        frame = new wxFrame(nullptr, wxID_ANY, "Vantro");
        frame->m_decorSize = {}; // not known yet, as for the first window of a process
        HookMainWindow(*frame);
        frame->CreateStatusBar();
        RestoreWindowSize({*frame, "frmMain", *registry_}, 640, 480);
        RestoreWindowPosition({*frame, "frmMain", *registry_});
        ASSERT_TRUE(ShowAndSettle(*frame));
    }
    void End()
    {
        UnhookMainWindow(*frame);
        SaveWindowPosition({*frame, "frmMain", *registry_});
        SaveWindowSize({*frame, "frmMain", *registry_});
        DestroyAndWait(*frame);
    }
    [[nodiscard]] GdkWindow* Window() const { return gtk_widget_get_window(frame->GetHandle()); }
    // What the window system says, decoration not counted.
    wxSize Inner() const { return {gdk_window_get_width(Window()), gdk_window_get_height(Window())}; }
    wxRect Outer() const
    {
        GdkRectangle outer;
        gdk_window_get_frame_extents(Window(), &outer);
        return {outer.x, outer.y, outer.width, outer.height};
    }
    void StorePlace(const wxRect& pixels)
    {
        for (const auto& [name, length] : {std::pair{"frmMainTop", pixels.y}, {"frmMainLeft", pixels.x},
                 {"frmMainWidth", pixels.width}, {"frmMainHeight", pixels.height}})
            SetOption(name, length * 15);
    }

    wxFrame* frame = nullptr;
};

TEST_F(FormPlacementTest, IsPulledOntoTheScreenKeepsItsMinimumAndStoresNoMaximisedPlace)
{
    StorePlace({50000, 50000, 700, 500});
    Start();
    const wxPoint corner = wxDisplay(0U).GetGeometry().GetBottomRight();
    EXPECT_TRUE(PumpUntil([&] { return Outer().GetBottomRight() == corner; }));
    gdk_window_resize(Window(), 700, 300); // as a user's drag: past the toolkit
    EXPECT_TRUE(PumpUntil([&] { return Inner() == wxSize(700, 480); })) << Inner().x << " " << Inner().y;
    frame->Maximize();
    EXPECT_TRUE(PumpUntil([&] { return frame->IsMaximized() && Inner().x > 1000; }));
    End();
    EXPECT_TRUE(Option("frmMainTop") == 50000 * 15 && Option("frmMainHeight") == 500 * 15);
}

TEST_F(FormPlacementTest, IsStoredAsItWasAlsoWhereTheDesktopTellsNoPlace)
{
    StorePlace({203, 157, 801, 603});
    Start();
    EXPECT_EQ(Inner(), wxSize(801, 603));
    End();
    for (const auto& [name, pixels] :
        {std::pair{"frmMainTop", 157}, {"frmMainLeft", 203}, {"frmMainWidth", 801}, {"frmMainHeight", 603}})
        EXPECT_TRUE(Option(name) == pixels * 15) << name;
}

TEST_F(FormPlacementTest, ComesBackTheSameHoweverOftenItIsStarted)
{
    StorePlace({203, 157, 801, 603});
    for (int start = 0; start < 4; ++start) {
        Start();
        EXPECT_EQ(wxRect(Outer().GetPosition(), Inner()), wxRect(203, 157, 801, 603)) << start;
        End();
        EXPECT_TRUE(Option("frmMainLeft") == 203 * 15 && Option("frmMainHeight") == 603 * 15);
    }
}

} // namespace vantro::test
