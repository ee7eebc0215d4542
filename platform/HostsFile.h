#pragma once

#include <filesystem>
#include <string>

namespace vantro {

// The base addresses of the four feeds, without a slash at the end.
struct FeedHosts {
    std::string vantro;
    std::string xbins;
    std::string xboxScene;
    std::string maxConsole;
    // A sentence for the user about what could not be used; empty when all is well.
    std::string notice;
};

// Reads group [Hosts] of the file (keys VANTRO, XBINS, XBOXSCENE, MAXCONSOLE). A missing file or key gives
// the built-in address; so does a value that is no http or https address, and a file that is not of this
// form, and `notice` says so.
[[nodiscard]] FeedHosts ReadHostsFile(const std::filesystem::path& file);

} // namespace vantro
