#include "shell/StatusLine.h"

#include <gtest/gtest.h>

namespace vantro {

TEST(StatusLine, ShowsTheNewestThatHoldsAndComesBackToWhatLasts)
{
    std::string shown;
    StatusLine line([&](const std::string& text) { shown = text; });
    line.Say("countdown", "5 minutes");
    line.Say("mark", "Full.");
    EXPECT_EQ(shown, "Full.");
    line.ComeToRest();
    EXPECT_EQ(shown, "Full.") << "nothing lasts";
    line.Mention("check", "2 new items");
    EXPECT_EQ(shown, "Full.");
    line.Say("countdown", "4 minutes");
    EXPECT_EQ(shown, "4 minutes");
    line.Say("countdown", "");
    EXPECT_EQ(shown, "Full.") << "it still holds";
    line.Say("mark", "");
    EXPECT_EQ(shown, "2 new items");
    line.Mention("check", "");
    EXPECT_EQ(shown, "");

    line.AddNotice("No store.");
    line.AddNotice("");
    line.AddNotice("No sandbox.");
    EXPECT_EQ(shown, "No store. No sandbox.");
    line.Say("countdown", "3 minutes");
    EXPECT_EQ(shown, "3 minutes");
    line.ComeToRest();
    EXPECT_EQ(shown, "No store. No sandbox.");
    line.Say("mark", "");
    EXPECT_EQ(shown, "No store. No sandbox.");
    line.Say("countdown", "");
    EXPECT_EQ(shown, "No store. No sandbox.");
}

} // namespace vantro
