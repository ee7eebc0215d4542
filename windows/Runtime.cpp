#include "windows/Runtime.h"

#include "base/BuildSettings.h"
#include "base/modMain.h"

#include <utility>

namespace vantro {

namespace {

// Feed servers like to know who asks; the build would tell users apart.
std::string UserAgent()
{
    return std::string(ProductName) + "/" + std::to_string(kBuildSettings.versionMajor) + "."
        + std::to_string(kBuildSettings.versionMinor);
}

} // namespace

Runtime::Runtime(const ProgramFolders& folders, std::function<void()> wake)
    : hosts(ReadHostsFile(folders.config / "vantro.ini")),
      store(folders.data / "registry.db"),
      registry(store),
      folder(folders.cache),
      reader(std::move(wake), {}, UserAgent(), AskDesktopForProxies)
{
}

std::string Runtime::StartNotice() const
{
    std::string notice;
    for (const std::string& sentence : {store.Notice(), folder.Failure(), hosts.notice}) {
        if (!sentence.empty())
            notice += (notice.empty() ? "" : " ") + sentence;
    }
    return notice;
}

} // namespace vantro
