// Taking the items out of a feed, next to three XML parsers that read the same elements of the same items.

#include "base/Owned.h"
#include "bench/BenchFeed.h"
#include "feeds/modXML.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <expat.h>
#include <libxml/parser.h>
#include <map>
#include <optional>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vantro {

namespace {

constexpr std::string_view kElements[] = {"title", "link", "description"};

constexpr std::size_t kMost = 1'000'000; // items

// What a reader found: enough to see that all of them read the same.
struct Found {
    std::size_t items = 0;
    std::size_t fields = 0;

    friend bool operator==(const Found&, const Found&) = default;
};

Found ReadOurs(std::string_view feed)
{
    Found found;
    const std::vector<std::string_view> rows = CutItems(feed, kMost, kElements);
    found.items = rows.size() / (1 + std::size(kElements));
    found.fields
        = static_cast<std::size_t>(std::ranges::count_if(rows, [](auto text) { return !text.empty(); }))
        - found.items;
    return found;
}

Found ReadPugixml(std::string_view feed)
{
    Found found;
    pugi::xml_document document;
    document.load_buffer(feed.data(), feed.size());
    for (const pugi::xml_node item : document.child("rss").child("channel").children("item")) {
        ++found.items;
        for (const std::string_view element : kElements)
            found.fields += *item.child_value(element.data()) != '\0' ? 1 : 0;
    }
    return found;
}

Found ReadLibxml2(std::string_view feed)
{
    Found found;
    const Owned<xmlDoc, xmlFreeDoc> document(xmlReadMemory(feed.data(), static_cast<int>(feed.size()),
        nullptr, nullptr, XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    const xmlNode* root = document ? xmlDocGetRootElement(document.get()) : nullptr;
    const xmlNode* channel = root != nullptr ? xmlFirstElementChild(const_cast<xmlNode*>(root)) : nullptr;
    for (const xmlNode* item = channel != nullptr ? channel->children : nullptr; item != nullptr;
         item = item->next) {
        if (xmlStrEqual(item->name, BAD_CAST "item") == 0)
            continue;
        ++found.items;
        for (const xmlNode* field = item->children; field != nullptr; field = field->next) {
            for (const std::string_view element : kElements) {
                if (xmlStrEqual(field->name, BAD_CAST element.data()) == 0)
                    continue;
                xmlChar* text = xmlNodeGetContent(field);
                found.fields += text != nullptr && *text != 0 ? 1 : 0;
                xmlFree(text);
            }
        }
    }
    return found;
}

struct ExpatState {
    Found found;
    bool inItem = false;
    bool inField = false;
    std::string text;
};

void XMLCALL Open(void* data, const XML_Char* name, const XML_Char** /*attributes*/)
{
    auto& state = *static_cast<ExpatState*>(data);
    if (std::strcmp(name, "item") == 0) {
        state.inItem = true;
        ++state.found.items;
    }
    for (const std::string_view element : kElements)
        state.inField |= state.inItem && name == element;
    state.text.clear();
}

void XMLCALL Close(void* data, const XML_Char* name)
{
    auto& state = *static_cast<ExpatState*>(data);
    if (std::exchange(state.inField, false))
        state.found.fields += state.text.empty() ? 0 : 1;
    if (std::strcmp(name, "item") == 0)
        state.inItem = false;
}

void XMLCALL TakeText(void* data, const XML_Char* text, int length)
{
    auto& state = *static_cast<ExpatState*>(data);
    if (state.inField)
        state.text.append(text, static_cast<std::size_t>(length));
}

Found ReadExpat(std::string_view feed)
{
    ExpatState state;
    const Owned<std::remove_pointer_t<XML_Parser>, XML_ParserFree> parser(XML_ParserCreate(nullptr));
    XML_SetUserData(parser.get(), &state);
    XML_SetElementHandler(parser.get(), Open, Close);
    XML_SetCharacterDataHandler(parser.get(), TakeText);
    XML_Parse(parser.get(), feed.data(), static_cast<int>(feed.size()), XML_TRUE);
    return state.found;
}

// What makes a careless splitter look at everything again and again: openings without an end, and half tags.
std::string HostileFeed()
{
    std::string feed = "<rss><channel>";
    for (int i = 0; i < 100'000; ++i)
        feed += "<item><item <title></titl";
    return feed;
}

// A scan for the first letter of every tag, which nothing that looks at each of them can do without.
Found ReadTagOpenings(std::string_view feed)
{
    Found found;
    for (std::size_t at = feed.find('<'); at != std::string_view::npos; at = feed.find('<', at + 1))
        ++found.fields;
    return found;
}

// Bytes per second of CPU time, of each run of a benchmark.
using Rates = std::map<std::string, std::vector<double>>;

void AddReader(Rates& rates, const char* reader, const char* feedName, const std::string& feed,
    Found (*read)(std::string_view), std::optional<Found> expected)
{
    const std::string name = std::string(feedName) + "/" + reader;
    benchmark::RegisterBenchmark(name.c_str(),
        [&feed, &rates, name, read, expected](benchmark::State& state) {
            Found found;
            const std::clock_t start = std::clock();
            for ([[maybe_unused]] auto _ : state)
                benchmark::DoNotOptimize(found = read(feed));
            const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
            if (expected && found != *expected)
                state.SkipWithError("read something else than the others");
            const auto bytes = state.iterations() * static_cast<std::int64_t>(feed.size());
            state.SetBytesProcessed(bytes);
            if (seconds > 0)
                rates[name].push_back(static_cast<double>(bytes) / seconds);
        })
        ->Unit(benchmark::kMicrosecond);
}

double Median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values.empty() ? 0 : values[values.size() / 2];
}

// True when the promises are kept: the goal itself, and what of it does not depend on the machine.
bool Report(Rates& rates)
{
    bool allKept = true;
    std::printf("\n%-16s %10s %18s %22s\n", "cutting", "MB/s", "times pugixml", "of a plain scan");
    for (const char* name : {"40 items", "1,000 items", "100,000 items"}) {
        const std::string feed = name;
        const double ours = Median(rates[feed + "/vantro"]);
        const double scan = ours / Median(rates[feed + "/scan"]);
        const double pugixml = ours / Median(rates[feed + "/pugixml"]);
        const bool kept = ours >= 2e9 && scan >= 0.5 && pugixml >= 1;
        std::printf("%-16s %10.0f %18.2f %22.2f   (at least 2000, 1, 0.5)  %s\n", name, ours / 1e6, pugixml,
            scan, kept ? "kept" : "MISSED");
        allKept &= kept;
    }
    return allKept;
}

} // namespace

} // namespace vantro

int main(int argc, char** argv)
{
    using namespace vantro;
    benchmark::Initialize(&argc, argv);
    Rates rates;
    const std::string feeds[] = {MakeFeed(1, 40), MakeFeed(1, 1'000), MakeFeed(1, 100'000)};
    const std::string hostile = HostileFeed();
    const auto addAll = [&](const char* name, const std::string& feed, std::size_t items) {
        const Found all{items, 3 * items};
        AddReader(rates, "vantro", name, feed, ReadOurs, all);
        AddReader(rates, "scan", name, feed, ReadTagOpenings, {});
        AddReader(rates, "pugixml", name, feed, ReadPugixml, all);
        AddReader(rates, "expat", name, feed, ReadExpat, all);
        AddReader(rates, "libxml2", name, feed, ReadLibxml2, all);
    };
    addAll("40 items", feeds[0], 40);
    addAll("1,000 items", feeds[1], 1'000);
    addAll("100,000 items", feeds[2], 100'000);
    // The others give up at the first fault of it, which says nothing about their speed.
    AddReader(rates, "vantro", "hostile", hostile, ReadOurs, Found{});
    benchmark::RunSpecifiedBenchmarks();
    xmlCleanupParser();
    return Report(rates) ? 0 : 1;
}
