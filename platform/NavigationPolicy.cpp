#include "platform/NavigationPolicy.h"

#include "platform/TextCoding.h"

#include <utility>

namespace vantro {

namespace {

// A page has two. They are asked for before anything in them is read, so text in a frame that would send it
// to a file comes too late.
constexpr int kFramesOfPage = 2;

bool HasScheme(std::string_view address, std::string_view scheme)
{
    return ToLowerAscii(address.substr(0, address.find(':'))) == scheme;
}

} // namespace

bool IsWebAddress(std::string_view address)
{
    return HasScheme(address, "http") || HasScheme(address, "https");
}

bool MayLeave(std::string_view address)
{
    return IsWebAddress(address) || HasScheme(address, "mailto");
}

void NavigationPolicy::PageBegins(std::string address, std::string folder)
{
    page_ = std::move(address);
    folder_ = std::move(folder);
    framesLeft_ = folder_.empty() ? 0 : kFramesOfPage;
    loading_ = true;
}

void NavigationPolicy::PageEnds()
{
    loading_ = false;
}

NavigationPolicy::Verdict NavigationPolicy::Decide(const Navigation& navigation)
{
    const std::string& address = navigation.address;
    if (!navigation.newWindow && (navigation.byUser || navigation.redirect) && IsWebAddress(address))
        return Verdict::Allow;
    if (navigation.byUser)
        return MayLeave(address) ? Verdict::OpenOutside : Verdict::Ignore;
    if (navigation.newWindow || !loading_)
        return Verdict::Ignore;
    if (address == page_)
        return Verdict::Allow;
    return address.starts_with(folder_) && framesLeft_-- > 0 ? Verdict::Allow : Verdict::Ignore;
}

} // namespace vantro
