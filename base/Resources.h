#pragma once

#include <optional>
#include <string_view>

namespace vantro {

// The bytes of a file that was compiled into the program, addressed by type ("XBINS") and name ("LOGO");
// nothing when there is no such resource. The view lives as long as the program.
[[nodiscard]] std::optional<std::string_view> FindResource(std::string_view type, std::string_view name);

} // namespace vantro
