#include "platform/ReadableText.h"

#include "platform/TextCoding.h"

namespace vantro {

namespace {

constexpr std::size_t kLongestText = 400; // characters
constexpr std::size_t kLongestWord = 56; // characters, about the width of a line

bool IsInsideCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string BreakWords(std::string_view line)
{
    std::string broken;
    std::size_t word = 0;
    for (const char byte : line) {
        if (!IsInsideCharacter(byte) && ++word > kLongestWord) {
            broken += '\n';
            word = 1;
        }
        if (byte == ' ')
            word = 0;
        broken += byte;
    }
    return broken;
}

} // namespace

std::string ReadableText(std::string_view utf8)
{
    std::string readable;
    std::size_t left = kLongestText;
    while (left > 0) {
        const std::size_t end = utf8.find('\n');
        const std::string line = OneLine(utf8.substr(0, end), left);
        left -= std::min(left, line.size() + 1);
        readable += BreakWords(line);
        if (end == std::string_view::npos)
            break;
        readable += '\n';
        utf8.remove_prefix(end + 1);
    }
    return readable;
}

} // namespace vantro
