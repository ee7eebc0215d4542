#include "web/PageAddress.h"

#include "base/TextCoding.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <glib.h>
#include <iterator>
#include <system_error>
#include <utility>

namespace vantro {

namespace {

constexpr std::array<std::pair<std::string_view, char>, 9> kNamed = {{{"amp", '&'}, {"AMP", '&'}, {"lt", '<'},
    {"LT", '<'}, {"gt", '>'}, {"GT", '>'}, {"quot", '"'}, {"QUOT", '"'}, {"apos", '\''}}};

bool ContinuesName(char byte)
{
    return g_ascii_isalnum(byte) || byte == '=';
}

// What HTML makes of the number of a character.
std::string CharacterOf(std::uint32_t number)
{
    if (number >= 0x80 && number < 0xA0)
        return DecodePageText(std::string(1, static_cast<char>(number))); // Windows-1252, as ever
    if (number == 0 || number > 0x10FFFF || (number >= 0xD800 && number < 0xE000))
        number = 0xFFFD;
    std::array<char, 6> bytes{}; // the most that the call writes
    const int length = g_unichar_to_utf8(number, bytes.data());
    return {bytes.data(), static_cast<std::size_t>(length)};
}

// The character that a reference at the start of `text` ("&...") stands for, and the length of the reference;
// the ampersand itself where there is none.
std::pair<std::string, std::size_t> Dereference(std::string_view text)
{
    const auto closed
        = [&](std::size_t end) { return end < text.size() && text[end] == ';' ? end + 1 : end; };
    if (text.starts_with("&#")) {
        const bool isHex = text.size() > 2 && (text[2] | 0x20) == 'x';
        const char* digits = text.data() + (isHex ? 3 : 2);
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(digits, text.data() + text.size(), number, isHex ? 16 : 10);
        if (end == digits)
            return {"&", 1};
        return {CharacterOf(error == std::errc() ? number : 0),
            closed(static_cast<std::size_t>(end - text.data()))};
    }
    for (const auto& [name, character] : kNamed) {
        const std::size_t end = 1 + name.size();
        if (!text.substr(1).starts_with(name))
            continue;
        const bool isOpen = closed(end) == end;
        // Without its semicolon it may be the name of a query's value.
        if (!isOpen || (character != '\'' && (end == text.size() || !ContinuesName(text[end]))))
            return {std::string(1, character), closed(end)};
    }
    return {"&", 1};
}

} // namespace

std::string AsciiAddress(std::string_view utf8)
{
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string address;
    for (const char byte : utf8) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80)
            address.push_back(byte);
        else
            address.append({'%', kHex[code >> 4U], kHex[code & 0xFU]});
    }
    return address;
}

std::string AddressOfLink(std::string_view written)
{
    written = written.substr(0, written.find('"'));
    std::string meant;
    while (!written.empty()) {
        const auto [text, length] = written.front() == '&'
            ? Dereference(written)
            : std::pair(std::string(1, written.front()), std::size_t{1});
        meant += text;
        written.remove_prefix(length);
    }
    const auto isBlank = [](unsigned char byte) { return byte <= ' '; };
    const auto begin = std::ranges::find_if_not(meant, isBlank);
    const auto end = std::find_if_not(meant.rbegin(), std::reverse_iterator(begin), isBlank).base();
    std::string address(begin, end);
    std::erase_if(address, [](char byte) { return byte == '\t' || byte == '\n' || byte == '\r'; });
    return AsciiAddress(address);
}

} // namespace vantro
