#include "platform/Language.h"

#include "base/BuildSettings.h"
#include "base/Words.h"

#include <clocale>
#include <filesystem>
#include <libintl.h>
#include <system_error>

namespace vantro {

void UseLanguageOfUser()
{
    namespace fs = std::filesystem;
    // The window library sets no locale, and keeps the toolkit from doing so.
    std::setlocale(LC_MESSAGES, "");
    std::setlocale(
        LC_CTYPE, "C.UTF-8"); // or the system's words for an error would have "?" for what is not ASCII
    std::error_code failed;
    const fs::path program = fs::read_symlink("/proc/self/exe", failed).parent_path();
    const fs::path built = program / "catalogues";
    const fs::path folder
        = fs::is_directory(built, failed) ? built : program / ".." / kBuildSettings.localeFolder;
    bindtextdomain(kCatalogue, folder.c_str());
    bind_textdomain_codeset(kCatalogue, "UTF-8");
}

} // namespace vantro
