// Where pages may go: whatever they ask for, in whatever order.

#include "base/AsciiText.h"
#include "base/TextCoding.h"
#include "fuzz/Fuzz.h"
#include "web/NavigationPolicy.h"
#include "web/PageAddress.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace vantro {

namespace {

using Verdict = NavigationPolicy::Verdict;

bool IsWeb(std::string_view address)
{
    const std::string lower = ToLowerAscii(address);
    return lower.starts_with("http:") || lower.starts_with("https:");
}

// What the policy has been told, kept in the plainest way.
class Told {
public:
    void Begin(const std::string& page, const std::vector<std::string>& frames)
    {
        const std::size_t before = awaited.count(page);
        awaited = {frames.begin(), frames.end()};
        for (std::size_t i = 0; i <= before; ++i)
            awaited.insert(page);
        texts.clear();
        shown = page;
    }
    bool Take(const std::string& address)
    {
        const auto found = awaited.find(address);
        if (found == awaited.end())
            return false;
        awaited.erase(found);
        return true;
    }

    std::multiset<std::string> awaited;
    std::set<std::string> texts;
    std::string shown;
};

// A page may go anywhere that is allowed here, and nowhere else.
void CheckDecision(const Navigation& to, const NavigationPolicy::Decision& decision, Told& told)
{
    const std::string document = to.address.substr(0, to.address.find('#'));
    const bool isHere = !to.newWindow && !to.aside;
    const bool isText = told.texts.contains(document);
    const bool isWanted = isHere && told.Take(to.address);
    const bool isAnchor = isHere && to.byUser && isText && document != to.address;
    const bool isBack = isHere && to.history && (isText || document == told.shown);
    const bool isFollowed = isHere && IsWeb(to.address) && (to.byUser || to.redirect || to.history);
    switch (decision.verdict) {
    case Verdict::Allow:
        Require(isWanted || isAnchor || isBack || isFollowed, "nothing is let in that was not asked for");
        break;
    case Verdict::Follow:
        Require(isHere && IsWeb(decision.address), "only the web is followed");
        Require(to.byUser || to.history, "nothing is followed by itself");
        break;
    case Verdict::OpenOutside:
        Require(to.byUser, "only the user opens another program");
        Require(IsWeb(decision.address) || ToLowerAscii(decision.address).starts_with("mailto:"),
            "nothing but addresses of the web and of mail leave");
        break;
    case Verdict::Ignore:
    case Verdict::Refuse: Require(!isWanted && !isAnchor, "what the program asked for is let in"); break;
    }
}

Navigation ReadNavigation(Input& line)
{
    const std::uint8_t kinds = line.Byte();
    const auto is = [&](int bit) { return (kinds >> bit & 1) != 0; };
    return {.byUser = is(0),
        .redirect = is(1),
        .newWindow = is(2),
        .aside = is(3),
        .history = is(4),
        .link = is(5)};
}

void CheckLink(std::string_view written)
{
    const std::string address = AddressOfLink(DecodeFeedText(written));
    Require(std::ranges::all_of(
                address, [](unsigned char c) { return c < 0x80 && c != '\t' && c != '\r' && c != '\n'; }),
        "an address is ASCII on one line");
    const DisplayAddress display(7, address);
    const std::string meant = display.WebAddressOf(display.OfStory());
    Require(meant.empty() || IsWeb(meant), "a story lies on the web");
    Require(meant.empty()
            == DisplayAddress(7, address).WebAddressOf("vantro-page://story-7.vantro-page/a").empty(),
        "or nothing of it does");
    const std::string other = display.WebAddressOf(written);
    Require(other.empty() || IsWeb(other), "what is relative in a story lies on the web");
}

} // namespace

} // namespace vantro

// Each line is a step: P page|frame|frame, T text|text, E, or N, kinds, address.
void vantro::Try(std::string_view bytes)
{
    NavigationPolicy policy;
    Told told;
    Input input(bytes);
    while (!input.IsAtEnd()) {
        Input line(input.UpTo('\n'));
        const std::uint8_t step = line.Byte();
        Navigation to = step == 'N' ? ReadNavigation(line) : Navigation{};
        std::vector<std::string> addresses;
        do
            addresses.emplace_back(line.UpTo('|'));
        while (!line.IsAtEnd());
        if (step == 'P') {
            policy.PageBegins(addresses.front(), {addresses.begin() + 1, addresses.end()},
                DisplayAddress(7, addresses.back()));
            told.Begin(addresses.front(), {addresses.begin() + 1, addresses.end()});
        } else if (step == 'T') {
            policy.TextsBegin(addresses);
            told.texts = {addresses.begin(), addresses.end()};
            told.awaited = {addresses.begin(), addresses.end()};
        } else if (step == 'E') {
            policy.PageEnds();
            told.awaited.clear();
        } else if (step == 'N') {
            to.address = addresses.front();
            CheckDecision(to, policy.Decide(to), told);
        } else {
            CheckLink(addresses.front());
        }
    }
}
