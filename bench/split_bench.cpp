// Taking the items out of a feed, next to three XML parsers that read the same elements of the same items.

#include "base/Owned.h"
#include "bench/BenchFeed.h"
#include "feeds/SiteOperations.h"
#include "feeds/modXML.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <expat.h>
#include <libxml/parser.h>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vantro {

namespace {

constexpr const char* kElements[] = {"title", "link", "description"};

// What a reader found: enough to see that all of them read the same.
struct Found {
    std::size_t items = 0;
    std::size_t fields = 0;
};

Found ReadOurs(std::string_view feed)
{
    Found found;
    for (const std::string_view item : SplitItems(feed, kMostItems)) {
        ++found.items;
        for (const char* element : kElements)
            found.fields += ExtractTag(element, item).empty() ? 0 : 1;
    }
    return found;
}

Found ReadPugixml(std::string_view feed)
{
    Found found;
    pugi::xml_document document;
    document.load_buffer(feed.data(), feed.size());
    for (const pugi::xml_node item : document.child("rss").child("channel").children("item")) {
        ++found.items;
        for (const char* element : kElements)
            found.fields += *item.child_value(element) != '\0' ? 1 : 0;
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
            for (const char* element : kElements) {
                if (xmlStrEqual(field->name, BAD_CAST element) == 0)
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
    for (const char* element : kElements)
        state.inField |= state.inItem && std::strcmp(name, element) == 0;
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

void AddReader(const char* reader, const char* feedName, const std::string& feed,
    Found (*read)(std::string_view), std::size_t expectedItems)
{
    benchmark::RegisterBenchmark((std::string(feedName) + "/" + reader).c_str(),
        [&feed, read, expectedItems](benchmark::State& state) {
            Found found;
            for ([[maybe_unused]] auto _ : state)
                benchmark::DoNotOptimize(found = read(feed));
            if (found.items != expectedItems || found.fields != 3 * expectedItems)
                state.SkipWithError("read something else than the others");
            state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(feed.size()));
        })
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

} // namespace vantro

int main(int argc, char** argv)
{
    using namespace vantro;
    benchmark::Initialize(&argc, argv);
    const std::string small = MakeFeed(1, 40);
    const std::string large = MakeFeed(1, 10'000);
    const std::string hostile = HostileFeed();
    const auto addAll = [](const char* name, const std::string& feed, std::size_t items) {
        AddReader("vantro", name, feed, ReadOurs, items);
        AddReader("pugixml", name, feed, ReadPugixml, items);
        AddReader("expat", name, feed, ReadExpat, items);
        AddReader("libxml2", name, feed, ReadLibxml2, items);
    };
    addAll("40 items", small, 40);
    addAll("10,000 items", large, 10'000);
    // The others give up at the first fault of it, which says nothing about their speed.
    AddReader("vantro", "hostile", hostile, ReadOurs, 0);
    benchmark::RunSpecifiedBenchmarks();
    xmlCleanupParser();
}
