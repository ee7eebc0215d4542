#include "platform/Paths.h"

#include "base/Words.h"
#include "platform/PrivateFolder.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantro {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kRunPrefix = "run-";
constexpr const char* kOurs = "vantro";
constexpr const char* kNowhere = "/proc/nowhere"; // where there is nothing, and nobody can make anything

fs::path Home()
{
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/')
        return home;
    const passwd* entry = getpwuid(getuid());
    return entry != nullptr ? fs::path(entry->pw_dir) : fs::path("/");
}

struct Base {
    const char* variable;
    std::string_view belowHome;
};
constexpr Base kConfig{"XDG_CONFIG_HOME", ".config"};
constexpr Base kData{"XDG_DATA_HOME", ".local/share"};
constexpr Base kCache{"XDG_CACHE_HOME", ".cache"};

fs::path Place(const Base& base)
{
    const char* value = std::getenv(base.variable);
    return value != nullptr && *value == '/' ? fs::path(value) : Home() / base.belowHome;
}

// Whether a file that may lie in the folder, which need not be there, can be looked for.
bool CanBeFolder(const fs::path& folder)
{
    struct stat status { };
    return folder.is_absolute() && (stat((folder / "file").c_str(), &status) == 0 || errno == ENOENT);
}

// Open and locked, or none when the folder is missing, also by then, or another run holds it.
Descriptor LockFolder(const fs::path& folder)
{
    Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
    const bool isHeld = flock(descriptor.Number(), LOCK_EX | LOCK_NB) == 0 && fs::exists(folder);
    return isHeld ? std::move(descriptor) : Descriptor();
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
    return Place(kConfig) / kOurs;
}
fs::path DataFolder()
{
    return Place(kData) / kOurs;
}
fs::path CacheFolder()
{
    return Place(kCache) / kOurs;
}

void MendFolderVariables()
{
    if (!CanBeFolder(Home()))
        setenv("HOME", "/", 1);
    else
        setenv("HOME", Home().c_str(), 1);
    for (const Base& base : {kConfig, kData, kCache}) {
        const fs::path place = Place(base);
        if (!CanBeFolder(place))
            setenv(base.variable, kNowhere, 1);
        else if (std::getenv(base.variable) != nullptr)
            setenv(base.variable, place.c_str(), 1);
    }
    for (const char* variable : {"XDG_STATE_HOME", "XDG_RUNTIME_DIR", "TMPDIR"}) {
        if (const char* value = std::getenv(variable); value != nullptr && !CanBeFolder(value))
            unsetenv(variable);
    }
}

RunFolder::RunFolder(const fs::path& parent) : path_(parent / kRunPrefix)
{
    try {
        if (const std::error_code error = MakePrivateFolders(parent))
            throw fs::filesystem_error("mkdir", parent, error);
        RemoveAbandonedRuns(parent);
        // Until it is locked, another run may take it for abandoned. Some file systems know no locks.
        constexpr int kTries = 20;
        for (int i = 0; i < kTries && !lock_.IsOpen(); ++i) {
            if (i > 0)
                fs::remove(path_);
            path_ = MakePrivateFolder(parent, kRunPrefix);
            lock_ = LockFolder(path_);
        }
    } catch (const fs::filesystem_error& error) {
        failure_ = Words("The folder %1 cannot be used (%2): pages and downloads will not work.",
            {parent.string(), error.code().message()});
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
