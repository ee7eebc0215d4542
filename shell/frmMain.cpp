#include "shell/frmMain.h"

#include "downloader/SavedForm.h"
#include "downloader/bkDLControl.h"
#include "feeds/InformationPages.h"
#include "feeds/ReadMarks.h"
#include "feeds/SiteModules.h"
#include "platform/TextCoding.h"
#include "shell/Icons.h"
#include "shell/StartUp.h"
#include "shell/modMain.h"

#include <string>
#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/statusbr.h>

namespace vantro {

namespace {

constexpr std::size_t kLongestMessage = 300; // characters in the status bar

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

} // namespace

frmMain::frmMain(Runtime& runtime)
    : wxFrame(nullptr, wxID_ANY, {}, wxDefaultPosition, wxDefaultSize, wxDEFAULT_FRAME_STYLE, "frmMain"),
      runtime_(runtime),
      clicks_(runtime.tree,
          {[this](const SiteModule& module, const std::string& key) { ShowPage(module, key); },
              [this](bool markRead, bool markUnread) { ShowPopup(markRead, markUnread); },
              [this](const std::string& text) {
                  messages_.Show({std::string(ProductName), text});
              }}),
      messages_(this, runtime.pump),
      tmrDownload_(this),
      tv_(new NewsTreeView(this, runtime.tree, clicks_)),
      picDownload_(
          new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, "picDownload")),
      download_{MakeDownload(picDownload_, "download(0)"), MakeDownload(picDownload_, "download(1)"),
          MakeDownload(picDownload_, "download(2)")},
      Vantro_Download_(MakeDownload(this, "Vantro_Download")),
      webPlace_(new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, "webPlace"))
{
    Vantro_Download_->Hide();
    webPlace_->SetBackgroundColour(*wxWHITE);
    webPlace_->SetSizer(new wxBoxSizer(wxVERTICAL));
    SetIcons(ProgramIcons());
    CreateStatusBar(1, wxSTB_DEFAULT_STYLE, wxID_ANY, "sBar");
    MakeMenus();
    refresh_ = std::make_unique<RefreshCycle>(Services(),
        RefreshCycle::Controls{Vantro_Download_->Engine(),
            {&download_[0]->Engine(), &download_[1]->Engine(), &download_[2]->Engine()}},
        runtime_.hosts, runtime_.folder.Path(), tmrDownload_, [this](const std::string& text) {
            messages_.Show({std::string(ProductName), text});
        });
    BindEvents();
}

// The parts of this class go before the child windows; nothing may reach them any more.
frmMain::~frmMain()
{
    tmrDownload_.Stop();
}

bkDLControl* frmMain::MakeDownload(wxWindow* parent, std::string_view name)
{
    auto* control = new bkDLControl(parent, runtime_.reader, runtime_.pump);
    control->SetName(wxString::FromUTF8(name.data(), name.size()));
    control->ReadProperties(SavedProperties("frmMain", name));
    control->ShowStartFailure = [this](const std::string& title, const std::string& text) {
        messages_.Show({title, text, true});
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
    const auto on = [this](std::initializer_list<int> ids, std::function<void()> action) {
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
    const auto mark = [this](void (*change)(const FeedServices&, NewsNode&)) {
        return [this, change] {
            if (NewsNode* node = runtime_.tree.SelectedItem())
                change(Services(), *node);
        };
    };
    on({mnuSettings}, [this] { mnuSettings_Click(); });
    on({mnuHelp, mnuHelp1}, page(ShowHelpPage));
    on({mnudonations, mnudonations1}, page(ShowDonationsPage));
    on({mnuAbout, mnuAbout1}, page(ShowAboutPage));
    on({mnuMarkRead}, mark(MarkRead));
    on({mnuMarkUnread}, mark(MarkUnread));
    on({mnuRefresh}, [this] { refresh_->StartFeedDownloads(); });
    Bind(
        wxEVT_TIMER, [this](wxTimerEvent&) { refresh_->tmrDownload_Timer(); }, tmrDownload_.GetId());
    Bind(wxEVT_CLOSE_WINDOW, &frmMain::OnClose, this);
}

void frmMain::Form_Load()
{
    HookMainWindow(*this);
    InitGlobals();
    InitMainWindow();
    tv_->SetFocus();
    Show();
    // The browser takes its time to come up; the window is there meanwhile.
    CallAfter(&frmMain::LoadPages);
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
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        LayOutMainWindow(*this, Parts(), layout_);
    });
    LayOutMainWindow(*this, Parts(), layout_);
    AddSiteRoots(runtime_.tree);
}

