#include "base/ReadableText.h"

#include <cstddef>

namespace vantro {

namespace {

constexpr std::size_t kLongestText = 400; // characters
constexpr std::size_t kLongestWord = 56; // characters, about the width of a line

bool BeginsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

} // namespace

std::string ReadableText(std::string_view utf8)
{
    std::string readable;
    std::size_t length = 0;
    std::size_t word = 0;
    for (const char byte : utf8) {
        if (byte == '\r')
            continue;
        if (BeginsCharacter(byte)) {
            if (++length > kLongestText)
                return readable + "\xE2\x80\xA6";
            word = byte == ' ' || byte == '\n' ? 0 : word + 1;
            if (word > kLongestWord) {
                readable += '\n';
                word = 1;
            }
        }
        readable += byte;
    }
    return readable;
}

} // namespace vantro
