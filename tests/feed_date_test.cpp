#include "feeds/FeedDate.h"

#include <gtest/gtest.h>
#include <vector>

namespace vantro {

TEST(FeedDate, PutsDatesIntoTheUsersWords)
{
    const std::tuple<const char*, const char*, std::vector<const char*>> cases[] = {
        {"en_US", "Saturday 5 July 2003",
            {"Sat, 05 Jul 2003 23:30:00 -0800", "Sat, 5 Jul 03 08:00 GMT", "Sat, 05 Jul 2003",
                "Saturday, 05-Jul-03 12:00:00 GMT", "Sat,05 Jul 2003 12:00:60 UT", "sat 5 jul 2003 8:15 pm",
                "Sat Jul  5 12:00:00 2003", "Sat Jul 5 12:00:00 CEST 2003", "Jul 5 12:00 +02 2003\n",
                "Sat Jul 05 2003 12:00:00 GMT+0100 (CET)", "Sat., 5 Jul. 2003 0:00 +0100 (CET)",
                "5 July 2003 12:00 GMT+2", "5 July 2003, 12:00:00.25 a.m. EST", "July 5, 2003", "Jul 5 2003",
                "Saturday, July 5th, 2003 8:15 PM", "5th July 2003", " 5 July 2003 ",
                "\t5\n Jul\u00a02003\r\n", "5-Jul-2003", "05/Jul/2003", "Fri, 5 July, 2003", "2003-07-05",
                "2003-7-5", "2003/07/05", "2003.07.05", "20030705", "20030705T120000Z", "20030705T1200+01",
                "2003-07-05T23:59:59.5+02:00", "2003-07-05T12:00:00,123+01", "07/05/2003", "7/5/03"}},
        {"en_GB", "Saturday 5 July 2003", {"05/07/2003 8:15 PM", "05.07.2003", "5-7-2003", "5.7.03"}},
        {"en_US", "Friday 5 September 2003", {"Fri, 5 Sept 2003", "Sept. 5, 2003", "5 Sep 2003"}},
        {"en_US", "Thursday 5 March 1970", {"Thurs 5 Mar 70", "mar 5 1970", "03/05/70"}},
        {"en_US", "Friday 5 July 2069", {"5 Jul 69", "2069-07-05"}},
        {"de_DE", "Samstag 5 Juli 2003",
            {"Sat, 05 Jul 2003 08:00:00 GMT", "05.07.2003", "5. 7. 2003", "5.7.03 12:00 Uhr", "5. Juli 2003",
                "Samstag, 5. Juli 2003", "Sa., 5.Juli 2003", "July 5, 2003"}},
        {"de_DE", "Samstag 1 M\u00e4rz 2003", {"1. M\u00e4rz 2003", "01 M\u00c4RZ 2003", "1. Mar. 2003"}},
        {"es_ES", "martes 4 marzo 2003", {"mar 4 mar 2003", "Mar 4, 2003", "martes, 4 Marzo 2003"}},
        {"vi_VN", "Ch\u1ee7 Nh\u1eadt 5 th\u00e1ng 10 2003", {"5 th\u00e1ng 10 2003"}},
        {"en_US@calendar=buddhist", "Saturday 5 July 2003", {"2003-07-05"}},
        {"no_such", "Saturday 5 July 2003", {"2003-07-05"}},
    };
    for (const auto& [locale, shown, forms] : cases) {
        for (const char* given : forms)
            EXPECT_EQ(FeedDate(locale).Format(given), shown) << locale << " " << given;
    }
}

TEST(FeedDate, LeavesWhatIsNoDateAsItIs)
{
    FeedDate dates("en_US");
    for (const std::string& given : std::vector<std::string>{"", " ", "2003", "July 2003", "5 July 103",
             "5 July 0103", "103-07-05", "2003-07", "2003-186", "31 June 2003", "30 Feb 2003", "2003-02-29",
             "20030631", "13/07/2003", "05.07.2003", "03-07-05", "2003-07/05", "5. Juli 2003",
             "5 July 2003 or later", "5 July 2003 12:00 +", "5 July 2003 0:00 (CET",
             "5 July 2003 12:00 tomorrow", "5 July 2003, 6 July 2003", "200307051", "5 July 2003 1200",
             "<b>5 July 2003</b>", "<![CDATA[Sat, 05 Jul 2003]]>", "5 July 2003" + std::string(1, '\0'),
             "\xff 5 July 2003", std::string(200, ' ') + "5 July 2003", std::string(8'000'000, '5')})
        EXPECT_TRUE(dates.Format(given) == given) << given.substr(0, 200);
    EXPECT_EQ(FeedDate("sv_SE").Format("03/07/05"), "03/07/05") << "the year may come first";
}

} // namespace vantro
