// How long feeds take from their download to the store on disk and the tree.

#include "base/EventPump.h"
#include "bench/BenchFeed.h"
#include "bench/Figures.h"
#include "platform/AsyncRead.h"
#include "platform/Files.h"
#include "platform/PrivateFolder.h"
#include "platform/ProxyLookup.h"
#include "platform/RegistryStore.h"
#include "settings/modRegistry.h"
#include "shell/RefreshCycle.h"
#include "tests/support/HttpServer.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <semaphore>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantro {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr const char* kPart = "A check";
constexpr int kMergeRounds = 7;

void Fail(const std::string& sentence)
{
    std::fprintf(stderr, "%s\n", sentence.c_str());
    std::abort();
}

// A store on disk and a tree.
class Home {
public:
    Home()
    {
        registry_.CreateRegKey(RegRoot, RegPath);
        AddSiteRoots(tree_);
    }
    ~Home() { fs::remove_all(folder_); }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    [[nodiscard]] FeedServices Services()
    {
        return {registry_, tree_, [] {},
            [](std::string_view, const std::string& sentence) {
                if (!sentence.empty())
                    Fail(sentence);
            }};
    }
    [[nodiscard]] const fs::path& Folder() const { return folder_; }
    [[nodiscard]] std::size_t Count(const Site& site) const
    {
        return tree_.Find(site.identifier)->Children().size();
    }

    // What the next merge of that feed takes.
    struct Cost {
        double milliseconds = 0;
        double cpu = 0; // milliseconds of this process
    };
    Cost Receive(const Site& site, const std::string& feed)
    {
        const fs::path file = folder_ / "feed.xml";
        if (const auto failure = ReplaceFile(file, feed))
            Fail(*failure);
        const std::clock_t cpu = std::clock();
        const auto start = Clock::now();
        MergeFeed(site, Services(), file);
        const double milliseconds = MillisecondsSince(start);
        return {milliseconds, static_cast<double>(std::clock() - cpu) * 1e3 / CLOCKS_PER_SEC};
    }

private:
    // Beside the program: the system's folder for temporary files may lie in memory.
    fs::path folder_ = MakePrivateFolder(fs::current_path(), "merge-bench-");
    RegistryStore store_{folder_ / "registry.db"};
    modRegistry registry_{store_};
    NewsTree tree_;
};

// Checks of all four sites against a server of this process, as the program makes them but for the window.
class Checks {
public:
    explicit Checks(int items) : items_(items) { }

    struct Cost {
        double whole = 0; // milliseconds, from the start of the first request until everything is stored
        double longest = 0; // milliseconds for which the interface thread was held at once
    };
    // All sites serve a feed that begins with this story.
    Cost Run(int firstStory)
    {
        for (const Site* site : Sites())
            server_.Serve(
                std::string(site->feedPath), test::HttpText("200 OK", MakeFeed(firstStory, items_)));
        ended_ = 0;
        Cost cost;
        const auto start = Clock::now();
        cycle_.StartFeedDownloads();
        cost.longest = MillisecondsSince(start);
        while (ended_ < Sites().size()) {
            woken_.acquire();
            const auto event = Clock::now();
            reader_.Deliver();
            cost.longest = std::max(cost.longest, MillisecondsSince(event));
        }
        cost.whole = MillisecondsSince(start);
        for (const Site* site : Sites()) {
            if (home_.Count(*site) != static_cast<std::size_t>(items_))
                Fail("not everything was stored");
        }
        return cost;
    }

private:
    class NoTimer final : public MinuteTimer {
        void Enable(std::chrono::milliseconds /*interval*/) override { }
        void Disable() override { }
    };
    class NoPump final : public EventPump { // nothing is waited for
        bool RunUntil(const std::function<bool()>& /*done*/) override { return false; }
    };

    FeedHosts Hosts()
    {
        FeedHosts hosts;
        for (const Site* site : Sites())
            hosts.addresses[site] = server_.Address("");
        return hosts;
    }

