#include "platform/KeyPath.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace vantro {

std::string_view StoredForm(std::string_view path, std::string& buffer)
{
    if (path.find('\0') != std::string_view::npos)
        return {};
    while (path.ends_with('\\'))
        path.remove_suffix(1);
    while (path.starts_with('\\'))
        path.remove_prefix(1);
    if (path.find("\\\\") == std::string_view::npos)
        return path;
    buffer.clear();
    for (const char c : path) {
        if (c != '\\' || buffer.back() != '\\')
            buffer += c;
    }
    return buffer;
}

std::string_view ParentOf(std::string_view path)
{
    const std::size_t separator = path.rfind('\\');
    return separator == std::string_view::npos ? std::string_view() : path.substr(0, separator);
}

std::int32_t NumberNamed(std::string_view name)
{
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool whole = error == std::errc() && end == name.data() + name.size();
    return whole && !name.starts_with('0') ? number : 0;
}

} // namespace vantro
