#include "platform/PrivateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace vantro {

namespace fs = std::filesystem;

namespace {

std::error_code MakeMissingFolders(const fs::path& folder)
{
    std::error_code error;
    if (folder.empty() || fs::exists(folder, error))
        return error;
    error = MakeMissingFolders(folder.parent_path());
    if (!error && mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        error.assign(errno, std::generic_category());
    return error;
}

} // namespace

std::error_code MakePrivateFolders(const fs::path& folder)
{
    KeepFromOthers(folder);
    return MakeMissingFolders(folder);
}

void KeepFromOthers(const fs::path& path)
{
    constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
    struct stat status { };
    const bool isOwn = stat(path.c_str(), &status) == 0 && status.st_uid == geteuid()
        && (status.st_mode & S_ISVTX) == 0; // a folder for everybody's files
    if (isOwn && (status.st_mode & kOthers) != 0)
        (void)chmod(path.c_str(), status.st_mode & ~kOthers & ALLPERMS);
}

fs::path MakePrivateFolder(const fs::path& parent, std::string_view prefix)
{
    std::string name = (parent / prefix).native() + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw fs::filesystem_error("mkdtemp", name, std::error_code(errno, std::generic_category()));
    return name;
}

} // namespace vantro
