#include "base/TextCoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <glib.h>
#include <unicode/uchar.h>

namespace vantro {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr const char* kEllipsis = "\xE2\x80\xA6";

// Windows-1252 from 0x80 to 0x9F, after the WHATWG Encoding Standard (index-windows-1252).
constexpr auto kWindows1252 = std::to_array<char16_t>({0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020,
    0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C,
    0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178});
static_assert(kWindows1252.size() == 0xA0 - 0x80);

void AppendUtf8(std::string& out, char32_t character)
{
    std::array<char, 6> bytes{}; // the most that the call writes
    const int length = g_unichar_to_utf8(character, bytes.data());
    out.append(bytes.data(), static_cast<std::size_t>(length));
}

// The character at `position`, which is moved behind it; U+FFFD for a byte that is not UTF-8.
char32_t NextCharacter(std::string_view utf8, std::size_t& position)
{
    const char* at = utf8.data() + position;
    if (*at == '\0') { // valid here, not for the library
        ++position;
        return 0;
    }
    const gunichar character = g_utf8_get_char_validated(at, static_cast<gssize>(utf8.size() - position));
    constexpr auto kIncomplete = static_cast<gunichar>(-2); // and -1 for malformed
    if (character >= kIncomplete) {
        ++position;
        return kReplacement;
    }
    position += static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
    return character;
}

bool IsBlank(char32_t character)
{
    return character == U' '
        || (U_GET_GC_MASK(static_cast<UChar32>(character)) & (U_GC_CC_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK))
        != 0;
}

// One of these without its end would also turn what stands behind the text, such as the rest of a sentence.
bool TurnsDirection(char32_t character)
{
    return u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_BIDI_CONTROL) != 0;
}

bool IsAscii(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80;
}

} // namespace

bool IsUtf8(std::string_view bytes)
{
    // The library takes NUL for the end of the text; between NULs it has its own fast loop.
    while (!bytes.empty()) {
        const std::size_t length = std::min(bytes.find('\0'), bytes.size());
        if (g_utf8_validate_len(bytes.data(), length, nullptr) == FALSE)
            return false;
        bytes.remove_prefix(std::min(length + 1, bytes.size()));
    }
    return true;
}

std::string DecodeFeedText(std::string_view bytes)
{
    return IsUtf8(bytes) ? std::string(bytes) : DecodePageText(bytes);
}

std::string DecodePageText(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80)
            out.push_back(byte);
        else
            AppendUtf8(out, code < 0xA0 ? kWindows1252[code - 0x80U] : code);
    }
    return out;
}

std::string EncodePageText(std::string_view utf8)
{
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t position = 0; position < utf8.size();) {
        if (IsAscii(utf8[position])) {
            out.push_back(utf8[position++]);
            continue;
        }
        const char32_t character = NextCharacter(utf8, position);
        const auto special = std::ranges::find(kWindows1252, character);
        if (special != kWindows1252.end())
            out.push_back(static_cast<char>(0x80 + (special - kWindows1252.begin())));
        else if (character >= 0xA0 && character <= 0xFF)
            out.push_back(static_cast<char>(character));
        else
            out += "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ";";
    }
    return out;
}

std::string OneLine(std::string_view utf8, std::size_t most)
{
    constexpr std::size_t kBytesRead = 16; // for each character to show
    std::string out;
    std::size_t shown = 0;
    bool blank = true; // swallows blanks in front
    for (std::size_t position = 0; position < utf8.size();) {
        if (position >= most * kBytesRead)
            return out + kEllipsis;
        const char32_t character = NextCharacter(utf8, position);
        const bool isBlank = IsBlank(character);
        if ((isBlank && blank) || TurnsDirection(character))
            continue;
        if (shown == most)
            return out + kEllipsis;
        blank = isBlank;
        AppendUtf8(out, isBlank ? U' ' : character);
        ++shown;
    }
    if (blank && !out.empty())
        out.pop_back();
    return out;
}
} // namespace vantro
