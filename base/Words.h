#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace vantro {

// Sentences for the user stand in English where they are said, whole, and are shown in the user's language
// where po/ has them in it. What must be the same in every language is no argument of these functions. Any
// thread.

inline constexpr const char* kCatalogue = "vantro"; // the name of the files of translated sentences

// Lives as long as the program. UTF-8, as all results here.
[[nodiscard]] const char* Words(const char* english);
// With the first value in the place of every "%1", the second in that of every "%2", up to nine.
[[nodiscard]] std::string Words(const char* english, std::initializer_list<std::string_view> values);
// What is said of one, or of another number of things: the number is in the place of "%1".
[[nodiscard]] std::string CountedWords(const char* one, const char* many, std::int64_t count);

// Has a text collected for translation that reaches Words() in a variable.
consteval const char* Marked(const char* english)
{
    return english;
}

} // namespace vantro
