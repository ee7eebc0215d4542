#pragma once

#include "platform/EndRequests.h"
#include "platform/Paths.h"
#include "platform/SingleInstance.h"
#include "windows/Runtime.h"

#include <atomic>
#include <memory>
#include <wx/app.h>
#include <wx/weakref.h>

namespace vantro {

class frmMain;

// The program: one instance per store, one main window.
class VantroApp final : public wxApp {
public:
    // Before there is any other thread or window.
    bool Initialize(int& count, wxChar** arguments) override;
    // Makes everything, or, where another program holds the store, tells that one and makes nothing. True in
    // both cases: nothing went wrong.
    bool OnInit() override;
    // Returns at once when OnInit() made nothing.
    int OnRun() override;
    // The windows have gone by now.
    int OnExit() override;
    // Also sees to it that pending events and deletions do not wait until the toolkit has nothing else to do.
    // Any thread.
    void WakeUpIdle() override;

    // Null when this program is not the first of its store, and once the window has gone.
    [[nodiscard]] frmMain* MainWindow() const { return window_; }
    // REQUIRES: OnInit() has made it and OnExit() has not been called.
    [[nodiscard]] Runtime& Parts() { return *runtime_; }

private:
    ProgramFolders folders_; // before anything is mended
    std::unique_ptr<EndRequests> endRequests_;
    std::unique_ptr<SingleInstance> instance_;
    std::unique_ptr<Runtime> runtime_;
    std::atomic<bool> isWoken_ = false;
    wxWeakRef<frmMain> window_; // owned by the window library
};

} // namespace vantro
