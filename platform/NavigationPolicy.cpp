#include "platform/NavigationPolicy.h"

#include "platform/TextCoding.h"

#include <utility>

namespace vantro {

namespace {

bool HasScheme(std::string_view address, std::string_view scheme)
{
    return ToLowerAscii(address.substr(0, address.find(':'))) == scheme;
}

bool IsWeb(std::string_view address)
{
    return HasScheme(address, "http") || HasScheme(address, "https");
}

} // namespace

bool MayLeave(std::string_view address)
{
    return IsWeb(address) || HasScheme(address, "mailto");
}

void NavigationPolicy::PageBegins(std::string address, std::string folder)
{
    page_ = std::move(address);
    folder_ = std::move(folder);
    frameAddress_.clear();
    loading_ = true;
}

void NavigationPolicy::PageEnds()
{
    loading_ = false;
}

void NavigationPolicy::FrameBegins(std::string address)
{
    frameAddress_ = std::move(address);
}

NavigationPolicy::Verdict NavigationPolicy::Decide(const Navigation& navigation)
{
    const std::string& address = navigation.address;
    if (navigation.newWindow)
        return navigation.byUser && MayLeave(address) ? Verdict::OpenOutside : Verdict::Ignore;
    if (navigation.byUser || navigation.redirect) {
        if (IsWeb(address))
            return Verdict::Allow;
        return navigation.byUser && MayLeave(address) ? Verdict::OpenOutside : Verdict::Ignore;
    }
    if (loading_ && (address == page_ || (!folder_.empty() && address.starts_with(folder_))))
        return Verdict::Allow;
    if (!frameAddress_.empty() && address == std::exchange(frameAddress_, {}))
        return Verdict::Allow;
    return Verdict::Ignore;
}

} // namespace vantro
