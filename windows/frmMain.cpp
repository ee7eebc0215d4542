#include "windows/frmMain.h"

#include "base/TextCoding.h"
#include "base/Words.h"
#include "base/modMain.h"
#include "downloader/SavedForm.h"
#include "feeds/InformationPages.h"
#include "feeds/ReadMarks.h"
#include "feeds/SiteOperations.h"
#include "settings/Options.h"
#include "settings/modRegistry.h"
#include "shell/StartUp.h"
#include "toolkit/Accessibility.h"
#include "toolkit/Keys.h"
#include "toolkit/ModalInput.h"
#include "toolkit/Screen.h"
#include "toolkit/WebEngine.h"
#include "windows/Icons.h"
#include "windows/bkDLControl.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <wx/app.h>
#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/statusbr.h>

namespace vantro {

namespace {

constexpr std::size_t kLongestMessage = 300; // characters in the status bar
constexpr int kFirstIcon = 32, kLargestIcon = 256; // pixels

// Only what is in it takes the focus.
class Holder final : public wxPanel {
public:
    Holder(wxWindow* parent, const char* name)
        : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, name)
    {
        m_container.DisableSelfFocus();
    }
};

} // namespace

frmMain::frmMain(Runtime& runtime)
    : wxFrame(nullptr, wxID_ANY, {}, wxDefaultPosition, wxDefaultSize, wxDEFAULT_FRAME_STYLE, "frmMain"),
      runtime_(runtime),
      clicks_(runtime.tree,
          {[this](const Site& site, const std::string& key) { ShowPage(site, key); },
              [this](bool markRead, bool markUnread) { ShowPopup(markRead, markUnread); },
              [this](const std::string& text) {
                  messages_.Show({"click", std::string(ProductName), text});
              }}),
      messages_(this),
      tmrDownload_(this),
      rest_(this),
      status_([this](const std::string& text) { ShowStatus(text); }),
      tv_(new NewsTreeView(
          this, runtime.tree, clicks_, [this](const std::string& text) { status_.Say("search", text); })),
      picDownload_(new Holder(this, "picDownload")),
      webPlace_(new Holder(this, "webPlace"))
{
    webPlace_->SetBackgroundColour(*wxWHITE);
    webPlace_->SetSizer(new wxBoxSizer(wxVERTICAL));
    SetIcons(ProgramIcons(kFirstIcon)); // the larger ones would hold the window up
    CreateStatusBar(1, wxSTB_DEFAULT_STYLE, wxID_ANY, "sBar");
    TellAsStatusBar(*GetStatusBar(), "");
    SetStatusBarPane(-1); // menus would put their help, which they do not have, over what stands there
    MakeMenus();
    refresh_ = std::make_unique<RefreshCycle>(
        Services(), [this](const Site& site) -> DownloadEngine& { return MakeDownload(site)->Engine(); },
        runtime_.hosts, runtime_.folder.Path(), tmrDownload_,
        RefreshCycle::Outlets{.showMessage
            =
                [this](int strip, const std::string& text) {
                    messages_.Show({"download " + std::to_string(strip), std::string(ProductName), text});
                },
            .showCountdown = [this](const std::string& text) { status_.Say("countdown", text); },
            .showCheck = [this](const std::string& text) { status_.Mention("check", text); },
            .newItems =
                [this] {
                    if (!IsActive())
                        RequestUserAttention(
                            wxUSER_ATTENTION_ERROR); // the kind that lasts until it is active
                }});
    BindEvents();
}

// The parts of this class go before the child windows; nothing may reach them any more.
frmMain::~frmMain()
{
    tmrDownload_.Stop();
}

bkDLControl* frmMain::MakeDownload(const Site& site)
{
    const std::string name = DownloadName(site);
    wxWindow* parent = site.strip ? picDownload_ : static_cast<wxWindow*>(this);
    auto* control = new bkDLControl(parent, runtime_.reader, runtime_.pump);
    control->Show(site.strip.has_value());
    control->SetName(wxString::FromUTF8(name));
    SetAccessibleName(*control, Words("Download of %1", {site.displayName}));
    control->ReadProperties(SavedProperties("frmMain", name));
    control->ShowStartFailure
        = [this, subject = "start of " + name](const std::string& title, const std::string& text) {
              messages_.Show({subject, title, text, true});
          };
    return control;
}

