#pragma once

#include "web/DocumentEnd.h"
#include "web/NavigationPolicy.h"

#include <functional>
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
// (cookies, stored data, its cache) is in memory and goes with the view. The engine is a module
// of its own, opened when the window is there: its libraries are more than all others together.
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
        std::function<void(const std::string& link)> pointed; // by the mouse or the focus; "" by none
        std::function<void(const std::string& link)> clicked; // with the first button, wherever it leads
        // The user asks for it; `link` is what the context menu was opened on, often nothing.
        std::function<void(Command, const std::string& link)> command;
        std::function<void()> processLost; // the process that draws the pages died
        // The process that fetches what pages need died; what was under way will not come.
        std::function<void()> networkLost;
        std::function<void()> processHangs; // it has not answered for some seconds
    };

    virtual ~NativeWebView() = default;

    // The view as a child of the parent, which owns it.
    [[nodiscard]] virtual wxWindow* Window() const = 0;
    // An address as the engine will write it.
    [[nodiscard]] virtual std::string Normalized(const std::string& address) const = 0;

    virtual void Load(const std::string& address) = 0;
    // Gives up what has not come yet; what has come is shown.
    virtual void Stop() = 0;
    // Whether the process that draws the pages answers; a page's endless script can keep it from that.
    [[nodiscard]] virtual bool ProcessResponds() const = 0;
    // Ends the process that fetches when it has been stopped, which then is reported as lost.
    virtual void EndStoppedProcess() = 0;
    // The next Load() starts a new one. Not reported as lost.
    virtual void EndProcess() = 0;
    // Points a frame of the page shown at `address`, in place of what is there when `replace`. Nothing is
    // left in flight that could outlive the view.
    virtual void LoadFrame(std::string_view frame, const std::string& address, bool replace) = 0;
    // Gives the upper frame of the page shown, which is one of ours, this height in pixels.
    virtual void SetHeadHeight(int height) = 0;
    // Goes through what was followed in the page loaded last, and never to the page before it.
    virtual void Back() = 0;
    virtual void Forward() = 0;
    // Whether a page, be it an empty one, has come to where the navigation allowed last was to lead.
    [[nodiscard]] virtual bool IsReplaced() const = 0;
    // Whether servers may leave cookies and get them back. They are forgotten with the view.
    virtual void SetCookies(bool taken) = 0;
    // Whether script dialogs, permission questions and password dialogs of pages stay hidden (answered by
    // "no").
    virtual void SetSilent(bool silent) = 0;
};

} // namespace vantro
