#include "platform/NavigationPolicy.h"

#include <gtest/gtest.h>

namespace vantro {
namespace {

using Verdict = NavigationPolicy::Verdict;

TEST(NavigationPolicy, LetsAUserGoToWebPagesAndHandsOutOnlyWhatIsSafeToHandOut)
{
    struct Case {
        const char* address;
        Verdict clicked;
        Verdict clickedForNewWindow;
    };
    const Case cases[] = {
        {"http://news.example/1", Verdict::Allow, Verdict::OpenOutside},
        {"HTTPS://news.example/1", Verdict::Allow, Verdict::OpenOutside},
        {"mailto:someone@news.example", Verdict::OpenOutside, Verdict::OpenOutside},
        {"file:///etc/hostname", Verdict::Ignore, Verdict::Ignore},
        {"file:///folder/help.htm", Verdict::Ignore, Verdict::Ignore},
        {"javascript:alert(1)", Verdict::Ignore, Verdict::Ignore},
        {"data:text/html,http://news.example/", Verdict::Ignore, Verdict::Ignore},
        {"about:blank", Verdict::Ignore, Verdict::Ignore},
        {"httpx://news.example/", Verdict::Ignore, Verdict::Ignore},
        {"", Verdict::Ignore, Verdict::Ignore},
    };
    for (const bool loading : {true, false}) {
        NavigationPolicy policy;
        policy.PageBegins("file:///folder/frames.htm?1", "file:///folder/");
        if (!loading)
            policy.PageEnds();
        for (const Case& c : cases) {
            EXPECT_EQ(policy.Decide({.address = c.address, .byUser = true}), c.clicked) << c.address;
            EXPECT_EQ(policy.Decide({.address = c.address, .byUser = true, .newWindow = true}),
                c.clickedForNewWindow)
                << c.address;
            EXPECT_EQ(policy.Decide({.address = c.address, .newWindow = true}), Verdict::Ignore) << c.address;
        }
        EXPECT_EQ(policy.Decide({.address = "http://a.example/"}), Verdict::Ignore);
        EXPECT_EQ(policy.Decide({.address = "http://a.example/", .redirect = true}), Verdict::Allow);
        EXPECT_EQ(policy.Decide({.address = "mailto:a@a.example", .redirect = true}), Verdict::Ignore);
    }
}

TEST(NavigationPolicy, LetsAPageLoadItsTwoFramesAndNothingElseOfItsFolder)
{
    NavigationPolicy policy;
    policy.PageBegins("file:///folder/frames.htm?1", "file:///folder/");
    struct Step {
        const char* address;
        Verdict verdict;
    };
    for (const Step& step : {Step{"file:///folder/frames.htm?1", Verdict::Allow},
             {"file:///elsewhere/title.htm", Verdict::Ignore}, {"file:///folder/title.htm", Verdict::Allow},
             {"file:///folder/main.htm", Verdict::Allow}, {"file:///folder/registry.db", Verdict::Ignore}})
        EXPECT_EQ(policy.Decide({.address = step.address}), step.verdict) << step.address;
    policy.PageBegins("file:///folder/frames.htm?2", "file:///folder/");
    policy.PageEnds();
    EXPECT_EQ(policy.Decide({.address = "file:///folder/frames.htm?2"}), Verdict::Ignore);
    EXPECT_EQ(policy.Decide({.address = "file:///folder/title.htm"}), Verdict::Ignore);
    policy.PageBegins("about:blank", {});
    EXPECT_EQ(policy.Decide({.address = "file:///folder/title.htm"}), Verdict::Ignore);
    EXPECT_EQ(policy.Decide({.address = "about:blank"}), Verdict::Allow);
}

} // namespace
} // namespace vantro
