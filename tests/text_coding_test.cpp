#include "base/AsciiText.h"
#include "base/TextCoding.h"

#include <gtest/gtest.h>

namespace vantro {

using namespace std::string_literals;

TEST(TextCoding, ReadsFeedTextAsUtf8OrElseAsWindows1252)
{
    for (const auto& [name, bytes, text] : {
             std::tuple{"UTF-8 stays", "Gr\xC3\xBC\xC3\x9F"s, "Grüß"s},
             {"UTF-8 with a zero byte stays", "\0\xC3\xBC"s, "\0ü"s},
             {"single bytes", "\xE9\x80\x93x\x94"s, "é€“x”"s},
             {"one wrong byte makes all of it single bytes", "\xC3\xBC\xFF"s, "Ã¼ÿ"s},
             {"cut in the middle of a character", "\xE2\x82"s, "â‚"s},
             {"over-long form", "\xC0\xAF"s, "À¯"s},
             {"a surrogate", "\xED\xA0\x80"s, "í\u00A0€"s},
             {"unassigned bytes", "\x81\x9D"s, "\u0081\u009D"s},
         })
        EXPECT_EQ(DecodeFeedText(bytes), text) << name;
}

TEST(TextCoding, WritesPagesInSingleBytesWithReferencesForTheRest)
{
    EXPECT_EQ(EncodePageText("Süß: 5 € – “ok”"), "S\xFC\xDF: 5 \x80 \x96 \x93ok\x94");
    EXPECT_EQ(EncodePageText("→ 日 😀"), "&#8594; &#26085; &#128512;");
    EXPECT_EQ(EncodePageText("a\0b"s), "a\0b"s);
    EXPECT_EQ(EncodePageText("bad \xFF end"), "bad &#65533; end");
    for (int byte = 1; byte < 256; ++byte) {
        const std::string single(1, static_cast<char>(byte));
        EXPECT_EQ(EncodePageText(DecodeFeedText(single)), single) << byte;
    }
}

TEST(TextCoding, ShowsTextOnOneLineOfLimitedLength)
{
    EXPECT_EQ(OneLine(" a\r\n\t b\0c "s, 20), "a b c");
    EXPECT_EQ(OneLine("äöüß", 3), "äöü…");
    EXPECT_EQ(OneLine("abc", 3), "abc");
    EXPECT_EQ(OneLine("a\u0085b\u2028\u2029 c\v\fd\u0081e", 20), "a b c d e");
    EXPECT_EQ(OneLine("\u202Ea\u2066b\u200F\u061Cc\u200Dd", 20), "abc\u200Dd");
    EXPECT_EQ(OneLine("a" + std::string(64, ' ') + "b", 4), "a …") << "no more is read than fits the line";
}

TEST(AsciiText, LowersLettersAloneAndTrimsBothEnds)
{
    EXPECT_EQ(ToLowerAscii("@AZ[az\xC3\x84"), "@az[az\xC3\x84");
    EXPECT_TRUE(Trim(" \t").empty() && Trim("\ta b\r\n") == "a b");
}

} // namespace vantro