void frmMain::MakeMenus()
{
    auto* menu = new wxMenu;
    menu->Append(mnuSettings, "&Settings");
    menu->AppendSeparator();
    menu->Append(mnuHelp, "&Help");
    menu->AppendSeparator();
    menu->Append(mnudonations, "&Donations");
    menu->Append(mnuAbout1, "&About");
    auto* bar = new wxMenuBar;
    bar->Append(menu, "&Menu");
    SetMenuBar(bar);

    mnuPopup_ = std::make_unique<wxMenu>();
    mnuPopup_->Append(mnuMarkRead, "Mark as Read");
    mnuPopup_->Append(mnuMarkUnread, "Mark as Unread");
    mnuPopup_->AppendSeparator();
    mnuPopup_->Append(mnuRefresh, "Update News Lists");
    mnuPopup_->AppendSeparator();
    mnuPopup_->Append(mnuHelp1, "Help");
    mnuPopup_->AppendSeparator();
    mnuPopup_->Append(mnudonations1, "Donations");
    mnuPopup_->Append(mnuAbout, "About");
}

void frmMain::BindEvents()
{
    const auto on = [this](std::initializer_list<int> ids, const std::function<void()>& action) {
        for (const int id : ids)
            Bind(
                wxEVT_MENU, [action](wxCommandEvent&) { action(); }, id);
    };
    const auto page = [this](void (*show)(PageDisplay&)) {
        return [this, show] {
            if (display_)
                show(*display_);
        };
    };
    on({mnuSettings}, [this] { mnuSettings_Click(); });
    on({mnuHelp, mnuHelp1}, page(ShowHelpPage));
    on({mnudonations, mnudonations1}, page(ShowDonationsPage));
    on({mnuAbout, mnuAbout1}, page(ShowAboutPage));
    on({mnuMarkRead}, [this] { MarkPopupItem(MarkRead); });
    on({mnuMarkUnread}, [this] { MarkPopupItem(MarkUnread); });
    on({mnuRefresh}, [this] { refresh_->StartFeedDownloads(); });
    Bind(
        wxEVT_TIMER, [this](wxTimerEvent&) { refresh_->tmrDownload_Timer(); }, tmrDownload_.GetId());
    Bind(
        wxEVT_TIMER, [this](wxTimerEvent&) { status_.ComeToRest(); }, rest_.GetId());
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) { Form_Unload(); });
    HearCloseRequests(*this);
    tv_->Bind(wxEVT_KEY_DOWN, &frmMain::OnTreeKey, this);
    HearKeys(*this,
        {{"F5", [this] { refresh_->StartFeedDownloads(); }},
            {"<Control>r", [this] { refresh_->StartFeedDownloads(); }}, {"<Control>q", [this] { Close(); }},
            {"F6", [this] { SwitchFocus(); }}, {"<Shift>F6", [this] { SwitchFocus(); }}});
}

// Nothing else takes the focus; the window library's own Tab came back to the tree.
void frmMain::OnTreeKey(wxKeyEvent& event)
{
    if (event.GetKeyCode() == WXK_TAB && !event.HasModifiers())
        SwitchFocus();
    else
        event.Skip();
}

void frmMain::SwitchFocus()
{
    if (web_ && tv_->HasFocus())
        web_->Window()->SetFocus();
    else
        tv_->SetFocus();
}

void frmMain::Form_Load()
{
    HookMainWindow(*this);
    InitGlobals();
    InitMainWindow();
    tv_->SetFocus();
    Show();
    // The engine takes its time to come up; the window is there meanwhile. The browser is not made under an
    // open menu, which then would not let go of the mouse.
    OpenEngine([window = wxWeakRef<frmMain>(this)] {
        CallWhenInputIsFree([window] {
            if (window)
                window->LoadPages();
        });
    });
}

void frmMain::InitGlobals()
{
    runtime_.registry.CreateRegKey(RegRoot, RegPath);
    SetTitle(wxString::FromUTF8(ProductName.data(), ProductName.size()));
}

void frmMain::InitMainWindow()
{
    RestoreWindowSize(ThisForm(), kDefaultWindowWidth, kDefaultWindowHeight);
    RestoreWindowPosition(ThisForm());
    layout_ = LayOutMainWindowAtStart(*this, Parts());
    WatchTextScale(*this, [this] { FollowTextScale(); });
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        LayOutMainWindow(*this, Parts(), layout_);
    });
    LayOutMainWindow(*this, Parts(), layout_);
    AddSiteRoots(runtime_.tree);
}

void frmMain::FollowTextScale()
{
    wxStatusBar* sBar = GetStatusBar();
    constexpr double kLineHeight = 1.1; // as the window library reckons it, once
    sBar->SetSize(wxDefaultCoord, wxDefaultCoord, wxDefaultCoord,
        static_cast<int>(kLineHeight * sBar->GetCharHeight()) + 2 * sBar->GetBorderY());
    SendSizeEvent();
    layout_ = LayOutMainWindowAtStart(*this, Parts());
    LayOutMainWindow(*this, Parts(), layout_);
    tv_->FollowTextScale();
    if (web_)
        web_->FollowTextScale();
}

