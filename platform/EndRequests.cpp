#include "platform/EndRequests.h"

#include "base/Owned.h"
#include "platform/SessionBus.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <gio/gio.h>
#include <glib-unix.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantro {

namespace {

struct Manager {
    const char* name;
    const char* path;
    const char* interface;
    const char* clientInterface;
};

// The two have the same methods and signals. MATE and Cinnamon answer to the first.
constexpr auto kManagers = std::to_array<Manager>({
    {"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager",
        "org.gnome.SessionManager.ClientPrivate"},
    {"org.xfce.SessionManager", "/org/xfce/SessionManager", "org.xfce.Session.Manager",
        "org.xfce.Session.Client"},
});

bool IsIgnored(int signal)
{
    struct sigaction current { };
    return sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

} // namespace

// An answer that comes after the destruction finds its cancellable cancelled, which makes it an error; so a
// callback looks at this object only when there is an answer or an error of another kind.
struct EndRequests::Implementation {
    std::function<void()> end;
    std::vector<guint> signals;
    std::string startupId; // by which the session manager knows the program it has started
    bool isWatching = false;
    Owned<GCancellable, g_object_unref> cancellable{g_cancellable_new()};
    Owned<GDBusConnection, g_object_unref> bus;
    std::size_t manager = 0;
    guint subscription = 0;
    std::string client; // our object at the session manager; empty until registered

    explicit Implementation(std::function<void()> whenAsked);
    ~Implementation();
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    void Register();
    void Unsubscribe();
    void TellManager(
        const std::string& path, const char* interface, const char* method, GVariant* parameters);
    void AnswerReady();

    static gboolean OnUnixSignal(gpointer self);
    static void OnBus(GObject* source, GAsyncResult* result, gpointer self);
    static void OnRegistered(GObject* source, GAsyncResult* result, gpointer self);
    static void OnManagerSignal(GDBusConnection* bus, const gchar* sender, const gchar* path,
        const gchar* interface, const gchar* signal, GVariant* parameters, gpointer self);
};

EndRequests::Implementation::Implementation(std::function<void()> whenAsked) : end(std::move(whenAsked))
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        if (!IsIgnored(signal))
            signals.push_back(g_unix_signal_add(signal, OnUnixSignal, this));
    if (const char* id = std::getenv("DESKTOP_AUTOSTART_ID"))
        startupId = id;
    unsetenv("DESKTOP_AUTOSTART_ID");
}

EndRequests::Implementation::~Implementation()
{
    for (const guint signal : signals)
        g_source_remove(signal);
    g_cancellable_cancel(cancellable.get());
    if (!bus)
        return;
    if (!client.empty())
        TellManager(kManagers[manager].path, kManagers[manager].interface, "UnregisterClient",
            g_variant_new("(o)", client.c_str()));
    Unsubscribe();
    // Keeps the connection until what was said is written, which would else be lost with the last reference.
    g_dbus_connection_flush(bus.get(), nullptr, nullptr, nullptr);
}

gboolean EndRequests::Implementation::OnUnixSignal(gpointer self)
{
    static_cast<Implementation*>(self)->end();
    return G_SOURCE_CONTINUE;
}

void EndRequests::Implementation::OnBus(GObject* /*source*/, GAsyncResult* result, gpointer self)
{
    Owned<GDBusConnection, g_object_unref> bus(g_bus_get_finish(result, nullptr));
    if (!bus)
        return;
    // The connection is the whole process's. By default GIO raises SIGTERM when the bus goes away.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    auto* requests = static_cast<Implementation*>(self);
    requests->bus = std::move(bus);
    requests->Register();
}

// Subscribes before it asks, so that no signal can fall between the answer and the subscription. Asks without
// a time limit: a manager busy with a login may answer late, and would then count on a client that had given
// up.
void EndRequests::Implementation::Register()
{
    const Manager& asked = kManagers[manager];
    subscription = g_dbus_connection_signal_subscribe(bus.get(), asked.name, asked.clientInterface, nullptr,
        nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, OnManagerSignal, this, nullptr);
    g_dbus_connection_call(bus.get(), asked.name, asked.path, asked.interface, "RegisterClient",
        g_variant_new("(ss)", "vantro", startupId.c_str()), G_VARIANT_TYPE("(o)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, G_MAXINT, cancellable.get(), OnRegistered, this);
}

void EndRequests::Implementation::OnRegistered(GObject* source, GAsyncResult* result, gpointer self)
{
    GError* raw = nullptr;
    const Owned<GVariant, g_variant_unref> answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &raw));
    const Owned<GError, g_error_free> error(raw);
    if (g_error_matches(raw, G_IO_ERROR, G_IO_ERROR_CANCELLED))
        return;
    auto* requests = static_cast<Implementation*>(self);
    if (answer) {
        const gchar* client = nullptr;
        g_variant_get(answer.get(), "(&o)", &client);
        requests->client = client;
        return;
    }
    requests->Unsubscribe();
    if (++requests->manager < kManagers.size())
        requests->Register();
}

void EndRequests::Implementation::OnManagerSignal(GDBusConnection* /*bus*/, const gchar* /*sender*/,
    const gchar* path, const gchar* /*interface*/, const gchar* signal, GVariant* /*parameters*/,
    gpointer self)
{
    auto* requests = static_cast<Implementation*>(self);
    if (path != requests->client)
        return;
    const std::string_view request = signal;
    if (request == "EndSession" || request == "Stop")
        requests->end();
    if (request == "EndSession" || request == "QueryEndSession")
        requests->AnswerReady();
}

void EndRequests::Implementation::AnswerReady()
{
    TellManager(
        client, kManagers[manager].clientInterface, "EndSessionResponse", g_variant_new("(bs)", TRUE, ""));
}

// Waits for no answer and wants none.
void EndRequests::Implementation::TellManager(
    const std::string& path, const char* interface, const char* method, GVariant* parameters)
{
    g_dbus_connection_call(bus.get(), kManagers[manager].name, path.c_str(), interface, method, parameters,
        nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
}

void EndRequests::Implementation::Unsubscribe()
{
    if (subscription != 0)
        g_dbus_connection_signal_unsubscribe(bus.get(), subscription);
    subscription = 0;
}

EndRequests::EndRequests(std::function<void()> end)
    : implementation_(std::make_unique<Implementation>(std::move(end)))
{
}

EndRequests::~EndRequests() = default;

void EndRequests::WatchSession()
{
    if (implementation_->isWatching || !IsSessionBusAnnounced())
        return;
    implementation_->isWatching = true;
    g_bus_get(
        G_BUS_TYPE_SESSION, implementation_->cancellable.get(), Implementation::OnBus, implementation_.get());
}

} // namespace vantro
