#include "feeds/modXML.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>

namespace vantro {

using Texts = std::vector<std::string_view>;

TEST(ExtractTag, TakesWhatStandsBetweenTheFirstTagsOfAName)
{
    struct Case {
        const char* name;
        const char* tag;
        const char* text;
        const char* result;
    };
    for (const Case& c : {
             Case{"plain", "title", "<title>News</title>", "News"},
             {"capitals keep the content's case", "title", "<TITLE>NeWs</Title>", "NeWs"},
             {"a name with blanks and capitals", "  TiTle ", "<title>News</title>", "News"},
             {"no such element", "link", "<title>News</title>", ""},
             {"never closed", "link", "<link>http", ""},
             {"never opened", "link", "http</link>", ""},
             {"empty", "link", "<link></link>", ""},
             {"the first of two", "title", "<title>One</title><title>Two</title>", "One"},
             {"closed before it opens", "title", "</title><title>One</title>", ""},
             {"an attribute is no opening tag", "title", "<title lang=\"en\">One</title>", ""},
             {"self-closing is no opening tag", "title", "<title/>One</title>", ""},
             {"markup, entities and CDATA stay", "d", "<d> <b>a</b> &amp; <![CDATA[x]]> </d>",
                 " <b>a</b> &amp; <![CDATA[x]]> "},
             {"a longer name is another", "link", "<linked>a</linked><link>b</link>", "b"},
             {"a tab belongs to the name", "\ttitle", "<title>News</title>", ""},
             {"blanks alone are no name", "  ", "<>x</>", "x"},
         })
        EXPECT_EQ(ExtractTag(c.tag, c.text), c.result) << c.name;
}

TEST(SplitItems, CutsAFeedIntoItsItems)
{
    struct Case {
        const char* name;
        const char* text;
        Texts items;
    };
    for (const Case& c : {
             Case{"nothing", "", {}},
             {"no items", "<title>x</title>", {}},
             {"only closing", "x</item>", {}},
             {"only opening", "<item>x", {}},
             {"the header belongs to no item", "<title>h</title><item>1</item>", {"<item>1</item>"}},
             {"what lies between belongs to the next", "<item>1</item> <a>b</a><item>2</item>",
                 {"<item>1</item>", " <a>b</a><item>2</item>"}},
             {"capitals", "<ITEM>1</Item><iTEM>2</ITEM>", {"<ITEM>1</Item>", "<iTEM>2</ITEM>"}},
             {"cut short", "<item>1</item><item>2</item><item>3", {"<item>1</item>", "<item>2</item>"}},
             {"closing first", "</item><item>1</item>", {"<item>1</item>"}},
             {"a stray closing tag ends an item", "<item>1</item>x</item><item>2</item>",
                 {"<item>1</item>", "x</item>", "<item>2</item>"}},
             {"more than asked for", "<item>1</item>2</item>3</item>4</item><item>5</item>",
                 {"<item>1</item>", "2</item>", "3</item>"}},
             {"opened twice", "<item>1<item>2</item></item>", {"<item>1<item>2</item>"}},
         })
        EXPECT_EQ(SplitItems(c.text, 3), c.items) << c.name;
}

TEST(SplitItems, TakesTimeInProportionToTheFile)
{
    // The worst there is for a text search. The small one is split as often as fits into the large one, for
    // which a quadratic search would take a hundred times as long.
    const auto seconds = [](std::size_t size, int times) {
        std::string text = "<item>";
        while (text.size() < size)
            text += "</ite<item";
        text += "</item>";
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < times; ++i)
            EXPECT_EQ(SplitItems(text, 10).size(), 1U);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double small = seconds(40'000, 100);
    EXPECT_LT(seconds(4'000'000, 1), small * 10 + 0.01);
}

} // namespace vantro
