#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <ratio>
#include <string>
#include <utility>
#include <vector>

namespace vantro {

// What a benchmark has measured goes to its standard output in lines that bench/report makes the table and
// the plots of; a line that comes again adds its samples. The line "note", a tab and a sentence puts that
// below the table.

inline void TellSamples(const std::vector<double>& samples)
{
    const char* between = "\t";
    for (const double sample : samples)
        std::printf("%s%.6g", std::exchange(between, " "), sample);
    std::printf("\n");
}

// A row of the table. `aim` is what is looked at and asked for: "median at most 30 ms", "99 % at most 60 ms",
// "largest 16 ms" where nothing is asked for.
inline void TellFigure(
    const char* part, const std::string& what, const std::string& aim, const std::vector<double>& samples)
{
    std::printf("figure\t%s\t%s\t%s", part, what.c_str(), aim.c_str());
    TellSamples(samples);
}

// A point of a curve, over a feed of so many items.
inline void TellPoint(
    const char* plot, const std::string& curve, std::size_t items, const std::vector<double>& samples)
{
    std::printf("point\t%s\t%s\t%zu", plot, curve.c_str(), items);
    TellSamples(samples);
}

[[nodiscard]] inline double MillisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// REQUIRES: there are some.
[[nodiscard]] inline double Median(std::vector<double> samples)
{
    std::ranges::sort(samples);
    return samples[samples.size() / 2];
}

} // namespace vantro
