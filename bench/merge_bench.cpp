// How long a whole merge takes: file, store on disk and tree, against what the program promises.

#include "bench/BenchFeed.h"
#include "feeds/SiteOperations.h"
#include "platform/RegistryStore.h"
#include "settings/modRegistry.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <stdexcept>
#include <vector>

namespace vantro {

namespace {

namespace fs = std::filesystem;

// Two feeds of `count` items that share half of their titles, received in turn: of every list received, half
// is new.
class AlternatingFeeds {
public:
    explicit AlternatingFeeds(int count) : feeds_{MakeFeed(0, count), MakeFeed(count / 2, count)}
    {
        registry_.CreateRegKey(RegRoot, RegPath);
        AddSiteRoots(tree_);
        Receive();
    }
    ~AlternatingFeeds() { fs::remove_all(folder_); }
    AlternatingFeeds(const AlternatingFeeds&) = delete;
    AlternatingFeeds& operator=(const AlternatingFeeds&) = delete;

    // Seconds that the next merge takes.
    double Receive()
    {
        const fs::path file = folder_ / "feed.xml";
        std::ofstream(file, std::ios::binary) << feeds_[next_];
        next_ = 1 - next_;
        const auto start = std::chrono::steady_clock::now();
        MergeFeed(modMAXCONSOLE, {store_, registry_, tree_, [] {}, Fail}, file);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    // Beside the program: the system's folder for temporary files may lie in memory.
    static fs::path MakeFolder()
    {
        std::string name = (fs::current_path() / "merge-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder for the store");
        return name;
    }
    static void Fail(const std::string& sentence) { throw std::runtime_error(sentence); }

    fs::path folder_ = MakeFolder();
    RegistryStore store_{folder_ / "registry.db"};
    modRegistry registry_{store_};
    NewsTree tree_;
    std::string feeds_[2];
    std::size_t next_ = 0;
};

using Samples = std::map<int, std::vector<double>>; // seconds, by the number of items

void MeasureMerge(benchmark::State& state, Samples& samples)
{
    const int count = static_cast<int>(state.range(0));
    AlternatingFeeds feeds(count);
    for ([[maybe_unused]] auto _ : state) {
        const double seconds = feeds.Receive();
        state.SetIterationTime(seconds);
        samples[count].push_back(seconds);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

double Median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

// True when the promise is kept.
bool Report(const char* promise, double measured, double limit, const char* unit)
{
    const bool kept = measured > 0 && measured <= limit;
    std::printf(
        "%-58s %8.2f %-5s (at most %g)  %s\n", promise, measured, unit, limit, kept ? "kept" : "MISSED");
    return kept;
}

bool ReportPromises(const Samples& samples)
{
    std::printf("\n%9s %10s %14s\n", "items", "merge, ms", "per item, us");
    std::map<int, double> median;
    for (const auto& [count, seconds] : samples) {
        median[count] = Median(seconds);
        std::printf("%9d %10.2f %14.2f\n", count, median[count] * 1e3, median[count] * 1e6 / count);
    }
    std::printf("\n");
    bool kept = Report("1,000 items hold the window", median[1'000] * 1e3, 100, "ms");
    kept &= Report("10,000 stored against 10,000 received", median[10'000] * 1e3, 500, "ms");
    kept &= Report("time per item of 20,000, against that of 1,000",
        median[1'000] > 0 ? median[20'000] / 20 / median[1'000] : 0, 1.3, "times");
    return kept;
}

} // namespace

} // namespace vantro

int main(int argc, char** argv)
{
    vantro::Samples samples;
    benchmark::Initialize(&argc, argv);
    constexpr std::pair<int, int> kCountsAndRounds[] = {{100, 300}, {1'000, 60}, {10'000, 15}, {20'000, 10}};
    for (const auto& [count, rounds] : kCountsAndRounds) {
        benchmark::RegisterBenchmark(
            "Merge", [&](benchmark::State& state) { vantro::MeasureMerge(state, samples); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Arg(count)
            ->Iterations(rounds);
    }
    benchmark::RunSpecifiedBenchmarks();
    return vantro::ReportPromises(samples) ? 0 : 1;
}
