#include "web/HttpAnswer.h"

#include <gtest/gtest.h>

namespace vantro {

TEST(HttpAnswer, CountsNoSizeThatDoesNotSayHowMuchComes)
{
    for (const auto& [line, length] : {std::pair{"X: y", 5}, {"CONTENT-length:\t6 ", 6},
             {"Content-Length: -5", 0}, {"Content-Length: 9223372036854775808", 0},
             {"Transfer-Encoding: chunked", 0}, {"Content-Encoding: gzip", 0},
             {"Content-Encoding: Identity", 5}, {" Content-Length: 7", 5}, {"\tContent-Length: 7", 5}}) {
        HttpAnswer answer;
        for (const char* next : {"HTTP/1.1 503", "Content-Length: 5", line, "", "Content-Length: 8"})
            answer.TakeLine(next); // the last one is a trailer
        EXPECT_EQ(answer.Length(), length) << line;
        EXPECT_EQ(answer.StatusText(), "503 Service Unavailable");
    }
}

} // namespace vantro
