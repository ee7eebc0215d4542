#pragma once

#include <string>
#include <string_view>

namespace vantro {

// A page or a frame is about to go somewhere.
struct Navigation {
    std::string address; // as the engine writes it
    bool byUser = false; // the user clicked, or the program pointed a frame there
    bool redirect = false; // the server answered a navigation that was allowed by sending it on
    bool newWindow = false; // the target names no frame of the page
};

// Decides where pages may go: elsewhere only when the program sends them or the user clicks a link. Local
// files are the program's own page files, and only while they load.
class NavigationPolicy {
public:
    enum class Verdict { Allow, Ignore, OpenOutside };

    // The program sends the whole view to `address`. For a local page `folder` is the address of the folder
    // its frames lie in, with a slash at the end.
    void PageBegins(std::string address, std::string folder);
    // The page and its frames are there, or never will be.
    void PageEnds();

    [[nodiscard]] Verdict Decide(const Navigation& navigation);

private:
    std::string page_;
    std::string folder_;
    int framesLeft_ = 0;
    bool loading_ = false;
};

// http and https.
[[nodiscard]] bool IsWebAddress(std::string_view address);
// http, https and mailto are the only addresses that are handed to other programs.
[[nodiscard]] bool MayLeave(std::string_view address);

} // namespace vantro
