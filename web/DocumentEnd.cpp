#include "web/DocumentEnd.h"

#include "base/Amounts.h"
#include "web/PageBrowser.h"
#include "web/WebAddress.h"

namespace vantro {

namespace {

constexpr unsigned kFirstErrorStatus = 400;

std::string Remedy(bool opened)
{
    return opened ? " It was opened in your browser."
                  : " Ctrl and a click on its link open it in your browser.";
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
            : host + " answered with error " + std::to_string(end.status) + ".";
    case DocumentEnd::Kind::Finished: return {};
    case DocumentEnd::Kind::Unreachable:
        return host + " cannot be reached: " + end.reason + (end.reason.ends_with('.') ? "" : ".");
    case DocumentEnd::Kind::BadCertificate:
        return host + " cannot prove by its certificate that it is " + host + ", so its page is not shown.";
    case DocumentEnd::Kind::WantsPassword: return host + " wants a name and a password." + Remedy(false);
    case DocumentEnd::Kind::NothingToShow: return host + " answered that there is nothing to show.";
    case DocumentEnd::Kind::NotAPage: return host + " sent a file that is no page." + Remedy(opened);
    case DocumentEnd::Kind::ForbidsFrames:
        return host + " does not let its page be shown here." + Remedy(opened);
    case DocumentEnd::Kind::Late: return host + " has not answered for " + TimeText(kLoadLimit) + ".";
    case DocumentEnd::Kind::NoWebAddress:
        return (host.empty() ? "This link leads" : host + " sends this link on")
            + " to nothing that can be shown or opened.";
    }
    return {};
}

} // namespace vantro
