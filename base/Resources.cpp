#include "base/Resources.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace {

// As laid out by cmake/EmbedResources.cmake.
struct ResourceEntry {
    const char* type;
    const char* name;
    const char* data;
    std::uint64_t size;
};

} // namespace

extern "C" {
extern const ResourceEntry vantro_resource_table[];
extern const std::uint64_t vantro_resource_count;
}

namespace vantro {

std::optional<std::string_view> FindResource(std::string_view type, std::string_view name)
{
    const std::span table(vantro_resource_table, static_cast<std::size_t>(vantro_resource_count));
    const auto found = std::ranges::find_if(
        table, [&](const ResourceEntry& entry) { return entry.type == type && entry.name == name; });
    if (found == table.end())
        return std::nullopt;
    return std::string_view(found->data, static_cast<std::size_t>(found->size));
}

} // namespace vantro
