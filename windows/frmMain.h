#pragma once

#include "feeds/NewsTree.h"
#include "feeds/PageDisplay.h"
#include "feeds/Site.h"
#include "feeds/SiteOperations.h"
#include "shell/RefreshCycle.h"
#include "shell/StatusLine.h"
#include "shell/TreeClicks.h"
#include "shell/WindowPlacement.h"
#include "toolkit/Browser.h"
#include "windows/MessageBoxes.h"
#include "windows/NewsTreeView.h"
#include "windows/Runtime.h"
#include "windows/frmOptions.h"
#include "windows/modFrmCtrl.h"

#include <chrono>
#include <memory>
#include <string>
#include <wx/frame.h>
#include <wx/timer.h>
#include <wx/weakref.h>

class wxMenu;
class wxPanel;

namespace vantro {

class bkDLControl;

// The main window: the news tree, the browser, the download strips, the status bar and the menus. Interface
// thread only. Closing it stores its place, closes the options and destroys it from the event loop; a
// download or page under way is abandoned.
class frmMain final : public wxFrame {
public:
    // What the menu entries send as wxEVT_MENU.
    enum MenuId : int {
        mnuSettings = wxID_HIGHEST + 1,
        mnuHelp,
        mnudonations,
        mnuAbout1,
        mnuMarkRead,
        mnuMarkUnread,
        mnuRefresh,
        mnuHelp1,
        mnudonations1,
        mnuAbout,
    };

    // `runtime` outlives the window. Form_Load() is to follow.
    explicit frmMain(Runtime& runtime);
    ~frmMain() override;

    // The start-up: brings the window onto the screen and returns; what needs the browser follows from the
    // event loop.
    void Form_Load();
    // To the front, also when it was minimised. False when it has been closed.
    bool BringToFront();

private:
    class Timer final : public wxTimer, public MinuteTimer {
    public:
        using wxTimer::wxTimer;
        void Enable(std::chrono::milliseconds interval) override
        {
            Start(static_cast<int>(interval.count()));
        }
        void Disable() override { Stop(); }
    };

    // Start-up and shutdown, in the order in which they run.
    void InitGlobals();
    void InitMainWindow();
    void FollowTextScale();
    void LoadPages();
    // Without an engine the window goes on without pages, and says so.
    void LoadBrowser();
    void ShowStatus(const std::string& text);
    void Form_Unload();

    [[nodiscard]] bkDLControl* MakeDownload(const Site& site);
    void MakeMenus();
    void BindEvents();
    void OnTreeKey(wxKeyEvent& event);
    void SwitchFocus();
    [[nodiscard]] Form ThisForm();
    [[nodiscard]] MainWindowParts Parts();

    void mnuSettings_Click();
    void MarkPopupItem(void (*mark)(const FeedServices&, NewsNode&));
    void ShowPopup(bool markRead, bool markUnread);
    void ShowPage(const Site& site, const std::string& nodeKey);

    [[nodiscard]] FeedServices Services();

    Runtime& runtime_;
    TreeClicks clicks_;
    MessageBoxes messages_;
    Timer tmrDownload_;
    wxTimer rest_; // of the status line
    StatusLine status_;
    std::unique_ptr<wxMenu> mnuPopup_;

    // Children, owned by the window library.
    NewsTreeView* tv_;
    wxPanel* picDownload_;
    wxPanel* webPlace_; // holds the browser once that exists
    wxWeakRef<frmOptions> options_;
    StartLayout layout_;

    std::unique_ptr<RefreshCycle> refresh_;
    std::unique_ptr<Browser> web_; // from LoadPages() on
    std::unique_ptr<PageDisplay> display_; // goes before the browser it uses
    bool unloaded_ = false;
};

} // namespace vantro
