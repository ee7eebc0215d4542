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
    void Store4(int top, int left, int width, int height)
    {
        Store("frmMainTop", top);
        Store("frmMainLeft", left);
        Store("frmMainWidth", width);
        Store("frmMainHeight", height);
    }

    wxFrame* frame = nullptr;
    wxRect screen = wxDisplay(0U).GetGeometry();
};

TEST_F(FormPlacementTest, FirstStartIsASmallWindowInTheMiddle)
{
    Start();
    EXPECT_EQ(Inner(), wxSize(640, 480));
    EXPECT_EQ(Outer().GetPosition(), wxRect(Outer().GetSize()).CentreIn(screen).GetPosition());
    End();
    EXPECT_EQ(Stored("frmMainWidth").ToNumber(), 9600);
    EXPECT_EQ(Stored("frmMainHeight").ToNumber(), 7200);
}

TEST_F(FormPlacementTest, ComesBackTheSameHoweverOftenItIsStarted)
{
    Store4(157 * 15, 203 * 15, 801 * 15, 603 * 15);
    for (int start = 0; start < 4; ++start) {
        Start();
        EXPECT_EQ(Inner(), wxSize(801, 603)) << start;
        EXPECT_EQ(Outer().GetPosition(), wxPoint(203, 157)) << start;
        End();
    }
}

TEST_F(FormPlacementTest, IsPulledOntoTheScreenWithItsDecoration)
{
    Store4(500000, 500000, 700 * 15, 500 * 15);
    Start();
    EXPECT_TRUE(PumpUntil([&] { return Outer().GetBottomRight() == screen.GetBottomRight(); }))
        << Outer().GetRight() << " " << Outer().GetBottom();
    End();
}

TEST_F(FormPlacementTest, CannotBeMadeSmallerThanTheMinimum)
{
    Store4(1500, 1500, 700 * 15, 500 * 15);
    Start();
    gdk_window_resize(gtk_widget_get_window(frame->GetHandle()), 300, 200); // as a user's drag: past the toolkit
    EXPECT_TRUE(PumpUntil([&] { return Inner() == wxSize(640, 480); })) << Inner().x << " " << Inner().y;
    End();
}

TEST_F(FormPlacementTest, KeepsWhatIsStoredWhenItIsClosedMaximised)
{
    Store4(1500, 1515, 10500, 7500);
    Start();
    frame->Maximize();
    ASSERT_TRUE(PumpUntil([&] { return frame->IsMaximized() && Inner().x > 1000; }));
    End();
    EXPECT_EQ(Stored("frmMainTop").ToNumber(), 1500);
    EXPECT_EQ(Stored("frmMainLeft").ToNumber(), 1515);
    EXPECT_EQ(Stored("frmMainWidth").ToNumber(), 10500);
    EXPECT_EQ(Stored("frmMainHeight").ToNumber(), 7500);
}

} // namespace
} // namespace vantro
