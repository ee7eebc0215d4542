#include "platform/PrivateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>

namespace vantro {

namespace fs = std::filesystem;

std::error_code MakePrivateFolders(const fs::path& folder)
{
    std::error_code error;
    if (folder.empty() || fs::exists(folder, error))
        return error;
    error = MakePrivateFolders(folder.parent_path());
    if (!error && mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        error.assign(errno, std::generic_category());
    return error;
}

fs::path MakePrivateFolder(const fs::path& parent, std::string_view prefix)
{
    std::string name = (parent / prefix).native() + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw fs::filesystem_error("mkdtemp", name, std::error_code(errno, std::generic_category()));
    return name;
}

} // namespace vantro
