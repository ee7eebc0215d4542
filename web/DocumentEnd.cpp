#include "web/DocumentEnd.h"

#include "base/Amounts.h"
#include "base/Words.h"
#include "web/PageBrowser.h"
#include "web/WebAddress.h"

namespace vantro {

namespace {

constexpr unsigned kFirstErrorStatus = 400;

std::string Remedy(bool opened)
{
    return std::string(" ")
        + (opened ? Words("It was opened in your browser.")
                  : Words("Ctrl and a click on its link open it in your browser."));
}

} // namespace

bool IsForAnotherBrowser(const DocumentEnd& end)
{
    return end.kind == DocumentEnd::Kind::NotAPage || end.kind == DocumentEnd::Kind::ForbidsFrames;
}

std::string SentenceOf(const DocumentEnd& end, bool opened)
{
    const std::string host = HostOf(end.address);
    switch (end.kind) {
    case DocumentEnd::Kind::Answered:
        return end.status < kFirstErrorStatus
            ? std::string()
            : Words("%1 answered with error %2.", {host, std::to_string(end.status)});
    case DocumentEnd::Kind::Finished: return {};
    case DocumentEnd::Kind::Unreachable:
        return Words("%1 cannot be reached: %2", {host, end.reason + (end.reason.ends_with('.') ? "" : ".")});
    case DocumentEnd::Kind::BadCertificate:
        return Words("%1 cannot prove by its certificate that it is %1, so its page is not shown.", {host});
    case DocumentEnd::Kind::WantsPassword:
        return Words("%1 wants a name and a password.", {host}) + Remedy(false);
    case DocumentEnd::Kind::NothingToShow: return Words("%1 answered that there is nothing to show.", {host});
    case DocumentEnd::Kind::NotAPage:
        return Words("%1 sent a file that is no page.", {host}) + Remedy(opened);
    case DocumentEnd::Kind::ForbidsFrames:
        return Words("%1 does not let its page be shown here.", {host}) + Remedy(opened);
    case DocumentEnd::Kind::Late: return Words("%1 has not answered for %2.", {host, TimeText(kLoadLimit)});
    case DocumentEnd::Kind::NoWebAddress:
        return host.empty() ? Words("This link leads to nothing that can be shown or opened.")
                            : Words("%1 sends this link on to nothing that can be shown or opened.", {host});
    }
    return {};
}

} // namespace vantro
