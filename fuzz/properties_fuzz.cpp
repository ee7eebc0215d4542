// The property bag and the saved form it stands in.

#include "downloader/PropertyBag.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vantro {

namespace {

void CheckForm(std::string_view text)
{
    const std::vector<SavedControl> controls = ParseSavedForm(text);
    const std::string printed = PrintSavedForm(controls);
    const std::vector<SavedControl> again = ParseSavedForm(printed);
    Require(PrintSavedForm(again) == printed, "a printed form reads back the same");
    Require(controls.size() == again.size(), "no control is lost in a printed form");
}

// What is written, then printed and read back, is what is read.
void CheckTypes(std::string_view text)
{
    Input input(text);
    const std::uint32_t colour = input.Number(4);
    const auto number = static_cast<std::int32_t>(colour);
    const bool flag = number % 2 == 0;
    const std::string_view line = input.UpTo('\n');
    const bool fits = line.find('\r') == std::string_view::npos;
    SavedControl control{"bkDLControl", "download", {}};
    control.properties.WriteInt32("Number", number, 7);
    control.properties.WriteColour("Colour", colour, 8);
    control.properties.WriteBool("Flag", flag, false);
    control.properties.WriteString("Text", line, "default");
    const std::vector<SavedControl> again = ParseSavedForm(PrintSavedForm({&control, 1}));
    Require(again.size() == 1, "a control reads back");
    const PropertyBag& bag = again.front().properties;
    Require(bag.ReadInt32("number", 7) == number, "a number reads back");
    Require(bag.ReadColour("COLOUR", 8) == colour, "a colour reads back");
    Require(bag.ReadBool("flag", false) == flag, "a flag reads back");
    Require(!fits || bag.ReadString("text", "default") == line, "a text of one line reads back");
    Require(bag.Properties().size() <= 4, "nothing is made up");
}

} // namespace

} // namespace vantro

void vantro::Try(std::string_view bytes)
{
    CheckForm(bytes);
    CheckTypes(bytes);
    for (const SavedControl& control : ParseSavedForm(bytes)) {
        for (const auto& [name, text] : control.properties.Properties()) {
            const PropertyBag& bag = control.properties;
            Require(bag.ReadProperty(name, "") == text, "a stored property is found by its name");
            (void)bag.ReadInt32(name, 0);
            (void)bag.ReadColour(name, 0);
            (void)bag.ReadBool(name, false);
            (void)bag.ReadString(name, "");
        }
    }
}
