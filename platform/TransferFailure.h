#pragma once

#include <curl/curl.h>
#include <string>
#include <string_view>

namespace vantro {

// Why a transfer from `host` ended, as a sentence for the user. The same failure always gives the same
// sentence: libcurl's own texts hold times and counts, so that the host of a download could not tell a new
// failure from one it has shown.
[[nodiscard]] std::string FailureSentence(CURLcode code, const std::string& host);

// A text from outside as it may stand in a sentence: its first 200 bytes, and then "..." if there was more.
[[nodiscard]] std::string Shortened(std::string_view text);

} // namespace vantro
