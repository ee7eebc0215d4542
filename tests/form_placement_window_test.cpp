#include "shell/modFrmCtrl.h"
#include "tests/window/WindowTest.h"

#include <gtk/gtk.h>
#include <wx/display.h>
#include <wx/frame.h>
#include <wx/menu.h>

namespace vantro {
namespace {

using test::PumpUntil;

class FormPlacementTest : public test::WindowTest {
protected:
    void Start()
    {
        frame = new wxFrame(nullptr, wxID_ANY, "Vantro");
        frame->m_decorSize = {}; // not known yet, as for the first window of a process
        HookMainWindow(*frame);
        auto* bar = new wxMenuBar;
        bar->Append(new wxMenu, "File");
        frame->SetMenuBar(bar);
        frame->CreateStatusBar();
        RestoreWindowSize({*frame, "frmMain", registry}, 640, 480);
        RestoreWindowPosition({*frame, "frmMain", registry});
        ASSERT_TRUE(test::ShowAndSettle(*frame));
    }
    void End()
    {
        UnhookMainWindow(*frame);
        SaveWindowPosition({*frame, "frmMain", registry});
        SaveWindowSize({*frame, "frmMain", registry});
        test::DestroyAndWait(*frame);
    }
    // What the window system says, decoration not counted.
    [[nodiscard]] wxSize Inner() const
    {
        GdkWindow* window = gtk_widget_get_window(frame->GetHandle());
        return {gdk_window_get_width(window), gdk_window_get_height(window)};
    }
    [[nodiscard]] wxRect Outer() const
    {
        GdkRectangle outer;
        gdk_window_get_frame_extents(gtk_widget_get_window(frame->GetHandle()), &outer);
        return {outer.x, outer.y, outer.width, outer.height};
    }
    void StorePlace(const wxRect& pixels)
    {
        Store("frmMainTop", pixels.y * 15);
        Store("frmMainLeft", pixels.x * 15);
        Store("frmMainWidth", pixels.width * 15);
        Store("frmMainHeight", pixels.height * 15);
    }

    wxFrame* frame = nullptr;
    wxRect screen = wxDisplay(0U).GetGeometry();
};

TEST_F(FormPlacementTest, FirstStartIsTheSmallestWindowInTheMiddle)
{
    Start();
    EXPECT_EQ(Inner(), wxSize(640, 480));
    EXPECT_EQ(Outer().GetPosition(), wxRect(Outer().GetSize()).CentreIn(screen).GetPosition());
    gdk_window_resize(
        gtk_widget_get_window(frame->GetHandle()), 700, 300); // as a user's drag: past the toolkit
    EXPECT_TRUE(PumpUntil([&] { return Inner() == wxSize(700, 480); })) << Inner().x << " " << Inner().y;
    frame->Maximize();
    EXPECT_TRUE(PumpUntil([&] { return frame->IsMaximized() && Inner().x > 1000; }));
    End();
    EXPECT_TRUE(Stored("frmMainTop").IsEmpty());
    EXPECT_TRUE(Stored("frmMainWidth").IsEmpty());
}

TEST_F(FormPlacementTest, ComesBackTheSameHoweverOftenItIsStarted)
{
    StorePlace({203, 157, 801, 603});
    for (int start = 0; start < 4; ++start) {
        Start();
        EXPECT_EQ(Inner(), wxSize(801, 603)) << start;
        EXPECT_EQ(Outer().GetPosition(), wxPoint(203, 157)) << start;
        End();
        EXPECT_EQ(Stored("frmMainLeft").ToNumber(), 203 * 15);
        EXPECT_EQ(Stored("frmMainHeight").ToNumber(), 603 * 15);
    }
}

TEST_F(FormPlacementTest, IsPulledOntoTheScreenWithItsDecoration)
{
    StorePlace({50000, 50000, 700, 500});
    Start();
    EXPECT_TRUE(PumpUntil([&] { return Outer().GetBottomRight() == screen.GetBottomRight(); }))
        << Outer().GetRight() << " " << Outer().GetBottom();
    End();
}

} // namespace
} // namespace vantro
