#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace vantro {

// The embedded browser as the pages use it. Interface thread only.
class PageBrowser {
public:
    enum class LoadEnd { Complete, Failed, TimedOut };
    using LoadEnded = std::function<void(LoadEnd)>;

    virtual ~PageBrowser() = default;

    // Loads `address` (a full path of a local file, or about:blank) into the whole view and calls `ended`
    // once, later, from the event loop: when the document and its frames are there, when the load failed, or
    // after 30 seconds. A newer Navigate() takes the place of a load under way, whose `ended` is
    // then never called.
    virtual void Navigate(const std::string& address, LoadEnded ended) = 0;

    // Points the frame of that name in the page shown at `address`; any but http and https does nothing.
    // Nothing is reported: a page in a frame that does not come is the browser's to show.
    virtual void NavigateFrame(const std::string& address, std::string_view frame) = 0;

    // 4 when the page shown and its frames have finished loading, less while they load.
    [[nodiscard]] virtual int ReadyState() const = 0;

    // Whether dialogs that pages ask for (script alerts, confirmations, prompts) stay hidden.
    virtual void SetSilent(bool silent) = 0;
};

} // namespace vantro