void frmMain::LoadPages()
{
    if (unloaded_)
        return;
    status_.AddNotice(runtime_.StartNotice());
    LoadBrowser();
    LoadStoredItems(Services());
    if (std::ranges::all_of(runtime_.tree.Roots(), [](const auto& root) { return root->Children().empty(); }))
        status_.Mention("check", Words("Press F5 to fetch the news."));
    if (web_)
        web_->SetSilent(true);
    Update(); // the window paints before the network starts
    if (IsOn(runtime_.registry, kCheckAtStartup))
        refresh_->StartFeedDownloads();
    RefreshAllSiteCounts(Services());
    refresh_->StartRefreshTimer();
    if (!runtime_.tree.Roots().empty()) {
        NewsNode& first = *runtime_.tree.Roots().front();
        runtime_.tree.Select(&first);
        runtime_.tree.SetExpanded(first, false);
    }
    runtime_.store.Watch({[this](const std::string& sentence) { status_.Say("store", sentence); },
        [this] {
            LoadStoredItems(Services());
            RefreshAllSiteCounts(Services());
        }});
    SetIcons(ProgramIcons(kLargestIcon));
}

void frmMain::LoadBrowser()
{
    try {
        web_ = std::make_unique<Browser>(
            webPlace_, [this] { display_->BrowserLost(); },
            BrowserSettings{.say = [this](const std::string& text) { status_.Say("browser", text); },
                .point = [this](const std::string& link) { status_.Say("link", link); }});
    } catch (const std::runtime_error& error) {
        status_.AddNotice(error.what());
        return;
    }
    if (!EngineHasSandbox())
        status_.AddNotice(
            Words("Pages are shown without the browser engine's sandbox, which does not work here."));
    webPlace_->GetSizer()->Add(web_->Window(), 1, wxEXPAND);
    webPlace_->Layout();
    display_ = std::make_unique<PageDisplay>(*web_, Services(), runtime_.folder.Path());
    ShowAboutPage(*display_);
}

void frmMain::Form_Unload()
{
    if (std::exchange(unloaded_, true))
        return;
    UnhookMainWindow(*this);
    if (const auto failure = runtime_.registry.StoreTogether([this] {
            SaveWindowPosition(ThisForm());
            SaveWindowSize(ThisForm());
        }))
        status_.Say("place", Words("The place of the window could not be stored: %1", {*failure}));
    if (options_)
        options_->Close(true);
    tmrDownload_.Stop();
    Destroy();
    wxWakeUpIdle(); // which destroys it: a window out of sight gets no events that would
}

void frmMain::mnuSettings_Click()
{
    if (!options_)
        options_ = new frmOptions(
            this, runtime_.registry, [this] { refresh_->StartRefreshTimer(); },
            [this] { refresh_->StopRefreshTimer(); }, Services().say);
    options_->Show();
    options_->Raise();
}

void frmMain::ShowPopup(bool markRead, bool markUnread)
{
    mnuPopup_->Enable(mnuMarkRead, markRead);
    mnuPopup_->Enable(mnuMarkUnread, markUnread);
    tv_->ShowPopup(*mnuPopup_);
}

void frmMain::MarkPopupItem(void (*mark)(const FeedServices&, NewsNode&))
{
    if (NewsNode* item = clicks_.PopupItem())
        mark(Services(), *item);
}

void frmMain::ShowPage(const Site& site, const std::string& nodeKey)
{
    if (display_)
        ShowItemPage(site, *display_, nodeKey, [this, &site] { UpdateSiteCounts(site, Services()); });
}

bool frmMain::BringToFront()
{
    if (unloaded_)
        return false;
    Iconize(false);
    Show();
    Raise();
    return true;
}

void frmMain::ShowStatus(const std::string& text)
{
    const std::string line = OneLine(text, kLongestMessage);
    GetStatusBar()->SetStatusText(wxString::FromUTF8(line));
    TellAsStatusBar(*GetStatusBar(), line);
    rest_.StartOnce(static_cast<int>(std::chrono::milliseconds(StatusLine::kSentenceStays).count()));
}

FeedServices frmMain::Services()
{
    return {runtime_.registry, runtime_.tree, [this] { Update(); },
        [this](std::string_view subject, const std::string& text) { status_.Say(subject, text); }};
}

Form frmMain::ThisForm()
{
    return {*this, "frmMain", runtime_.registry};
}

MainWindowParts frmMain::Parts()
{
    return {*tv_, *picDownload_, *webPlace_};
}

} // namespace vantro
