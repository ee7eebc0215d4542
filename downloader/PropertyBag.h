#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// The saved properties of one control: an ordered list of names and texts, as they stand in a saved form.
// Names match without regard to the case of ASCII letters. A value equal to its default is not stored, and
// writing one removes what was stored under the name. A stored text that is none of the type asked for reads
// as the default.
//
// The texts: a flag is -1 (true) or 0, a number is decimal, a colour is &H80000012& (read in decimal as
// well), a text stands in double quotes with every quote in it doubled.
class PropertyBag {
public:
    struct Property {
        std::string name;
        std::string text;
    };

    // The text as it is stored, or would be.
    [[nodiscard]] std::string ReadProperty(std::string_view name, std::string_view defaultText) const;
    void WriteProperty(std::string_view name, std::string_view text, std::string_view defaultText);

    [[nodiscard]] bool ReadBool(std::string_view name, bool defaultValue) const;
    void WriteBool(std::string_view name, bool value, bool defaultValue);
    [[nodiscard]] std::int32_t ReadInt32(std::string_view name, std::int32_t defaultValue) const;
    void WriteInt32(std::string_view name, std::int32_t value, std::int32_t defaultValue);
    [[nodiscard]] std::uint32_t ReadColour(std::string_view name, std::uint32_t defaultValue) const;
    void WriteColour(std::string_view name, std::uint32_t value, std::uint32_t defaultValue);
    [[nodiscard]] std::string ReadString(std::string_view name, std::string_view defaultValue) const;
    void WriteString(std::string_view name, std::string_view value, std::string_view defaultValue);

    // In the order in which the names were first written.
    [[nodiscard]] const std::vector<Property>& Properties() const { return properties_; }

private:
    [[nodiscard]] const Property* Find(std::string_view name) const;

    std::vector<Property> properties_;
};

struct SavedControl {
    std::string className; // "bkDLControl"
    std::string name; // "download(0)"
    PropertyBag properties;
};

// Reads the text of a saved form:
//
//     Begin bkDLControl download(0)
//        forecolor = &H80000012&
//     End
//
// The controls come in the order of their Begin lines; blocks may be nested. A line that is none of the three
// is skipped, and so is a property outside of any block. A name given twice keeps the later text.
[[nodiscard]] std::vector<SavedControl> ParseSavedForm(std::string_view text);

// The text that ParseSavedForm reads back to the same controls, names in lower case. A property whose text
// holds a line break cannot stand in it and is left out.
[[nodiscard]] std::string PrintSavedForm(std::span<const SavedControl> controls);

} // namespace vantro
