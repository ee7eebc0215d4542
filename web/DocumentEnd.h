#pragma once

#include <cstdint>
#include <string>

namespace vantro {

// What became of a document that a frame went to or should have gone to.
struct DocumentEnd {
    enum class Kind : std::uint8_t {
        Answered, // it begins to come
        Finished, // all of it is there
        Unreachable,
        BadCertificate,
        WantsPassword,
        NothingToShow, // the server has answered so
        NotAPage, // a file that the engine does not display
        ForbidsFrames,
        Late, // still no answer
        NoWebAddress // where the link leads, or where `address` has sent it on to, is not on the web
    };
    Kind kind = Kind::Unreachable;
    std::string address; // on the web; may be empty for NoWebAddress
    unsigned status = 0; // of HTTP, when it was answered
    std::string reason = {}; // the engine's words, when it was unreachable
};

// What only the user's default browser can show.
[[nodiscard]] bool IsForAnotherBrowser(const DocumentEnd& end);
// One sentence that names the host; empty when all is well. `opened` says whether the default browser was
// given what only it can show.
[[nodiscard]] std::string SentenceOf(const DocumentEnd& end, bool opened);

} // namespace vantro
