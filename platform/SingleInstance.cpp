#include "platform/SingleInstance.h"

#include "base/Owned.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gio/gio.h>
#include <glib-unix.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace vantro {

namespace {

// A name without a file: it is free again as soon as the process that holds it has ended, however it ended.
std::string SocketName(const std::filesystem::path& dataFolder)
{
    const Owned<gchar, g_free> digest(
        g_compute_checksum_for_string(G_CHECKSUM_SHA256, dataFolder.c_str(), -1));
    return "vantro-" + std::to_string(getuid()) + "-" + digest.get();
}

} // namespace

struct SingleInstance::Implementation {
    int socket = -1;
    guint source = 0;
    bool first = true;
    std::function<void()> started;

    static gboolean OnStart(gint descriptor, GIOCondition /*condition*/, gpointer self)
    {
        const int other = accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC);
        ucred peer{};
        socklen_t size = sizeof peer;
        const bool own = other >= 0 && getsockopt(other, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0
            && peer.uid == getuid();
        if (other >= 0)
            close(other);
        if (own)
            static_cast<Implementation*>(self)->started();
        return G_SOURCE_CONTINUE;
    }
};

SingleInstance::SingleInstance(const std::filesystem::path& dataFolder, std::function<void()> started)
    : implementation_(std::make_unique<Implementation>())
{
    implementation_->started = std::move(started);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = SocketName(dataFolder);
    std::memcpy(address.sun_path + 1, name.data(), name.size()); // a leading NUL makes the name abstract
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);

    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return;
    if (bind(descriptor, generic, length) == 0 && listen(descriptor, 4) == 0) {
        implementation_->socket = descriptor;
        implementation_->source
            = g_unix_fd_add(descriptor, G_IO_IN, Implementation::OnStart, implementation_.get());
        return;
    }
    implementation_->first = errno != EADDRINUSE || connect(descriptor, generic, length) != 0;
    close(descriptor);
}

SingleInstance::~SingleInstance()
{
    if (implementation_->source != 0)
        g_source_remove(implementation_->source);
    if (implementation_->socket >= 0)
        close(implementation_->socket);
}

bool SingleInstance::IsFirst() const
{
    return implementation_->first;
}

} // namespace vantro
