// Taking the items out of a feed, next to three XML parsers that read the same elements of the same items.

#include "base/Owned.h"
#include "bench/BenchFeed.h"
#include "bench/Figures.h"
#include "feeds/modXML.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <expat.h>
#include <functional>
#include <iterator>
#include <libxml/parser.h>
#include <malloc.h>
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
constexpr int kRounds = 7;
constexpr int kHeap = 1 << 30; // bytes, more than any reader needs
constexpr const char* kPart = "Cutting";

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

struct Reader {
    const char* name;
    Found (*read)(std::string_view);
    bool isParser = true;
    std::vector<double> rates = {}; // MB/s of CPU time
};

// Reads the feed until it has taken long enough to be measured.
double MeasureRate(const Reader& reader, const std::string& feed, const Found& expected)
{
    constexpr std::clock_t kLeast = CLOCKS_PER_SEC / 50;
    reader.read(feed); // the heap sorts what the reader before has freed
    const std::clock_t start = std::clock();
    std::clock_t spent = 0;
    std::size_t bytes = 0;
    do {
        const Found found = reader.read(feed);
        if (reader.isParser && found != expected)
            throw std::runtime_error(std::string(reader.name) + " read something else than the others");
        bytes += feed.size();
        spent = std::clock() - start;
    } while (spent < kLeast);
    return static_cast<double>(bytes) / static_cast<double>(spent) * CLOCKS_PER_SEC / 1e6;
}

std::vector<double> Quotients(const std::vector<double>& of, const std::vector<double>& by)
{
    std::vector<double> quotients;
    std::ranges::transform(of, by, std::back_inserter(quotients), std::divides());
    return quotients;
}

struct Feed {
    explicit Feed(std::size_t count) : items(count), text(MakeFeed(1, static_cast<int>(count))) { }

    std::size_t items;
    std::string text;
    std::vector<Reader> readers = {{"ours", ReadOurs}, {"pugixml", ReadPugixml}, {"expat", ReadExpat},
        {"libxml2", ReadLibxml2}, {"plain scan", ReadTagOpenings, false}};
};

void TellFigures(const Feed& feed)
{
    const std::string name = std::to_string(feed.items) + " items";
    const std::vector<double>& ours = feed.readers.front().rates;
    const Reader& scan = feed.readers.back();
    TellFigure(kPart, name, "median at least 2000 MB/s", ours);
    for (const Reader& other : feed.readers) {
        if (&other.rates != &ours && &other != &scan)
            TellFigure(kPart, name + ", speed against " + other.name, "median at least 1 times",
                Quotients(ours, other.rates));
    }
    TellFigure(kPart, name + ", speed against a plain scan for tags", "median at least 0.5 times",
        Quotients(ours, scan.rates));
}

// The readers take turns, so that what disturbs the machine disturbs all of them.
void TellReaders()
{
    std::vector<Feed> feeds;
    for (const std::size_t items : {40, 400, 1'000, 10'000, 100'000})
        feeds.emplace_back(items);
    for (int round = 0; round < kRounds; ++round) {
        for (Feed& feed : feeds) {
            for (Reader& reader : feed.readers)
                reader.rates.push_back(MeasureRate(reader, feed.text, {feed.items, 3 * feed.items}));
        }
    }
    for (const Feed& feed : feeds) {
        const double bytes = static_cast<double>(feed.text.size()) / static_cast<double>(feed.items);
        for (const Reader& reader : feed.readers) {
            std::vector<double> times; // nanoseconds for each item
            for (const double rate : reader.rates)
                times.push_back(bytes * 1e3 / rate);
            TellPoint("cut", reader.name, feed.items, times);
        }
        if (feed.items == 40 || feed.items == 1'000 || feed.items == 100'000)
            TellFigures(feed);
    }
}

// The other readers give up at the first fault of it, which says nothing about their speed.
void TellHostile()
{
    const std::string hostile = HostileFeed();
    std::vector<double> rates;
    for (int round = 0; round < kRounds; ++round)
        rates.push_back(MeasureRate({"ours", ReadOurs}, hostile, {}));
    TellFigure(kPart, "100000 half tags without an end", "median MB/s", rates);
}

} // namespace

} // namespace vantro

int main()
{
    using namespace vantro;
    // Memory that was used once stays with the process: else what one reader has left behind decides whether
    // the next one waits for the system to clear pages.
    mallopt(M_MMAP_THRESHOLD, kHeap);
    mallopt(M_TRIM_THRESHOLD, kHeap);
    TellReaders();
    TellHostile();
    xmlCleanupParser();
}
