#include "platform/Paths.h"

#include "platform/PrivateFolder.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <string_view>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantro {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kRunPrefix = "run-";

fs::path Home()
{
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/')
        return home;
    const passwd* entry = getpwuid(getuid());
    return entry != nullptr ? fs::path(entry->pw_dir) : fs::path("/");
}

fs::path BaseFolder(const char* variable, std::string_view belowHome)
{
    const char* value = std::getenv(variable);
    const fs::path base = value != nullptr && *value == '/' ? fs::path(value) : Home() / belowHome;
    return base / "vantro";
}

// Open and locked, or none when the folder is missing or another run holds it.
Descriptor LockFolder(const fs::path& folder)
{
    Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
    return flock(descriptor.Number(), LOCK_EX | LOCK_NB) == 0 ? std::move(descriptor) : Descriptor();
}

void RemoveAbandonedRuns(const fs::path& parent)
{
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(parent, ignored)) {
        if (!entry.path().filename().native().starts_with(kRunPrefix))
            continue;
        if (const Descriptor lock = LockFolder(entry.path()); lock.IsOpen())
            fs::remove_all(entry.path(), ignored);
    }
}

} // namespace

fs::path ConfigFolder()
{
    return BaseFolder("XDG_CONFIG_HOME", ".config");
}
fs::path DataFolder()
{
    return BaseFolder("XDG_DATA_HOME", ".local/share");
}
fs::path CacheFolder()
{
    return BaseFolder("XDG_CACHE_HOME", ".cache");
}

RunFolder::RunFolder(const fs::path& parent) : path_(parent / kRunPrefix)
{
    try {
        if (const std::error_code error = MakePrivateFolders(parent))
            throw fs::filesystem_error("mkdir", parent, error);
        RemoveAbandonedRuns(parent);
        path_ = MakePrivateFolder(parent, kRunPrefix);
        lock_ = LockFolder(path_);
    } catch (const fs::filesystem_error& error) {
        failure_ = "The folder " + parent.string() + " cannot be used (" + error.code().message()
            + "): pages and downloads will not work.";
    }
}

RunFolder::~RunFolder()
{
    if (!failure_.empty())
        return;
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

} // namespace vantro
