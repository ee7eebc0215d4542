#pragma once

#include "web/DocumentEnd.h"
#include "web/NavigationPolicy.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class wxWindow;

namespace vantro {

// A part of a page of ours.
struct PagePart {
    std::string bytes;
    std::string_view mimeType;
};

// A view of the system's browser engine, restricted to what pages of strangers may do. What the engine keeps
// (cookies, stored data, its cache) is in memory and goes with the view. One source file per engine
// implements it.
class NativeWebView {
public:
    enum class Command { Back, Forward, Reload, OpenOutside };

    // Is told what happens in the view, on the interface thread, in the middle of the engine's work: only
    // take notes.
    struct Events {
        std::function<bool(const Navigation&)> allow; // false: it stays where it is
        // The part at an address of our own scheme; nothing when there is none.
        std::function<std::optional<PagePart>(const std::string& address)> serve;
        std::function<void(const std::string& address)>
            finished; // the document of that address and its frames
        std::function<void(const std::string& address)> failed;
        std::function<void(const DocumentEnd&)> document; // of the newest navigation that was allowed
        // A page wants the place of the whole page with its frames, which was not granted.
        std::function<void(const std::string& address)> wantsAll;
        std::function<void()> pressed; // the user pressed a mouse button or a key on a page
        std::function<void(const std::string& link)> clicked; // with the first button, wherever it leads
        // The user asks for it; `link` is what the context menu was opened on, often nothing.
        std::function<void(Command, const std::string& link)> command;
        std::function<void()> processLost; // the process that draws the pages died
        std::function<void()> processHangs; // it has not answered for some seconds
    };

    NativeWebView(wxWindow* parent, Events events);
    ~NativeWebView();
    NativeWebView(const NativeWebView&) = delete;
    NativeWebView& operator=(const NativeWebView&) = delete;

    // The view as a child of the parent, which owns it.
    [[nodiscard]] wxWindow* Window() const;
    // An address as the engine will write it.
    [[nodiscard]] static std::string Normalized(const std::string& address);

    void Load(const std::string& address);
    // Gives up what has not come yet; what has come is shown.
    void Stop();
    // Whether the process that draws the pages answers; a page's endless script can keep it from that.
    [[nodiscard]] bool ProcessResponds() const;
    // The next Load() starts a new one. Not reported as lost.
    void EndProcess();
    // Points a frame of the page shown at `address`, in place of what is there when `replace`. Nothing is
    // left in flight that could outlive the view.
    void LoadFrame(std::string_view frame, const std::string& address, bool replace);
    // Goes through what was followed in the page loaded last, and never to the page before it.
    void Back();
    void Forward();
    // Whether a page, be it an empty one, has come to where the navigation allowed last was to lead.
    [[nodiscard]] bool IsReplaced() const;
    // Whether servers may leave cookies and get them back. They are forgotten with the view.
    void SetCookies(bool taken);
    // Whether script dialogs, permission questions and password dialogs of pages stay hidden (answered by
    // "no").
    void SetSilent(bool silent);

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace vantro
