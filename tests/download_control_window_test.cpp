#include "downloader/bkDLControl.h"
#include "downloader/PropertyBag.h"
#include "downloader/SavedForm.h"
#include "platform/WxEventPump.h"
#include "tests/support/HttpServer.h"
#include "tests/window/WindowTest.h"

#include <wx/dcmemory.h>
#include <wx/dcscreen.h>
#include <wx/frame.h>
#include <wx/panel.h>
#include <wx/settings.h>
#include <wx/uiaction.h>

#include <sstream>

namespace vantro {
namespace {

using test::HttpServer;
using test::PumpUntil;

class DownloadControlTest : public test::WindowTest {
protected:
    DownloadControlTest()
    {
        control->SetSize(40, 40, 200, 20);
        control->SetBackColor(0x00FF00);
        control->SetForeColor(0x0000FF); // red stands in the lowest byte
        control->SetBorderStyle(0);
        control->Engine().SetSaveFilePath(folder.string());
        EXPECT_TRUE(test::ShowAndSettle(*frame));
    }
    ~DownloadControlTest() override { test::DestroyAndWait(*frame); }

    // How many pixels of the control are red, from the left; -1 when anything else is neither red nor green.
    [[nodiscard]] int BarWidth()
    {
        const wxPoint corner = control->GetScreenPosition();
        wxBitmap bitmap(200, 20);
        wxMemoryDC copy(bitmap);
        wxScreenDC screen;
        copy.Blit(0, 0, 200, 20, &screen, corner.x, corner.y);
        copy.SelectObject(wxNullBitmap);
        const wxImage image = bitmap.ConvertToImage();
        int width = 0;
        while (width < 200 && image.GetRed(width, 0) == 255)
            ++width;
        for (int x = 0; x < 200; ++x) {
            for (int y = 0; y < 20; ++y) {
                if (image.GetRed(x, y) != (x < width ? 255 : 0) || image.GetGreen(x, y) != (x < width ? 0 : 255))
                    return -1;
            }
        }
        return width;
    }
    // A transfer of which half arrives, and no more.
    void StartHalf()
    {
        server.Serve("/half", "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(500, 'x'),
                     HttpServer::Then::Stall);
        control->Engine().SetFileURL(server.Address("/half"));
        ASSERT_TRUE(control->Engine().BeginDownload());
        ASSERT_TRUE(PumpUntil([&] { return control->Engine().Percent() == 0.5F; }));
    }

