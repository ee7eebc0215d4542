#include "downloader/PropertyBag.h"

#include <gtest/gtest.h>

namespace vantro {

TEST(PropertyBagTest, StoresWhatDiffersFromItsDefaultAndReadsItBackFromAForm)
{
    PropertyBag bag;
    bag.WriteColour("ForeColor", 0x80000012, 0x8000000F);
    bag.WriteInt32("BorderStyle", 0, 1);
    bag.WriteBool("Enabled", false, true);
    bag.WriteString("FileURL", "http://a.example/\"x\" = 'y'\xC3\xA9", "");
    bag.WriteString("SaveFilePath", "two\nlines", "");
    bag.WriteInt32("BorderStyle", 1, 1);
    const SavedControl controls[] = {{"bkDLControl", "download(0)", bag}, {"bkDLControl", "d", {}}};
    const std::string form = PrintSavedForm(controls);
    EXPECT_EQ(form,
        "Begin bkDLControl download(0)\n   forecolor = &H80000012&\n   enabled = 0\n"
        "   fileurl = \"http://a.example/\"\"x\"\" = 'y'\xC3\xA9\"\nEnd\nBegin bkDLControl d\nEnd\n");

    const auto read = ParseSavedForm(form);
    ASSERT_EQ(PrintSavedForm(read), form);
    EXPECT_FALSE(read[0].properties.ReadBool("ENABLED", true));
    EXPECT_EQ(read[0].properties.ReadString("FileURL", ""), "http://a.example/\"x\" = 'y'\xC3\xA9");
}

TEST(PropertyBagTest, SkipsGarbageAndKeepsNestedBlocksApart)
{
    const auto read
        = ParseSavedForm("VERSION 5.00\r\nlost = 1\nEnd\n= 3\r\nBegin Form frmMain\r\n begin bkDLControl d \n"
                         "  x = 1\n  X = 2\n  = 4\n  y =\n  what\n end\n Begin\n  End = 5\nx=-1");
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[1].className + "|" + read[1].name, "bkDLControl|d");
    EXPECT_EQ(read[1].properties.Properties().size(), 1U);
    EXPECT_EQ(read[1].properties.ReadInt32("x", 0), 2);
    EXPECT_EQ(read[0].properties.ReadInt32("end", 0), 5);
    EXPECT_TRUE(read[0].properties.ReadBool("X", false));
    EXPECT_EQ(read[0].properties.ReadInt32("lost", 3) + read[1].properties.ReadInt32("y", 4), 7);
}

} // namespace vantro
