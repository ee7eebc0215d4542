#include "downloader/PropertyBag.h"
#include "tests/support/FeedFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/window/WindowTest.h"
#include "toolkit/Accessibility.h"
#include "toolkit/WxEventPump.h"
#include "windows/bkDLControl.h"

#include <sstream>
#include <wx/frame.h>
#include <wx/panel.h>

namespace vantro::test {

struct DownloadControlTest : testing::Test {
    DownloadControlTest()
    {
        control->SetSize(40, 40, 200, 20);
        control->SetBackColor(0x00FF00);
        control->SetForeColor(0x0000FF); // red stands in the lowest byte
        control->SetBorderStyle(0);
        control->Engine().SetSaveFilePath(folder.Path().string());
        EXPECT_TRUE(ShowAndSettle(*frame));
    }
    ~DownloadControlTest() override { DestroyAndWait(*frame); }

    // How far the control is red, in pixels from the left of its middle row.
    [[nodiscard]] int BarWidth() const
    {
        int width = 0;
        while (width < 200 && ColourAt(*control, {width, 10}) == std::string("\xFF\0\0", 3))
            ++width;
        return width;
    }
    TemporaryFolder folder;
    HttpServer server;
    WxEventPump pump;
    wxEvtHandler waker; // takes what it still has to do along when it goes
    AsyncRead reader{[this] { waker.CallAfter([this] { reader.Deliver(); }); }};
    wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "Strip", wxPoint(100, 100), wxSize(400, 200));
    bkDLControl* control = new bkDLControl(new wxPanel(frame), reader, pump);
};

TEST_F(DownloadControlTest, DrawsAsMuchOfTheBarAsHasArrivedAndTakesItAwayAtTheEnd)
{
    EXPECT_TRUE(PumpUntil([&] { return BarWidth() == 0; }));
    int paints = 0;
    control->Bind(wxEVT_PAINT, [&](wxPaintEvent& event) { event.Skip(++paints > 0); });
    SetAccessibleName(*control, "Download");
    EXPECT_EQ(Told(*control), "progress bar Download 0.00\n");
    control->Refresh();
    EXPECT_EQ(paints, 1) << "and no event had to be handled";
    // Half of it arrives, and no more.
    server.Serve("/half", "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(500, 'x'),
        HttpServer::Then::Stall);
    control->Engine().SetFileURL(server.Address("/half"));
    ASSERT_TRUE(control->Engine().BeginDownload());
    EXPECT_TRUE(PumpUntil([&] { return BarWidth() == 100; }));
    EXPECT_EQ(Told(*control), "progress bar Download 0.50\n");
    control->Engine().CancelDownload();
    EXPECT_TRUE(PumpUntil([&] { return BarWidth() == 0; }));
}

TEST_F(DownloadControlTest, PassesTheMouseOnInItsOwnUnits)
{
    std::ostringstream log;
    const auto logged = [&](const char* what) {
        return [&log, what](int button, int shift, float x, float y) {
            log << what << " " << button << " " << shift << " " << int(x) << " " << int(y) << "; ";
        };
    };
    control->Mouse
        = {[&] { log << "Click; "; }, [&] { log << "DblClick; "; }, logged("Down"), {}, logged("Up")};
    wxUIActionSimulator mouse;
    mouse.KeyDown(WXK_SHIFT);
    Click(*control, {10, 4}, wxMOUSE_BTN_RIGHT);
    mouse.KeyUp(WXK_SHIFT);
    mouse.MouseDblClick();
    mouse.MouseDown(wxMOUSE_BTN_MIDDLE);
    mouse.MouseMove(control->ClientToScreen(wxPoint(-8, 4))); // let go outside: no click
    mouse.MouseUp(wxMOUSE_BTN_MIDDLE);
    const char* const expected
        = "Down 2 1 150 60; Up 2 1 150 60; Click; Down 1 0 150 60; Up 1 0 150 60; Click; "
          "DblClick; Up 1 0 150 60; Down 4 0 150 60; Up 4 0 -120 60; ";
    EXPECT_TRUE(PumpUntil([&] { return log.str() == expected; })) << log.str();
}

TEST_F(DownloadControlTest, StoresOnlyWhatDiffersFromTheDefaultsAndReadsItBack)
{
    PropertyBag bag;
    control->ReadProperties(bag);
    control->SetForeColor(0x80000009);
    control->SetBorderStyle(0);
    control->AssignFont(wxFont(wxFontInfo(11.5).FaceName("Serif").Bold().Italic()));
    control->Engine().SetFailOnRedirect(false);
    control->WriteProperties(bag);
    EXPECT_EQ(bag.Properties().size(), 4U);

    bkDLControl copy(frame, reader, pump);
    copy.ReadProperties(bag);
    EXPECT_EQ(copy.ForeColor(), 0x80000009);
    EXPECT_EQ(copy.GetFont(), control->GetFont());
    EXPECT_TRUE(copy.BorderStyle() == 0 && !copy.Engine().FailOnRedirect());
}

} // namespace vantro::test
