// A download of 64 MiB from a server of this process, beside the curl command line: how fast it is, and for
// how long at once the interface thread is held.

#include "bench/Figures.h"
#include "downloader/DownloadEngine.h"
#include "platform/PrivateFolder.h"
#include "tests/support/HttpServer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <semaphore>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vantro {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kSize = 64UL * 1024 * 1024; // bytes, the most that is taken
constexpr int kRounds = 21;

class NoPump final : public EventPump { // nothing is waited for
    bool RunUntil(const std::function<bool()>& /*done*/) override { return false; }
};

class Downloads {
public:
    Downloads()
    {
        server_.Serve("/large", test::HttpText("200 OK", std::string(kSize, 'x')));
        engine_.SetFileURL(server_.Address("/large"));
        engine_.SetSaveFilePath(folder_);
    }
    ~Downloads() { fs::remove_all(folder_); }
    Downloads(const Downloads&) = delete;
    Downloads& operator=(const Downloads&) = delete;

    struct Cost {
        double whole = 0; // milliseconds
        double longest = 0; // milliseconds for which the interface thread was held at once
    };
    // From the start of the request until the completion has been told. The earlier file is replaced.
    Cost RunOurs()
    {
        Cost cost;
        const auto start = Clock::now();
        const auto hold = [&](const auto& event) {
            const auto began = Clock::now();
            event();
            cost.longest = std::max(cost.longest, MillisecondsSince(began));
        };
        hold([this] { engine_.BeginDownload(); });
        while (engine_.Downloading()) {
            woken_.acquire();
            hold([this] { reader_.Deliver(); });
        }
        cost.whole = MillisecondsSince(start);
        Check("/large", engine_.Saved());
        return cost;
    }

    // Milliseconds by its own account, which leaves out the start and the end of its process.
    double RunCurl()
    {
        const std::string command = "curl --silent --noproxy '*' --write-out '%{time_total}' --output '"
            + folder_.string() + "/by-curl' " + server_.Address("/large");
        std::FILE* output = popen(command.c_str(), "r");
        double seconds = 0;
        const bool isTold = output != nullptr && std::fscanf(output, "%lf", &seconds) == 1;
        Check("/by-curl", output != nullptr && pclose(output) == 0 && isTold);
        return seconds * 1e3;
    }

private:
    void Check(const std::string& name, bool hasEndedWell) const
    {
        if (!hasEndedWell || fs::file_size(folder_.string() + name) != kSize)
            throw std::runtime_error("no whole file at " + name);
    }

    // Beside the program: the system's folder for temporary files may lie in memory.
    const fs::path folder_ = MakePrivateFolder(fs::current_path(), "download-bench-");
    test::HttpServer server_;
    std::counting_semaphore<> woken_{0};
    AsyncRead reader_{[this] { woken_.release(); }};
    NoPump pump_;
    DownloadEngine engine_{reader_, pump_};
};

void TellAll()
{
    Downloads downloads;
    std::vector<double> ours;
    std::vector<double> speed;
    std::vector<double> longest;
    for (int round = -1; round < kRounds; ++round) {
        const double curl = downloads.RunCurl();
        const auto [whole, held] = downloads.RunOurs();
        if (round < 0)
            continue; // there was no file to replace
        ours.push_back(whole);
        speed.push_back(curl / whole);
        longest.push_back(held);
    }
    TellFigure("Downloads", "64 MiB from a server beside it", "median ms", ours);
    TellFigure(
        "Downloads", "64 MiB, speed against the curl command line", "median at least 0.9 times", speed);
    TellFigure("Downloads", "64 MiB, longest hold of the interface thread", "largest at most 16 ms", longest);
}

} // namespace

} // namespace vantro

int main()
{
    vantro::TellAll();
}
