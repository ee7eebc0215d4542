#pragma once

#include "platform/NavigationPolicy.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

class wxWebView;

namespace vantro {

// What the window library's web view does not offer or gets wrong, taken from the engine below it. One source
// file per engine implements it.
class NativeWebView {
public:
    // Is told what happens in the view, on the interface thread, in the middle of the engine's work: only
    // take notes.
    struct Events {
        std::function<bool(const Navigation&)> allow; // false: it stays where it is
        std::function<void(const std::string& address)>
            finished; // the document of that address and its frames
        std::function<void(const std::string& address)> failed;
        std::function<void()> processLost; // the process that draws the pages died
        std::function<void()> processHangs; // it has not answered for some seconds
    };

    // To be called before the first view; later calls do nothing. Switches the engine's sandbox on where it
    // works and lets the pages of this folder into it.
    static void PrepareEngine(const std::filesystem::path& pageFolder);

    NativeWebView(wxWebView& view, Events events);
    ~NativeWebView();
    NativeWebView(const NativeWebView&) = delete;
    NativeWebView& operator=(const NativeWebView&) = delete;

    // A full local path or an address as the engine will write it.
    [[nodiscard]] static std::string Normalized(const std::string& address);

    void Load(const std::string& address);
    // Whether the process that draws the pages answers; a page's endless script can keep it from that.
    [[nodiscard]] bool ProcessResponds() const;
    // The next Load() starts a new one. Not reported as lost.
    void EndProcess();
    // Points a frame of the page shown at `address`. Nothing is left in flight that could outlive the view.
    void LoadFrame(const std::string& frame, const std::string& address);
    // Whether script dialogs, permission questions and password dialogs of pages stay hidden (answered by
    // "no").
    void SetSilent(bool silent);

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace vantro
