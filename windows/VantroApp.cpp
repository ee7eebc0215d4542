#include "windows/VantroApp.h"

#include "platform/IdleCall.h"
#include "platform/Language.h"
#include "platform/ProcessLimits.h"
#include "toolkit/Fonts.h"
#include "toolkit/WebEngine.h"
#include "windows/frmMain.h"

#include <wx/log.h>

namespace vantro {

// The environment is changed here only, where there is no other thread yet.
bool VantroApp::Initialize(int& count, wxChar** arguments)
{
    MendFolderVariables();
    UseLanguageOfUser();
    RaiseFileLimit();
    EngineEnvironment();
    const bool initialized = wxApp::Initialize(count, arguments);
    if (initialized)
        BeginToListFonts();
    return initialized;
}

// The program has no command line: the base class, which would read one, is not called.
bool VantroApp::OnInit()
{
    SetAppName("vantro");
    SetAppDisplayName("Vantro");
    delete wxLog::SetActiveTarget(new wxLogStderr); // the default one opens boxes
    // First of all, as it is to be made before there are threads.
    endRequests_ = std::make_unique<EndRequests>([this] {
        if (window_)
            window_->Close(true);
    });
    instance_ = std::make_unique<SingleInstance>(
        folders_.data, [this] { return window_ && window_->BringToFront(); });
    if (!instance_->IsFirst())
        return true; // nothing to run, and nothing went wrong
    // The window paints between the ends of two downloads.
    runtime_
        = std::make_unique<Runtime>(folders_, [this] { CallSoon([this] { runtime_->reader.Deliver(); }); });
    window_ = new frmMain(*runtime_);
    window_->Form_Load();
    CallWhenIdle([this] { endRequests_->WatchSession(); });
    return true;
}

int VantroApp::OnRun()
{
    return instance_->IsFirst() ? wxApp::OnRun() : 0;
}

void VantroApp::WakeUpIdle()
{
    wxApp::WakeUpIdle();
    if (isWoken_.exchange(true))
        return;
    CallSoon([this] {
        isWoken_ = false;
        ProcessPendingEvents();
    });
}

int VantroApp::OnExit()
{
    runtime_.reset();
    instance_.reset();
    (void)endRequests_.release(); // for good: a signal that comes now finds the program ending already
    return wxApp::OnExit();
}

} // namespace vantro
