#include "engine/NetworkProcessGtk.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <glib-unix.h>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

extern "C" { // which glibc 2.36 forgets
#include <sys/pidfd.h>
}

namespace vantro {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kName = "(WebKitNetworkPr)"; // as the system cuts it

// Its name in parentheses, and the letter of its state.
std::pair<std::string, char> NameAndState(int process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    int number = 0;
    std::string name;
    char state = 0;
    file >> number >> name >> state;
    return {name, state};
}

int FindChild()
{
    std::error_code ignored;
    for (const fs::directory_entry& thread : fs::directory_iterator("/proc/self/task", ignored)) {
        std::ifstream children(thread.path() / "children");
        for (int child = 0; children >> child;) {
            const auto [name, state] = NameAndState(child);
            if (name == kName && state != 'Z')
                return child;
        }
    }
    return 0;
}

} // namespace

NetworkProcess::NetworkProcess(std::function<void()> lost) : lost_(std::move(lost)) { }

NetworkProcess::~NetworkProcess()
{
    Forget();
}

void NetworkProcess::Find()
{
    if (id_ != 0)
        return;
    id_ = FindChild();
    descriptor_ = Descriptor(id_ != 0 ? pidfd_open(id_, 0) : -1);
    if (!descriptor_.IsOpen()) {
        id_ = 0;
        return;
    }
    const auto ended = [](gint, GIOCondition, gpointer self) -> gboolean {
        auto& process = *static_cast<NetworkProcess*>(self);
        process.Forget();
        process.lost_();
        return G_SOURCE_REMOVE;
    };
    source_ = g_unix_fd_add(descriptor_.Number(), G_IO_IN, ended, this);
}

void NetworkProcess::EndIfStopped()
{
    Find();
    if (id_ != 0 && NameAndState(id_).second == 'T')
        pidfd_send_signal(descriptor_.Number(), SIGKILL, nullptr, 0);
}

void NetworkProcess::Forget()
{
    if (std::exchange(id_, 0) == 0)
        return;
    g_source_remove(std::exchange(source_, 0));
    descriptor_ = Descriptor();
}

} // namespace vantro
