#pragma once

#include "toolkit/DefaultProgram.h"
#include "toolkit/NativeWebView.h"
#include "web/DisplayAddress.h"
#include "web/DocumentEnd.h"
#include "web/NavigationPolicy.h"
#include "web/OutsideGate.h"
#include "web/PageBrowser.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <wx/event.h>
#include <wx/timer.h>

class wxWindow;

namespace vantro {

struct BrowserSettings {
    // Is told, from the event loop, what is to be said of the page shown; "" when what was said last no
    // longer holds.
    std::function<void(const std::string& sentence)> say = [](const std::string&) {};
    std::chrono::milliseconds loadLimit = kLoadLimit; // tests shorten it
    std::function<bool(const std::string& address)> openOutside = OpenInDefaultProgram;
    // Is told the address of the link under the mouse or with the focus; "" when none that leads elsewhere
    // is.
    std::function<void(const std::string& link)> point = [](const std::string&) {};
};

// The embedded browser control. Pages cannot open windows, start downloads or read local files, and go
// elsewhere only as NavigationPolicy allows. What becomes of a link that the user follows is seen in the
// frame or said.
class Browser final : public wxEvtHandler, public PageBrowser {
public:
    // Makes the control as a child of `parent`. `lost` is called, from the event loop, when a process of
    // the engine died that the page needs; the next page starts a fresh one.
    Browser(wxWindow* parent, std::function<void()> lost, BrowserSettings settings = {});
    ~Browser() override;

    // For its place in `parent`, which owns it.
    [[nodiscard]] wxWindow* Window() const;

    void ShowBlank(LoadEnded ended) override;
    void ShowPage(const LocalPage& page, LoadEnded ended) override;
    void NavigateFrame(const std::string& address, std::string_view frame) override;
    [[nodiscard]] int ReadyState() const override;
    void SetSilent(bool silent) override;
    // Fits the page shown to the size of text, which the engine follows by itself.
    void FollowTextScale();

private:
    // A page under way or shown.
    struct Page {
        std::string address;
        DisplayAddress addresses;
        std::vector<std::string> frames; // the addresses that the page itself gives them
        std::vector<std::pair<std::string, std::string>> texts; // name of a frame, address of its text
    };

    void Begin(Page page, std::map<std::string, PagePart> parts, LoadEnded ended);
    void Load();
    void LoadAfresh();
    void LookForStopped();
    void Lost();
    void SendTexts();
    void Finish(LoadEnd end);

    bool Allow(const Navigation& navigation);
    [[nodiscard]] std::optional<PagePart> Part(const std::string& address) const;
    void DocumentCame(const DocumentEnd& end);
    void Tell(DocumentEnd end);
    void Do(NativeWebView::Command command, const std::string& link);
    void Clicked(const std::string& link);
    void OpenOutside(const std::string& address);
    void Say(const std::string& sentence);

    std::function<void()> lost_;
    BrowserSettings settings_;
    std::unique_ptr<NativeWebView> native_;
    NavigationPolicy policy_;
    OutsideGate gate_;
    wxTimer limit_;
    wxTimer answerLimit_;
    wxTimer stopped_;
    Page page_;
    std::map<std::string, PagePart> parts_; // by address; kept for going back to the page
    bool loading_ = false;
    std::vector<std::string> awaited_; // texts of frames
    LoadEnded ended_;
    std::string wanted_; // the web address that a frame was sent to last
    std::string followed_; // the one that is there; empty while it is a page of ours
};

} // namespace vantro