    // The control of the site, which tells when what followed its download has been done.
    DownloadEngine& Control(const Site& site)
    {
        DownloadHooks hooks;
        hooks.Refresh = [this, &site] {
            if (!controls_.at(&site).Downloading())
                ++ended_;
        };
        return controls_.try_emplace(&site, reader_, pump_, std::move(hooks)).first->second;
    }

    int items_;
    std::size_t ended_ = 0;
    test::HttpServer server_;
    Home home_;
    std::counting_semaphore<> woken_{0};
    AsyncRead reader_{[this] { woken_.release(); }, {}, "Vantro", AskDesktopForProxies};
    NoPump pump_;
    std::map<const Site*, DownloadEngine> controls_;
    NoTimer timer_;
    RefreshCycle cycle_{home_.Services(),
        [this](const Site& site) -> DownloadEngine& { return Control(site); }, Hosts(), home_.Folder(),
        timer_, {[](int, const std::string& text) { Fail(text); }, [](auto&) {}, [](auto&) {}, [] {}}};
};

std::string FeedOf(const std::vector<std::string>& titles)
{
    std::string feed;
    for (const std::string& title : titles)
        feed += "<item><title>" + title + "</title><link>http://news.example/</link></item>\n";
    return feed;
}

// Titles that all have the same value in the library's hash (MurmurHash64A): its second half undoes what the
// first one did.
std::vector<std::string> CollidingTitles(std::size_t count)
{
    constexpr std::uint64_t kFactor = 0xc6a4a7935bd1e995;
    std::uint64_t inverse = 1;
    for (int bits = 1; bits < 64; bits *= 2)
        inverse *= 2 - kFactor * inverse;
    const auto mixed = [](std::uint64_t value) { return value ^ (value >> 47); };
    std::vector<std::string> titles;
    for (std::uint64_t number = 0; titles.size() < count; ++number) {
        char halves[17];
        std::snprintf(halves, sizeof halves, "%08llu", static_cast<unsigned long long>(number));
        std::uint64_t first = 0;
        std::memcpy(&first, halves, 8);
        const std::uint64_t state
            = (0xc70f6907ULL ^ 16 * kFactor ^ mixed(first * kFactor) * kFactor) * kFactor;
        const std::uint64_t second = mixed(state * inverse) * inverse;
        std::memcpy(halves + 8, &second, 8);
        const std::string title(halves, 16);
        if (std::ranges::all_of(title, [](char c) { return c >= ' ' && c <= '~' && c != '<'; }))
            titles.push_back(title);
        if (std::hash<std::string>()(title) != std::hash<std::string>()(titles.empty() ? title : titles[0]))
            Fail("the library's hash is another one");
    }
    return titles;
}

// A feed of so many items, of which none is in the list of the other `turn`, 0 or 1, unless said otherwise.
using FeedMaker = std::function<std::string(int count, int turn)>;

std::string Plain(int count, int turn)
{
    return MakeFeed(turn * count, count);
}

