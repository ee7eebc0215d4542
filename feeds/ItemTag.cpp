#include "feeds/ItemTag.h"

#include "base/modMain.h"

#include <cstddef>
#include <utility>

namespace vantro {

std::string ReplaceAll(std::string text, std::string_view search, std::string_view replacement)
{
    std::size_t at = text.find(search);
    if (at == std::string::npos || search.empty())
        return text;
    std::string out;
    out.reserve(text.size());
    std::size_t done = 0;
    for (; at != std::string::npos; at = text.find(search, done)) {
        out.append(text, done, at - done).append(replacement);
        done = at + search.size();
    }
    return out.append(text, done);
}

bool IsUnread(std::string_view tag)
{
    return tag.find(UnreadMarker) != std::string_view::npos;
}

bool IsItemTag(std::string_view tag)
{
    return IsUnread(tag) || tag.find(ReadMarker) != std::string_view::npos;
}

std::string MarkedRead(std::string tag)
{
    return ReplaceAll(std::move(tag), UnreadMarker, ReadMarker);
}

std::string MarkedUnread(std::string tag)
{
    return ReplaceAll(std::move(tag), ReadMarker, UnreadMarker);
}

} // namespace vantro
