#include "base/Words.h"

#include <cstddef>
#include <glib.h>
#include <utility>

namespace vantro {

namespace {

// In one pass, so that a value may hold what looks like a place.
std::string Filled(std::string_view sentence, std::initializer_list<std::string_view> values)
{
    std::string filled;
    for (std::size_t i = 0; i < sentence.size(); ++i) {
        const char next = sentence[i] == '%' && i + 1 < sentence.size() ? sentence[i + 1] : '\0';
        if (next >= '1' && std::cmp_less_equal(next - '0', values.size())) {
            filled += values.begin()[next - '1'];
            ++i;
        } else {
            filled += sentence[i];
        }
    }
    return filled;
}

} // namespace

const char* Words(const char* english)
{
    return g_dgettext(kCatalogue, english);
}

std::string Words(const char* english, std::initializer_list<std::string_view> values)
{
    return Filled(Words(english), values);
}

std::string CountedWords(const char* one, const char* many, std::int64_t count)
{
    const char* sentence = g_dngettext(kCatalogue, one, many, static_cast<gulong>(count));
    return Filled(sentence, {std::to_string(count)});
}

} // namespace vantro
