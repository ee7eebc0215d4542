// The minutes box, against the C library's idea of a number.

#include "fuzz/Fuzz.h"
#include "settings/MinutesText.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

void vantro::Try(std::string_view bytes)
{
    std::string plain;
    for (const char c : bytes) {
        if (std::string_view(" \t\r\n").find(c) != std::string_view::npos)
            continue;
        if (std::string_view("0123456789+-.eEdD").find(c) == std::string_view::npos)
            break; // what the library would read beyond it: hexadecimal, infinity
        plain += c == 'd' || c == 'D' ? 'e' : c;
    }
    using Limits = std::numeric_limits<std::int32_t>;
    const double whole = std::nearbyint(std::strtod(plain.c_str(), nullptr));
    Require(MinutesFromText(bytes)
            == static_cast<std::int32_t>(std::clamp<double>(whole, Limits::min(), Limits::max())),
        "minutes are the number that the text starts with");
}
