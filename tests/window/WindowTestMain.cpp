#include "base/Owned.h"
#include "tests/window/WindowTest.h"
#include "toolkit/WebEngine.h"

#include <cstdlib>
#include <gtk/gtk.h>
#include <iostream>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/init.h>
#include <wx/weakref.h>

namespace vantro::test {

namespace {

class TestApp final : public wxApp {
public:
    // The command line is GoogleTest's.
    bool OnInit() override { return true; }
    int OnRun() override
    {
        wxGUIEventLoop loop;
        const wxEventLoopActivator active(&loop);
        return RUN_ALL_TESTS();
    }
};

void Tell(AtkObject& object, std::string& told)
{
    if (const char* name = atk_object_get_name(&object); name != nullptr && *name != '\0') {
        told.append(atk_role_get_name(atk_object_get_role(&object))).append(" ").append(name);
        double value = 0;
        if (ATK_IS_VALUE(&object)) {
            atk_value_get_value_and_text(ATK_VALUE(&object), &value, nullptr);
            told += " " + std::to_string(value).substr(0, 4);
        }
        const Owned<AtkRelationSet, g_object_unref> relations(atk_object_ref_relation_set(&object));
        if (atk_relation_set_contains(relations.get(), ATK_RELATION_LABELLED_BY) != FALSE)
            told += " with a label";
        told += "\n";
    }
    for (int i = 0; i < atk_object_get_n_accessible_children(&object); ++i) {
        const Owned<AtkObject, g_object_unref> child(atk_object_ref_accessible_child(&object, i));
        Tell(*child, told);
    }
}

} // namespace

bool PumpUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        loop->DispatchTimeout(5);
        loop->ProcessIdle();
    }
    return true;
}

void Rest(std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    (void)PumpUntil([end] { return std::chrono::steady_clock::now() > end; });
}

void Click(const wxWindow& window, wxPoint place, int button, int key)
{
    wxUIActionSimulator mouse;
    mouse.MouseMove(window.ClientToScreen(place));
    Rest(std::chrono::milliseconds(150));
    if (key != 0)
        mouse.KeyDown(key);
    mouse.MouseClick(button);
    if (key != 0)
        mouse.KeyUp(key);
    Rest(std::chrono::milliseconds(150));
}

std::string ColourAt(const wxWindow& window, wxPoint place)
{
    const wxPoint at = window.ClientToScreen(place);
    const Owned<GdkPixbuf, g_object_unref> pixel(
        gdk_pixbuf_get_from_window(gdk_get_default_root_window(), at.x, at.y, 1, 1));
    return {reinterpret_cast<const char*>(gdk_pixbuf_read_pixels(pixel.get())), 3};
}

std::string Told(const wxWindow& window)
{
    std::string told;
    Tell(*gtk_widget_get_accessible(window.GetHandle()), told);
    return told;
}

bool ShowAndSettle(wxTopLevelWindow& window)
{
    window.Show();
    // Quiet means that no size changed for a while: wx and the window manager settle in several steps.
    using Clock = std::chrono::steady_clock;
    auto since = Clock::now();
    wxRect last;
    return PumpUntil([&] {
        const wxRect now(window.GetPosition(), window.GetSize());
        if (now != last)
            since = Clock::now();
        last = now;
        return window.IsShown() && Clock::now() - since > std::chrono::milliseconds(150);
    });
}

void DestroyAndWait(wxTopLevelWindow& window)
{
    const wxWeakRef<wxTopLevelWindow> gone(&window);
    window.Destroy();
    EXPECT_TRUE(PumpUntil([&] { return !gone; }));
}

} // namespace vantro::test

int main(int argc, char** argv)
{
    // A failed assertion of the toolkit ends the run; by default it would ask in a box nobody sees.
    wxSetAssertHandler(
        [](const wxString& file, int line, const wxString&, const wxString& condition, const wxString&) {
            std::cerr << file << ":" << line << ": " << condition << std::endl;
            std::abort();
        });
    vantro::EngineEnvironment();
    ::testing::InitGoogleTest(&argc, argv);
    wxApp::SetInstance(new vantro::test::TestApp);
    return wxEntry(argc, argv);
}
