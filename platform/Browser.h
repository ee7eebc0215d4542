#pragma once

#include "platform/NativeWebView.h"
#include "platform/PageBrowser.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <wx/event.h>
#include <wx/timer.h>

class wxWebView;
class wxWindow;

namespace vantro {

// The embedded browser control. Pages cannot open windows, start downloads or read local files, and go
// elsewhere only as NavigationPolicy allows; links that leave open in the user's default browser or mail
// program.
class Browser final : public wxEvtHandler, public PageBrowser {
public:
    static constexpr std::chrono::milliseconds kLoadLimit = std::chrono::seconds(30);

    // Makes the control as a child of `parent`. `lost` is called, from the event loop, when the engine's
    // process died; the next Navigate() starts a fresh one.
    Browser(wxWindow* parent, const std::filesystem::path& pageFolder, std::function<void()> lost,
        std::chrono::milliseconds loadLimit = kLoadLimit);
    ~Browser() override;

    [[nodiscard]] wxWindow* Window() const;

    void Navigate(const std::string& address, LoadEnded ended) override;
    void NavigateFrame(const std::string& address, std::string_view frame) override;
    [[nodiscard]] int ReadyState() const override;
    void SetSilent(bool silent) override;

private:
    void LoadCame(const std::string& address, LoadEnd end);
    void Finish(LoadEnd end);

    wxWebView* view_; // owned by the parent window
    std::unique_ptr<NativeWebView> native_;
    NavigationPolicy policy_;
    std::function<void()> lost_;
    std::chrono::milliseconds loadLimit_;
    wxTimer limit_;
    std::string expected_; // empty when no load is under way
    LoadEnded ended_;
};

} // namespace vantro
