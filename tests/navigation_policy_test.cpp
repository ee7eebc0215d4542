#include "platform/NavigationPolicy.h"

#include <gtest/gtest.h>
#include <string>

namespace vantro {
namespace {

using Verdict = NavigationPolicy::Verdict;

TEST(NavigationPolicy, LetsAUserGoToWebPagesAndHandsOutOnlyWhatIsSafeToHandOut)
{
    struct Case {
        const char* address;
        Verdict clicked;
        Verdict newWindow;
    };
    for (const Case& c : {Case{"http://news.example/1", Verdict::Allow, Verdict::OpenOutside},
             {"HTTPS://news.example/1", Verdict::Allow, Verdict::OpenOutside},
             {"mailto:someone@news.example", Verdict::OpenOutside, Verdict::OpenOutside},
             {"file:///folder/title.htm", Verdict::Ignore, Verdict::Ignore},
             {"javascript:alert(1)", Verdict::Ignore, Verdict::Ignore},
             {"data:text/html,http://news.example/", Verdict::Ignore, Verdict::Ignore},
             {"httpx://news.example/", Verdict::Ignore, Verdict::Ignore},
             {"", Verdict::Ignore, Verdict::Ignore}}) {
        NavigationPolicy policy;
        policy.PageBegins("file:///folder/frames.htm?1", "file:///folder/");
        EXPECT_EQ(policy.Decide({.address = c.address, .byUser = true}), c.clicked) << c.address;
        EXPECT_EQ(policy.Decide({c.address, true, false, true}), c.newWindow) << c.address;
        EXPECT_EQ(policy.Decide({c.address, false, false, true}), Verdict::Ignore) << c.address;
        policy.PageEnds();
        EXPECT_EQ(policy.Decide({.address = c.address}), Verdict::Ignore) << c.address;
        EXPECT_EQ(policy.Decide({.address = c.address, .redirect = true}),
            c.clicked == Verdict::Allow ? Verdict::Allow : Verdict::Ignore)
            << c.address;
    }
}

TEST(NavigationPolicy, LetsAPageLoadItsTwoFramesAndNothingElseOfItsFolder)
{
    NavigationPolicy policy;
    policy.PageBegins("file:///folder/frames.htm?1", "file:///folder/");
    const auto allows = [&](const char* address) { return policy.Decide({address}) == Verdict::Allow; };
    EXPECT_FALSE(allows("file:///elsewhere/a.htm"));
    for (const char* own : {"frames.htm?1", "title.htm", "main.htm"})
        EXPECT_TRUE(allows((std::string("file:///folder/") + own).c_str())) << own;
    EXPECT_FALSE(allows("file:///folder/registry.db"));
    policy.PageBegins("about:blank", {});
    EXPECT_FALSE(allows("file:///folder/title.htm"));
    EXPECT_TRUE(allows("about:blank"));
}

} // namespace
} // namespace vantro
