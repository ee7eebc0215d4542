#include "base/Words.h"

#include <gtest/gtest.h>

namespace vantro {

TEST(WordsTest, PutsEachValueInItsPlaces)
{
    EXPECT_EQ(Words("%2 of %1, 100 %, %1 and %3%", {"<%2>", "b"}), "b of <%2>, 100 %, <%2> and %3%");
    EXPECT_EQ(CountedWords("%1 thing", "%1 things", 1), "1 thing");
    EXPECT_EQ(CountedWords("%1 thing", "%1 things", 0), "0 things");
}

} // namespace vantro
