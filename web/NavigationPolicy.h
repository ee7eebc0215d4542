#pragma once

#include "web/DisplayAddress.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// A page or a frame is about to go somewhere.
struct Navigation {
    std::string address; // as the engine writes it
    bool byUser = false; // the user clicked, or the program pointed a frame there
    bool redirect = false; // the server answered a navigation that was allowed by sending it on
    bool newWindow = false; // the target names no frame of the page
    bool aside = false; // a click of the middle button, or with Ctrl or Shift
    bool history = false; // back or forward
    bool link = false; // a link was clicked
};

// Decides where pages may go: elsewhere only when the program sends them or the user clicks a link. The
// program's own page files are let in one by one, while they load; no page reaches a local file.
class NavigationPolicy {
public:
    enum class Verdict {
        Allow,
        Ignore,
        Refuse, // what the user clicked leads nowhere, which is to be said
        Follow, // not there: the bottom frame is to go to `address`
        OpenOutside // not there: `address` is for another program
    };
    struct Decision {
        Verdict verdict = Verdict::Ignore;
        std::string address = {};
    };

    // The program sends the whole view to `address`, which has these frames.
    void PageBegins(std::string address, std::vector<std::string> frames = {}, DisplayAddress page = {});
    // The program points the frames at their texts.
    void TextsBegin(std::vector<std::string> addresses);
    // The page and its frames are there, or never will be.
    void PageEnds();

    [[nodiscard]] Decision Decide(const Navigation& navigation);

private:
    [[nodiscard]] bool IsAwaited(const std::string& address);
    [[nodiscard]] bool IsOfThePage(const Navigation& navigation) const;

    DisplayAddress addresses_;
    std::string page_;
    std::vector<std::string> texts_; // of its frames
    // Each may come once, so text in a frame that would send it to one of them comes too late.
    std::vector<std::string> awaited_;
};

} // namespace vantro
