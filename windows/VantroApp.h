#pragma once

#include "platform/EndRequests.h"
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
    bool Initialize(int& count, wxChar** arguments) override;
    bool OnInit() override;
    int OnRun() override;
    int OnExit() override;
    // Also sees to it that pending events and deletions do not wait until the toolkit has nothing else to do.
    // Any thread.
    void WakeUpIdle() override;

    [[nodiscard]] frmMain* MainWindow() const { return window_; }
    [[nodiscard]] Runtime& Parts() { return *runtime_; }

private:
    std::unique_ptr<EndRequests> endRequests_;
    std::unique_ptr<SingleInstance> instance_;
    std::unique_ptr<Runtime> runtime_;
    std::atomic<bool> isWoken_ = false;
    wxWeakRef<frmMain> window_; // owned by the window library
};

} // namespace vantro
