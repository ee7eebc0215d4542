#pragma once

#include "platform/NativeWebView.h"
#include "platform/PageBrowser.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <wx/event.h>
#include <wx/timer.h>

class wxWebView;
class wxWindow;

namespace vantro {

// Opens an address in the user's default browser, a mail address in the mail program.
void OpenInDefaultProgram(const std::string& address);

struct BrowserSettings {
    std::chrono::milliseconds loadLimit = std::chrono::seconds(30);
    std::function<void(const std::string& address)> openOutside = OpenInDefaultProgram;
};

// The embedded browser control. Pages cannot open windows, start downloads or read local files, and go
// elsewhere only as NavigationPolicy allows.
class Browser final : public wxEvtHandler, public PageBrowser {
public:
    // Makes the control as a child of `parent`. `lost` is called, from the event loop, when the engine's
    // process died; the next Navigate() starts a fresh one. The first folder a Browser is made for is the
    // only one that the engine's sandbox lets in.
    Browser(wxWindow* parent, const std::filesystem::path& pageFolder, std::function<void()> lost,
        BrowserSettings settings = {});
    ~Browser() override;

    [[nodiscard]] wxWindow* Window() const;

    void Navigate(const std::string& address, LoadEnded ended) override;
    void NavigateFrame(const std::string& address, std::string_view frame) override;
    [[nodiscard]] int ReadyState() const override;
    void SetSilent(bool silent) override;

private:
    void Load();
    void LoadAfresh();
    bool Allow(const Navigation& navigation);
    void LoadCame(const std::string& address, LoadEnd end);
    void Finish(LoadEnd end);

    wxWebView* view_; // owned by the parent window
    std::unique_ptr<NativeWebView> native_;
    NavigationPolicy policy_;
    std::function<void()> lost_;
    BrowserSettings settings_;
    wxTimer limit_;
    std::string expected_; // empty when no load is under way
    std::string folder_; // of the page that is expected
    std::uint64_t loads_ = 0;
    LoadEnded ended_;
};

} // namespace vantro