void frmMain::LoadPages()
{
    web_ = std::make_unique<Browser>(webPlace_, runtime_.folder.Path(), [this] { display_->BrowserLost(); });
    webPlace_->GetSizer()->Add(web_->Window(), 1, wxEXPAND);
    webPlace_->Layout();
    display_ = std::make_unique<PageDisplay>(*web_, Services(), runtime_.folder.Path());
    ShowAboutPage(*display_);

    LoadStoredItems(Services());
    web_->SetSilent(true);
    runtime_.pump.RunPending();
    if (runtime_.registry.ReadRegValue(RegRoot, RegPath, "Check At Startup") == 1)
        refresh_->StartFeedDownloads();
    RefreshAllSiteCounts(Services());
    refresh_->StartRefreshTimer();
    if (!runtime_.tree.Roots().empty()) {
        NewsNode& first = *runtime_.tree.Roots().front();
        runtime_.tree.Select(&first);
        runtime_.tree.SetExpanded(first, false);
    }
    if (const std::string notice = runtime_.StartNotice(); !notice.empty())
        Say(notice);
}

// Destroying the window inside a pass of the event pump would pull the ground from under what runs there.
void frmMain::OnClose(wxCloseEvent& event)
{
    if (event.CanVeto())
        event.Veto();
    runtime_.pump.RequestStop();
    runtime_.pump.WhenUnwound([window = wxWeakRef<frmMain>(this)] {
        if (window)
            window->Form_Unload();
    });
}

void frmMain::Form_Unload()
{
    if (std::exchange(unloaded_, true))
        return;
    UnhookMainWindow(*this);
    SaveWindowPosition(ThisForm());
    SaveWindowSize(ThisForm());
    if (options_)
        options_->Close(true);
    Destroy();
}

void frmMain::mnuSettings_Click()
{
    if (!options_)
        options_ = new frmOptions(
            this, runtime_.registry, [this] { refresh_->StartRefreshTimer(); },
            [this] { refresh_->StopRefreshTimer(); });
    options_->Show();
    options_->Raise();
}

void frmMain::ShowPopup(bool markRead, bool markUnread)
{
    mnuPopup_->Enable(mnuMarkRead, markRead);
    mnuPopup_->Enable(mnuMarkUnread, markUnread);
    const WxEventPump::Pass pass(runtime_.pump);
    PopupMenu(mnuPopup_.get());
}

void frmMain::ShowPage(const SiteModule& module, const std::string& nodeKey)
{
    if (display_)
        module.ShowItemPage(*display_, nodeKey, [this, &module] { module.UpdateSiteCounts(Services()); });
}

void frmMain::BringToFront()
{
    Iconize(false);
    Show();
    Raise();
}

void frmMain::Say(const std::string& text)
{
    GetStatusBar()->SetStatusText(wxString::FromUTF8(OneLine(text, kLongestMessage)));
}

FeedServices frmMain::Services()
{
    return {runtime_.store, runtime_.registry, runtime_.tree, runtime_.pump,
        [this](const std::string& text) { Say(text); }};
}

Form frmMain::ThisForm()
{
    return {*this, "frmMain", runtime_.registry};
}

MainWindowParts frmMain::Parts()
{
    return {*tv_, *picDownload_, {download_[0], download_[1], download_[2]}, *webPlace_};
}

} // namespace vantro
