#include "downloader/PropertyBag.h"
#include "downloader/SavedForm.h"

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
    EXPECT_EQ(SavedProperties("frmMain", "download(9)").ReadInt32("BorderStyle", 1), 0);
    EXPECT_EQ(SavedProperties("frmMain", "Vantro_Download").ReadInt32("BorderStyle", 1), 1);
}

} // namespace vantro