    HttpServer server;
    WxEventPump pump;
    wxEvtHandler waker; // takes what it still has to do along when it goes
    AsyncRead reader {[this] { waker.CallAfter([this] { reader.Deliver(); }); }};
    wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "Strip", wxPoint(100, 100), wxSize(400, 200));
    wxPanel* panel = new wxPanel(frame);
    bkDLControl* control = new bkDLControl(panel, reader, pump);
};

TEST_F(DownloadControlTest, DrawsAsMuchOfTheBarAsHasArrivedAndTakesItAwayAtTheEnd)
{
    EXPECT_TRUE(PumpUntil([&] { return BarWidth() == 0; }));
    StartHalf();
    EXPECT_TRUE(PumpUntil([&] { return BarWidth() == 100; })) << BarWidth();
    control->SetSize(40, 40, 100, 20);
    control->SetSize(40, 40, 200, 20);
    EXPECT_TRUE(PumpUntil([&] { return BarWidth() == 100; })) << BarWidth();
    control->Engine().CancelDownload();
    EXPECT_TRUE(PumpUntil([&] { return BarWidth() == 0; })) << BarWidth();

    control->Engine().SetShowProgress(false);
    StartHalf();
    control->Refresh();
    EXPECT_FALSE(PumpUntil([&] { return BarWidth() != 0; }, std::chrono::milliseconds(200)));
}

TEST_F(DownloadControlTest, PassesTheMouseOnInItsOwnUnits)
{
    std::ostringstream log;
    const auto logged = [&log](const char* what) {
        return [&log, what](int button, int shift, float x, float y) {
            log << what << " " << button << " " << shift << " " << x << " " << y << "; ";
        };
    };
    control->Mouse = {.Click = [&] { log << "Click; "; }, .DblClick = [&] { log << "DblClick; "; },
                      .MouseDown = logged("Down"), .MouseMove = {}, .MouseUp = logged("Up")};
    wxUIActionSimulator mouse;
    mouse.MouseMove(control->ClientToScreen(wxPoint(10, 4)));
    mouse.KeyDown(WXK_SHIFT);
    mouse.MouseClick(wxMOUSE_BTN_RIGHT);
    mouse.KeyUp(WXK_SHIFT);
    EXPECT_TRUE(PumpUntil([&] { return log.str() == "Down 2 1 150 60; Up 2 1 150 60; Click; "; })) << log.str();

    log.str("");
    mouse.MouseDblClick();
    EXPECT_TRUE(PumpUntil([&] {
        return log.str() == "Down 1 0 150 60; Up 1 0 150 60; Click; DblClick; Up 1 0 150 60; ";
    })) << log.str();

    log.str("");
    mouse.MouseDown(wxMOUSE_BTN_MIDDLE);
    mouse.MouseMove(control->ClientToScreen(wxPoint(-8, 4))); // let go outside: no click
    mouse.MouseUp(wxMOUSE_BTN_MIDDLE);
    EXPECT_TRUE(PumpUntil([&] { return log.str() == "Down 4 0 150 60; Up 4 0 -120 60; "; })) << log.str();

    log.str("");
    control->SetEnabled(false);
    mouse.MouseMove(control->ClientToScreen(wxPoint(10, 4)));
    mouse.MouseClick();
    EXPECT_FALSE(PumpUntil([&] { return !log.str().empty(); }, std::chrono::milliseconds(200))) << log.str();
}

TEST_F(DownloadControlTest, StoresOnlyWhatDiffersFromTheDefaultsAndReadsItBack)
{
    std::string changed;
    PropertyBag bag;
    control->ReadProperties(bag);
    control->WriteProperties(bag);
    EXPECT_TRUE(bag.Properties().empty());

    control->PropertyChanged = [&](std::string_view name) { changed.append(name).append(" "); };
    control->SetForeColor(0x80000009);
    control->SetBorderStyle(0);
    control->AssignFont(wxFont(wxFontInfo(11.5).FaceName("Serif").Bold().Italic()));
    control->Engine().SetFailOnRedirect(false);
    EXPECT_EQ(changed, "ForeColor BorderStyle Font FailOnRedirect ");
    control->WriteProperties(bag);
    EXPECT_EQ(bag.Properties().size(), 4U);
    EXPECT_EQ(bag.ReadString("font", ""), "Serif,11.5,bold,italic");

    auto* copy = new bkDLControl(frame, reader, pump);
    copy->ReadProperties(bag);
    EXPECT_EQ(copy->ForeColor(), 0x80000009);
    EXPECT_EQ(copy->BorderStyle(), 0);
    EXPECT_EQ(copy->GetFont(), control->GetFont());
    EXPECT_FALSE(copy->Engine().FailOnRedirect());
    for (const char* text : {"", "Sans", "Sans,", "Sans,nine", "Sans,-1", ",9", "Sans,nan"}) {
        PropertyBag odd;
        odd.WriteString("Font", text, "-");
        copy->ReadProperties(odd);
        EXPECT_EQ(copy->GetFont(), frame->GetFont()) << text;
    }
}

TEST_F(DownloadControlTest, FindsInTheSavedFormNothingButTheLookOfTheFourInstances)
{
    const std::string look = "_extentx _extenty forecolor font ";
    for (const auto& [name, expected] : {std::pair("Vantro_Download", look), {"download(0)", look + "borderstyle "},
                                         {"download(1)", look + "borderstyle "}, {"download(2)", look + "borderstyle "}}) {
        std::string names;
        const PropertyBag bag = SavedProperties("frmMain", name);
        for (const auto& property : bag.Properties())
            names += property.name + " ";
        EXPECT_EQ(names, expected) << name;
    }
}

TEST_F(DownloadControlTest, GoesQuietlyInTheMiddleOfATransferAndWithAButtonHeld)
{
    bool told = false;
    control->Engine().Events.DLCanceled = [&] { told = true; };
    control->Engine().Events.DLComplete = [&](std::int32_t) { told = true; };
    StartHalf();
    wxUIActionSimulator mouse;
    mouse.MouseMove(control->ClientToScreen(wxPoint(10, 4)));
    mouse.MouseDown();
    ASSERT_TRUE(PumpUntil([&] { return control->HasCapture(); }));
    control->Destroy();
    mouse.MouseUp();
    EXPECT_TRUE(PumpUntil([&] { return server.Ended("/half") == 1; }));
    EXPECT_FALSE(told);
}

} // namespace
} // namespace vantro
