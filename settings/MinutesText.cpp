#include "settings/MinutesText.h"

#include "base/Twips.h"

#include <algorithm>
#include <cstddef>
#include <locale>
#include <sstream>
#include <string>

namespace vantro {

namespace {

std::string WithoutBlanks(std::string_view text)
{
    std::string rest(text);
    std::erase_if(rest, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
    return rest;
}

std::size_t SkipDigits(std::string_view text, std::size_t at)
{
    return std::min(text.find_first_not_of("0123456789", at), text.size());
}

std::size_t SkipSign(std::string_view text, std::size_t at)
{
    return at < text.size() && (text[at] == '+' || text[at] == '-') ? at + 1 : at;
}

// The longest start of the text that is a number, its exponent written with an e; empty when there is none.
std::string NumberAtStart(std::string_view text)
{
    const std::size_t start = SkipSign(text, 0);
    std::size_t end = SkipDigits(text, start);
    std::size_t digits = end - start;
    if (end < text.size() && text[end] == '.') {
        const std::size_t fraction = end + 1;
        end = SkipDigits(text, fraction);
        digits += end - fraction;
    }
    if (digits == 0)
        return {};
    std::string number(text.substr(0, end));
    if (end < text.size() && std::string_view("eEdD").find(text[end]) != std::string_view::npos) {
        const std::size_t exponent = SkipSign(text, end + 1);
        const std::size_t exponentEnd = SkipDigits(text, exponent);
        if (exponentEnd > exponent)
            number.append("e").append(text.substr(end + 1, exponentEnd - end - 1));
    }
    return number;
}

} // namespace

std::int32_t MinutesFromText(std::string_view text)
{
    std::istringstream digits(NumberAtStart(WithoutBlanks(text)));
    digits.imbue(std::locale::classic());
    double number = 0.0;
    digits >> number; // the largest double when there is no such, 0 when there is nothing
    return RoundToInt32(number);
}

} // namespace vantro
