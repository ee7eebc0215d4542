#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// The time that a page has to load, and the server of a followed link to answer. Sentences name it.
inline constexpr std::chrono::seconds kLoadLimit{30};

// The bottom frame of item pages, to which pages that are followed go.
inline constexpr std::string_view kMainFrame = "mainFrame";

// A page made of files of ours.
struct LocalPage {
    std::uint64_t number; // of the display; no other one has it
    std::filesystem::path folder; // where its files lie
    std::span<const std::string_view> files; // their names
    std::string_view shown; // the one to begin with
    struct Frame {
        std::string_view name;
        std::string_view file;
        bool isStory = false; // shows text of the item whose relative links and anchors are to work
    };
    std::vector<Frame> frames = {}; // of the page shown
    std::string link = {}; // what relative links in a story refer to
};

// The embedded browser as the pages use it. Interface thread only.
class PageBrowser {
public:
    enum class LoadEnd { Complete, Failed, TimedOut };
    using LoadEnded = std::function<void(LoadEnd)>;

    virtual ~PageBrowser() = default;

    // Both load something into the whole view and call `ended` once, later, from the event loop: when what is
    // ours is there (pictures from elsewhere are not waited for), when the load failed, or after kLoadLimit.
    // A newer call takes the place of a load under way, whose `ended` is then never called.
    virtual void ShowBlank(LoadEnded ended) = 0;
    // Reads the files at once; they are of no use any more when `ended` is called.
    virtual void ShowPage(const LocalPage& page, LoadEnded ended) = 0;

    // Points the frame of that name in the page shown at `address`; any but http and https does nothing.
    // Nothing is reported: a page in a frame that does not come is the browser's to show.
    virtual void NavigateFrame(const std::string& address, std::string_view frame) = 0;

    // 4 when the page shown and its frames have finished loading, less while they load.
    [[nodiscard]] virtual int ReadyState() const = 0;

    // Whether dialogs that pages ask for (script alerts, confirmations, prompts) stay hidden.
    virtual void SetSilent(bool silent) = 0;
};

} // namespace vantro
