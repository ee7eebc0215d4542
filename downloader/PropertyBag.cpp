#include "downloader/PropertyBag.h"

#include "base/AsciiText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <system_error>

namespace vantro {

namespace {

template <class Number>
std::optional<Number> ParseNumber(std::string_view text, int base = 10)
{
    Number value{};
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value, base);
    if (read.ec != std::errc{} || read.ptr != end)
        return std::nullopt;
    return value;
}

std::optional<std::uint32_t> ParseColour(std::string_view text)
{
    if (!IsSameIgnoringCase(text.substr(0, 2), "&H")) {
        if (const auto isSigned = ParseNumber<std::int32_t>(text))
            return static_cast<std::uint32_t>(*isSigned);
        return ParseNumber<std::uint32_t>(text);
    }
    text.remove_prefix(2);
    if (text.ends_with('&'))
        text.remove_suffix(1);
    return ParseNumber<std::uint32_t>(text, 16);
}

std::string PrintColour(std::uint32_t colour)
{
    char text[sizeof "&H00000000&"];
    std::snprintf(text, sizeof text, "&H%08X&", colour);
    return text;
}

std::string Quote(std::string_view value)
{
    std::string text = "\"";
    for (const char c : value)
        text.append(c == '"' ? 2 : 1, c);
    return text + '"';
}

std::optional<std::string> Unquote(std::string_view text)
{
    if (text.size() < 2 || text.front() != '"' || text.back() != '"')
        return std::nullopt;
    text = text.substr(1, text.size() - 2);
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"' && (++i == text.size() || text[i] != '"'))
            return std::nullopt;
        value += text[i];
    }
    return value;
}

// The part before the first blank; `text` keeps what follows.
std::string_view TakeWord(std::string_view& text)
{
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text = Trim(text.substr(word.size()));
    return word;
}

} // namespace

const PropertyBag::Property* PropertyBag::Find(std::string_view name) const
{
    const auto found = std::ranges::find_if(
        properties_, [&](const Property& property) { return IsSameIgnoringCase(property.name, name); });
    return found == properties_.end() ? nullptr : &*found;
}

std::string PropertyBag::ReadProperty(std::string_view name, std::string_view defaultText) const
{
    const Property* found = Find(name);
    return found ? found->text : std::string(defaultText);
}

void PropertyBag::WriteProperty(std::string_view name, std::string_view text, std::string_view defaultText)
{
    const Property* found = Find(name);
    const auto place = found ? properties_.begin() + (found - properties_.data()) : properties_.end();
    if (text == defaultText) {
        if (found)
            properties_.erase(place);
    } else if (found) {
        place->text = text;
    } else {
        properties_.push_back({std::string(name), std::string(text)});
    }
}

bool PropertyBag::ReadBool(std::string_view name, bool defaultValue) const
{
    return ReadInt32(name, defaultValue ? -1 : 0) != 0;
}

void PropertyBag::WriteBool(std::string_view name, bool value, bool defaultValue)
{
    WriteInt32(name, value ? -1 : 0, defaultValue ? -1 : 0);
}

std::int32_t PropertyBag::ReadInt32(std::string_view name, std::int32_t defaultValue) const
{
    return ParseNumber<std::int32_t>(ReadProperty(name, "")).value_or(defaultValue);
}

void PropertyBag::WriteInt32(std::string_view name, std::int32_t value, std::int32_t defaultValue)
{
    WriteProperty(name, std::to_string(value), std::to_string(defaultValue));
}

std::uint32_t PropertyBag::ReadColour(std::string_view name, std::uint32_t defaultValue) const
{
    return ParseColour(ReadProperty(name, "")).value_or(defaultValue);
}

void PropertyBag::WriteColour(std::string_view name, std::uint32_t value, std::uint32_t defaultValue)
{
    WriteProperty(name, PrintColour(value), PrintColour(defaultValue));
}

std::string PropertyBag::ReadString(std::string_view name, std::string_view defaultValue) const
{
    return Unquote(ReadProperty(name, "")).value_or(std::string(defaultValue));
}

void PropertyBag::WriteString(std::string_view name, std::string_view value, std::string_view defaultValue)
{
    WriteProperty(name, Quote(value), Quote(defaultValue));
}

std::vector<SavedControl> ParseSavedForm(std::string_view text)
{
    std::vector<SavedControl> controls;
    std::vector<std::size_t> open; // places in `controls`, innermost last
    while (!text.empty()) {
        const auto lineEnd = std::min(text.find('\n'), text.size());
        const std::string_view line = Trim(text.substr(0, lineEnd));
        text.remove_prefix(std::min(lineEnd + 1, text.size()));

        std::string_view rest = line;
        const std::string_view word = TakeWord(rest);
        const auto equals = line.find('=');
        if (IsSameIgnoringCase(word, "Begin") && !rest.empty() && !rest.starts_with('=')) {
            const std::string_view className = TakeWord(rest);
            open.push_back(controls.size());
            controls.push_back({std::string(className), std::string(rest), {}});
        } else if (IsSameIgnoringCase(word, "End") && rest.empty()) {
            if (!open.empty())
                open.pop_back();
        } else if (equals != std::string_view::npos && equals > 0 && !open.empty()) {
            const std::string_view value = Trim(line.substr(equals + 1));
            if (!value.empty())
                controls[open.back()].properties.WriteProperty(Trim(line.substr(0, equals)), value, "");
        }
    }
    return controls;
}

std::string PrintSavedForm(std::span<const SavedControl> controls)
{
    std::string text;
    for (const SavedControl& control : controls) {
        text += "Begin " + control.className + " " + control.name + "\n";
        for (const auto& [name, value] : control.properties.Properties()) {
            if (value.find_first_of("\r\n") == std::string::npos)
                text += "   " + ToLowerAscii(name) + " = " + value + "\n";
        }
        text += "End\n";
    }
    return text;
}

} // namespace vantro
