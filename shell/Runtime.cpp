#include "shell/Runtime.h"

namespace vantro {

Runtime::Runtime(std::function<void()> wake)
    : hosts(ReadHostsFile(ConfigFolder() / "vantro.ini")),
      store(DataFolder() / "registry.db"),
      registry(store),
      folder(CacheFolder()),
      reader(std::move(wake))
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
