#include "platform/SingleInstance.h"

#include "base/Owned.h"
#include "platform/Descriptor.h"
#include "platform/PrivateFolder.h"

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <gio/gio.h>
#include <glib-unix.h>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vantro {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPatience{3000};
constexpr std::chrono::milliseconds kPause{10}; // between two tries for the lock

// A name without a file: it is free again as soon as the process that holds it has ended, however it ended.
struct Address {
    explicit Address(const std::filesystem::path& dataFolder)
    {
        const Owned<gchar, g_free> digest(
            g_compute_checksum_for_string(G_CHECKSUM_SHA256, dataFolder.c_str(), -1));
        const std::string name = "vantro-" + std::to_string(getuid()) + "-" + digest.get();
        text.sun_family = AF_UNIX;
        std::memcpy(text.sun_path + 1, name.data(), name.size()); // a leading NUL makes the name abstract
        length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    }
    [[nodiscard]] const sockaddr* Generic() const { return reinterpret_cast<const sockaddr*>(&text); }

    sockaddr_un text{};
    socklen_t length = 0;
};

Descriptor NewSocket()
{
    return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

bool IsOfThisUser(int connection)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == getuid();
}

// Whether the program that listens has shown itself, or is there and cannot: it is stopped, or very busy.
bool IsThere(const Address& address, Clock::time_point until)
{
    const Descriptor connection = NewSocket();
    if (connect(connection.Number(), address.Generic(), address.length) != 0)
        return errno == EAGAIN; // so many starts wait that it must be stopped
    if (!IsOfThisUser(connection.Number()))
        return true; // someone has taken the name: the lock alone counts
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now());
    pollfd answer{connection.Number(), POLLIN, 0};
    if (poll(&answer, 1, static_cast<int>(left.count())) == 0)
        return true;
    char shown = 0;
    return recv(connection.Number(), &shown, 1, 0) == 1;
}

enum class Lock { Taken, Held, Unknown };

Lock TakeLock(const Descriptor& folder)
{
    if (flock(folder.Number(), LOCK_EX | LOCK_NB) == 0)
        return Lock::Taken;
    return errno == EWOULDBLOCK ? Lock::Held : Lock::Unknown;
}

} // namespace

struct SingleInstance::Implementation {
    Descriptor folder; // holds the lock
    Descriptor socket;
    guint source = 0;
    bool first = true;
    std::function<bool()> started;

    static gboolean OnStart(gint descriptor, GIOCondition /*condition*/, gpointer self)
    {
        const Descriptor other(accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (other.IsOpen() && IsOfThisUser(other.Number()) && static_cast<Implementation*>(self)->started())
            (void)send(other.Number(), "1", 1, MSG_NOSIGNAL);
        return G_SOURCE_CONTINUE;
    }

    void Listen(const Address& address)
    {
        constexpr int kBacklog = 64;
        socket = NewSocket();
        if (bind(socket.Number(), address.Generic(), address.length) == 0
            && listen(socket.Number(), kBacklog) == 0)
            source = g_unix_fd_add(socket.Number(), G_IO_IN, OnStart, this);
    }
};

SingleInstance::SingleInstance(const std::filesystem::path& dataFolder, std::function<bool()> started)
    : implementation_(std::make_unique<Implementation>())
{
    Implementation& self = *implementation_;
    self.started = std::move(started);
    (void)MakePrivateFolders(dataFolder); // a failure shows when the store is opened
    const Address address(dataFolder);
    const Clock::time_point until = Clock::now() + kPatience;
    for (;; std::this_thread::sleep_for(kPause)) {
        // Anew each time: the folder may be replaced meanwhile.
        self.folder = Descriptor(open(dataFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!self.folder.IsOpen() || TakeLock(self.folder) != Lock::Held) {
            self.Listen(address);
            return;
        }
        if (IsThere(address, until) || Clock::now() >= until) {
            self.first = false;
            return;
        }
    }
}

SingleInstance::~SingleInstance()
{
    if (implementation_->source != 0)
        g_source_remove(implementation_->source);
}

bool SingleInstance::IsFirst() const
{
    return implementation_->first;
}

} // namespace vantro
