#include "web/NavigationPolicy.h"

#include "web/WebAddress.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vantro {

void NavigationPolicy::PageBegins(std::string address, std::vector<std::string> frames, DisplayAddress page)
{
    // The load that this one takes the place of may have the same address and still be asked about.
    const auto asked = static_cast<std::size_t>(std::ranges::count(awaited_, address));
    addresses_ = std::move(page);
    page_ = std::move(address);
    texts_.clear();
    awaited_ = std::move(frames);
    awaited_.insert(awaited_.end(), asked + 1, page_);
}

void NavigationPolicy::TextsBegin(std::vector<std::string> addresses)
{
    texts_ = std::move(addresses);
    awaited_ = texts_;
}

void NavigationPolicy::PageEnds()
{
    awaited_.clear();
}

bool NavigationPolicy::IsAwaited(const std::string& address)
{
    const auto found = std::ranges::find(awaited_, address);
    if (found == awaited_.end())
        return false;
    awaited_.erase(found);
    return true;
}

// An anchor of a text, or back to one from a page that was followed.
bool NavigationPolicy::IsOfThePage(const Navigation& navigation) const
{
    const std::string_view address = navigation.address;
    const std::string_view document = address.substr(0, address.find('#'));
    const bool isText = std::ranges::find(texts_, document) != texts_.end();
    if (navigation.history)
        return isText || (document == page_ && IsOwnAddress(page_));
    return navigation.byUser && isText && document.size() < address.size();
}

NavigationPolicy::Decision NavigationPolicy::Decide(const Navigation& navigation)
{
    const bool stays = !navigation.newWindow && !navigation.aside;
    if (stays && (IsAwaited(navigation.address) || IsOfThePage(navigation)))
        return {Verdict::Allow};
    const bool isOwn = IsOwnAddress(navigation.address);
    if (isOwn && navigation.redirect)
        return {Verdict::Refuse};
    if (isOwn && !navigation.byUser)
        return {};
    const std::string address = isOwn ? addresses_.WebAddressOf(navigation.address) : navigation.address;
    if (stays && IsWebAddress(address) && (navigation.byUser || navigation.redirect || navigation.history))
        return !isOwn                ? Decision{Verdict::Allow}
            : HasBarredPort(address) ? Decision{Verdict::Refuse}
                                     : Decision{Verdict::Follow, address};
    if (navigation.byUser && MayLeave(address))
        return {Verdict::OpenOutside, address};
    return {
        navigation.redirect || (navigation.byUser && navigation.link) ? Verdict::Refuse : Verdict::Ignore};
}

} // namespace vantro