std::string Colliding(int count, int turn)
{
    static const std::vector<std::string> titles = CollidingTitles(40'000);
    const auto begin = std::next(titles.begin(), std::ptrdiff_t{turn} * count);
    return FeedOf({begin, begin + count});
}

// The second and all later ones are new each time.
std::string Equal(int count, int /*turn*/)
{
    return FeedOf(std::vector<std::string>(static_cast<std::size_t>(count), "The same"));
}

std::string Unopened(int count, int turn)
{
    std::string feed = "<item>";
    for (int i = 0; i < count; ++i)
        feed += "<title>Story " + std::to_string(turn * count + i) + "</title></item>\n";
    return feed + "<item>";
}

// Merges of so many items with as many stored.
class Merges {
public:
    Merges(const FeedMaker& make, int count) : count_(count), feeds_{make(count, 0), make(count, 1)}
    {
        Run(); // into an empty store
    }
    Home::Cost Run()
    {
        const Home::Cost cost = home_.Receive(modMAXCONSOLE, feeds_[turn_++ % 2]);
        if (home_.Count(modMAXCONSOLE) != static_cast<std::size_t>(count_))
            Fail("not everything was stored");
        return cost;
    }

private:
    int count_;
    std::size_t turn_ = 0;
    std::string feeds_[2];
    Home home_;
};

struct CheckAims {
    int items;
    const char* whole;
    const char* longest;
};

void TellChecks(const CheckAims& aims)
{
    constexpr int kRounds = 31;
    Checks checks(aims.items);
    checks.Run(0);
    std::vector<double> whole;
    std::vector<double> longest;
    std::vector<double> unchanged;
    for (int round = 1; round <= kRounds; ++round) {
        const Checks::Cost cost = checks.Run(round * aims.items / 2);
        whole.push_back(cost.whole);
        longest.push_back(cost.longest);
        unchanged.push_back(checks.Run(round * aims.items / 2).whole);
    }
    const std::string name = "4 feeds of " + std::to_string(aims.items) + " items, half of them new";
    TellFigure(kPart, name + ": first request to stored", aims.whole, whole);
    TellFigure(kPart, name + ": longest hold of the interface thread", aims.longest, longest);
    TellFigure(kPart, name + ": the same again", "median at most 30 ms", unchanged);
}

void TellLargeMerge()
{
    Merges merges(Plain, 10'000);
    std::vector<double> times;
    for (int round = 0; round < kMergeRounds; ++round)
        times.push_back(merges.Run().milliseconds);
    TellFigure(kPart, "10000 stored against 10000 new ones", "median at most 150 ms", times);
}

// The sizes take turns, so that what disturbs the machine disturbs all of them, and each merge finds the
// caches cold, as those of the program do.
void TellMerges(const char* name, const FeedMaker& make)
{
    constexpr int kCounts[] = {1'000, 2'000, 5'000, 10'000};
    std::vector<std::unique_ptr<Merges>> merges;
    for (const int count : kCounts)
        merges.push_back(std::make_unique<Merges>(make, count));
    std::vector<double> cpu[std::size(kCounts)]; // microseconds for each item
    std::vector<double> growth;
    for (int round = 0; round < kMergeRounds; ++round) {
        for (std::size_t size = 0; size < merges.size(); ++size)
            cpu[size].push_back(merges[size]->Run().cpu * 1e3 / kCounts[size]);
        growth.push_back(cpu[merges.size() - 1].back() / cpu[0].back());
    }
    for (std::size_t size = 0; size < merges.size(); ++size)
        TellPoint("merge", name, static_cast<std::size_t>(kCounts[size]), cpu[size]);
    TellFigure(kPart,
        "CPU per item of " + std::to_string(*std::rbegin(kCounts)) + " against " + std::to_string(kCounts[0])
            + ", " + name,
        "median at most 1.3 times", growth);
}

// What no store that lasts can do without, once a feed.
void TellFlush()
{
    const fs::path folder = MakePrivateFolder(fs::current_path(), "merge-bench-");
    const int file = open((folder / "flushed").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    const std::string page(4096, 'x');
    std::vector<double> times;
    for (int i = 0; i < 31; ++i) {
        const auto start = Clock::now();
        if (write(file, page.data(), page.size()) != std::ssize(page) || fdatasync(file) != 0)
            Fail("The disk cannot be written.");
        times.push_back(MillisecondsSince(start));
    }
    close(file);
    fs::remove_all(folder);
    TellFigure(kPart, "one flush of this disk", "median ms", times);
}

void TellAll()
{
    TellFlush();
    TellChecks({40, "median at most 30 ms", "median at most 16 ms"});
    TellChecks({1'000, "median at most 100 ms", "median at most 50 ms"});
    TellLargeMerge();
    TellMerges("different titles", Plain);
    TellMerges("titles that collide", Colliding);
    TellMerges("one title", Equal);
    TellMerges("closing tags alone", Unopened);
}

} // namespace

} // namespace vantro

int main()
{
    vantro::TellAll();
}
