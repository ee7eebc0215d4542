#include "web/NavigationPolicy.h"
#include "web/OutsideGate.h"

#include <gtest/gtest.h>

namespace vantro {

using Verdict = NavigationPolicy::Verdict;

const std::string kFrames = "vantro-page://7/frames.htm", kMain = "vantro-page://7/main.htm",
                  kTitle = "vantro-page://7/title.htm?text",
                  kStory = "vantro-page://story-7.vantro-page/x/y.html";

TEST(NavigationPolicy, LetsEachPartOfThePageInOnceAndInItsTime)
{
    NavigationPolicy policy;
    const auto allows = [&policy](const std::string& address, bool history = false) {
        return policy.Decide({.address = address, .history = history}).verdict == Verdict::Allow;
    };
    policy.PageBegins(kFrames, {"vantro-page://7/title.htm", kMain});
    EXPECT_TRUE(allows(kFrames));
    EXPECT_FALSE(allows(kFrames));
    policy.TextsBegin({kStory, kTitle});
    EXPECT_TRUE(!allows(kMain) && allows(kStory) && !allows(kStory)) << "too late; once";
    policy.PageEnds();
    EXPECT_TRUE(!allows(kTitle) && allows(kStory, true));
    policy.PageBegins("vantro-page://8/frames.htm");
    EXPECT_FALSE(allows(kStory, true)) << "that of another display";
    for (int load = 0; load < 2; ++load)
        policy.PageBegins("about:blank");
    EXPECT_TRUE(allows("about:blank") && allows("about:blank") && !allows("about:blank"))
        << "both are asked about";
}

TEST(NavigationPolicy, LetsNothingElseMoveThatTheUserDidNotClick)
{
    NavigationPolicy policy;
    policy.PageBegins(kFrames, {}, DisplayAddress(7, "http://a.example/x/y.html"));
    policy.TextsBegin({kStory});
    policy.PageEnds();
    const std::string web = "http://b.example/", relative = "vantro-page://story-7.vantro-page/e";
    const std::tuple<Navigation, Verdict, std::string> cases[] = {
        {{.address = kStory + "#z", .byUser = true}, Verdict::Allow, ""},
        {{.address = kStory + "#z"}, Verdict::Ignore, ""},
        {{.address = kFrames + "#z", .byUser = true}, Verdict::Ignore, ""},
        {{.address = kFrames, .history = true}, Verdict::Allow, ""},
        {{.address = relative, .byUser = true}, Verdict::Follow, "http://a.example/e"},
        {{.address = relative, .byUser = true, .redirect = true}, Verdict::Refuse, ""},
        {{.address = relative, .byUser = true, .aside = true}, Verdict::OpenOutside, "http://a.example/e"},
        {{.address = web, .redirect = true}, Verdict::Allow, ""},
        {{.address = web}, Verdict::Ignore, ""},
        {{.address = web, .byUser = true, .newWindow = true}, Verdict::OpenOutside, web},
        {{.address = web, .newWindow = true}, Verdict::Ignore, ""},
        {{.address = "file:///etc/hosts", .byUser = true}, Verdict::Ignore, ""},
        {{.address = "tel:1", .byUser = true, .link = true}, Verdict::Refuse, ""},
        {{.address = "tel:1", .link = true}, Verdict::Ignore, ""},
        {{.address = "tel:1", .redirect = true}, Verdict::Refuse, ""},
    };
    for (const auto& [navigation, verdict, address] : cases) {
        const NavigationPolicy::Decision decision = policy.Decide(navigation);
        EXPECT_TRUE(decision.verdict == verdict && decision.address == address)
            << navigation.address << " " << navigation.byUser << decision.address;
    }
}

TEST(OutsideGate, OpensOnceForEachPressAndNotTooSoonAfter)
{
    OutsideGate gate;
    const auto start = OutsideGate::Clock::now(), next = start + OutsideGate::kBetween;
    gate.Pressed();
    EXPECT_TRUE(gate.Opens(start) && !gate.Opens(next)) << "the press was used";
    gate.Pressed();
    EXPECT_TRUE(!gate.Opens(next - std::chrono::milliseconds(1)) && gate.Opens(next));
}

} // namespace vantro
