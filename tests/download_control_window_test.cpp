#include "downloader/PropertyBag.h"
#include "downloader/SavedForm.h"
#include "downloader/bkDLControl.h"
#include "platform/WxEventPump.h"
#include "tests/support/HttpServer.h"
#include "tests/window/WindowTest.h"

#include <gdk/gdk.h>
#include <wx/bitmap.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/panel.h>
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
        GdkPixbuf* pixels
            = gdk_pixbuf_get_from_window(gdk_get_default_root_window(), corner.x, corner.y, 200, 20);
        const wxImage image = wxBitmap(pixels).ConvertToImage(); // takes the pixels over
        int width = 0;
        while (width < 200 && image.GetRed(width, 0) == 255)
            ++width;
        for (int pixel = 0; pixel < 200 * 20; ++pixel) {
            const unsigned char* colour = image.GetData() + 3 * pixel;
            if (colour[pixel % 200 < width ? 0 : 1] != 255 || colour[pixel % 200 < width ? 1 : 0] != 0)
                return -1;
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
    AsyncRead reader{[this] { waker.CallAfter([this] { reader.Deliver(); }); }};
    wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "Strip", wxPoint(100, 100), wxSize(400, 200));
    bkDLControl* control = new bkDLControl(new wxPanel(frame), reader, pump);
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
        return [&log, what](auto... values) {
            log << what;
            ((log << " " << values), ...);
            log << "; ";
        };
    };
    control->Mouse = {logged("Click"), logged("DblClick"), logged("Down"), {}, logged("Up")};
    const auto logs = [&log](const char* expected) {
        EXPECT_TRUE(PumpUntil([&] { return log.str() == expected; })) << log.str();
        log.str("");
    };
    wxUIActionSimulator mouse;
    mouse.MouseMove(control->ClientToScreen(wxPoint(10, 4)));
    mouse.KeyDown(WXK_SHIFT);
    mouse.MouseClick(wxMOUSE_BTN_RIGHT);
    mouse.KeyUp(WXK_SHIFT);
    logs("Down 2 1 150 60; Up 2 1 150 60; Click; ");
    mouse.MouseDblClick();
    logs("Down 1 0 150 60; Up 1 0 150 60; Click; DblClick; Up 1 0 150 60; ");
    mouse.MouseDown(wxMOUSE_BTN_MIDDLE);
    mouse.MouseMove(control->ClientToScreen(wxPoint(-8, 4))); // let go outside: no click
    mouse.MouseUp(wxMOUSE_BTN_MIDDLE);
    logs("Down 4 0 150 60; Up 4 0 -120 60; ");
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
    for (const auto& [name, expected] :
        {std::pair("Vantro_Download", look), {"download(0)", look + "borderstyle "},
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
