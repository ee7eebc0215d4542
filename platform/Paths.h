#pragma once

#include "platform/Descriptor.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vantro {

// The user's folders for this program, after the XDG base directory rules: a variable that is unset, empty or
// relative gives the default below the home folder. None is created here.
[[nodiscard]] std::filesystem::path ConfigFolder(); // holds vantro.ini
[[nodiscard]] std::filesystem::path DataFolder(); // holds registry.db
[[nodiscard]] std::filesystem::path CacheFolder(); // holds the run folders
// All three, as the environment says when it is made.
struct ProgramFolders {
    std::filesystem::path config = ConfigFolder();
    std::filesystem::path data = DataFolder();
    std::filesystem::path cache = CacheFolder();
};

// Libraries take what the environment says of the user's folders as it is, and some end the program when it
// is a relative name, or a file: from now on it names none of those. To be called where there is no other
// thread, and after ProgramFolders, which may be in such a place and then are not to be used in silence.
void MendFolderVariables();

// "The program's folder": a private folder (mode 0700) of this run below the cache folder, for feed files and
// page files. Removed with all it holds when destroyed; one that a killed run left behind is removed by the
// next run.
class RunFolder {
public:
    explicit RunFolder(const std::filesystem::path& parent);
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    // The folder's name; it need not exist when Failure() says so.
    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
    // A sentence for the user when the folder could not be made; empty when all is well.
    [[nodiscard]] const std::string& Failure() const { return failure_; }

private:
    std::filesystem::path path_;
    std::string failure_;
    Descriptor lock_; // open on the folder for the life of the run: what is not locked belongs to nobody
};

} // namespace vantro
