#include "base/AsciiText.h"
#include "feeds/modXML.h"

#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <string>

namespace vantro {

using Texts = std::vector<std::string_view>;

TEST(ExtractTag, TakesWhatStandsBetweenTheFirstTagsOfAName)
{
    for (const auto& [name, tag, text, result] : {
             std::tuple{"capitals keep the content's case", "title", "<TITLE>NeWs</Title>", "NeWs"},
             {"a name with blanks and capitals", "  TiTle ", "<title>News</title>", "News"},
             {"no such element", "link", "<title>News</title>", ""},
             {"never closed", "link", "<link>http", ""},
             {"the first of two", "title", "<title>One</title><title>Two</title>", "One"},
             {"closed before it opens", "title", "</title><title>One</title>", ""},
             {"an attribute is no opening tag", "title", "<title lang=\"en\">One</title>", ""},
             {"self-closing is no opening tag", "title", "<title/>One</title>", ""},
             {"markup, entities and CDATA stay", "d", "<d> <b>a</b> &amp; <![CDATA[x]]> </d>",
                 " <b>a</b> &amp; <![CDATA[x]]> "},
             {"a longer name is another", "link", "<linked>a</linked><link>b</link>", "b"},
             {"a tab belongs to the name", "\ttitle", "<title>News</title>", ""},
             {"blanks alone are no name", "  ", "<>x</>", "x"},
         }) {
        EXPECT_EQ(ExtractTag(tag, text), result) << name;
        const std::string element = ToLowerAscii(Trim(tag, " "));
        const std::string item = "<item>" + std::string(text) + "</item>";
        EXPECT_EQ(CutItems(item, 1, std::array<std::string_view, 1>{element}), (Texts{item, result})) << name;
    }
}

TEST(SplitItems, CutsAFeedIntoItsItems)
{
    for (const auto& [name, text, items] : {
             std::tuple{"no items", "<title>x</title>", Texts{}},
             {"only closing", "x</item>", {}},
             {"the header belongs to no item", "<title>h</title><item>1</item>", {"<item>1</item>"}},
             {"what lies between belongs to the next", "<item>1</item> <a>b</a><item>2</item>",
                 {"<item>1</item>", " <a>b</a><item>2</item>"}},
             {"capitals", "<ITEM>1</Item><iTEM>2</ITEM>", {"<ITEM>1</Item>", "<iTEM>2</ITEM>"}},
             {"cut short", "<item>1</item><item>2</item><item>3", {"<item>1</item>", "<item>2</item>"}},
             {"closing first", "</item><item>1</item>", {"<item>1</item>"}},
             {"more than asked for", "<item>1</item>2</item>3</item>4</item><item>5</item>",
                 {"<item>1</item>", "2</item>", "3</item>"}},
             {"opened twice", "<item>1<item>2</item></item>", {"<item>1<item>2</item>"}},
         })
        EXPECT_EQ(SplitItems(text, 3), items) << name;
}

TEST(SplitItems, TakesTimeInProportionToTheFile)
{
    std::string text = "<item>"; // the worst there is for a text search: quadratic, it takes minutes
    for (int i = 0; i < 400'000; ++i)
        text += "</ite<item";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(SplitItems(text + "</item>", 10).size(), 1U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

} // namespace vantro
