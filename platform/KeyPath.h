#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantro {

// The path as it stands in the file: one separator between two levels, none at the ends. Empty when it names
// no key; a zero byte cannot stand in a name, as NOCASE does not look beyond it. A view into `path` or
// `buffer`.
[[nodiscard]] std::string_view StoredForm(std::string_view path, std::string& buffer);

// Of a path in its stored form; empty for a root.
[[nodiscard]] std::string_view ParentOf(std::string_view path);

// The number that the last level of a path is; 0 when it is none, or not written as this program does it.
[[nodiscard]] std::int32_t NumberNamed(std::string_view name);

} // namespace vantro
