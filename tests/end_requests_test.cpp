#include "platform/EndRequests.h"

#include <array>
#include <csignal>
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace vantro {

// The next thing that happens while the event loop runs.
static std::string Next(GAsyncQueue* log)
{
    for (int turn = 0; turn < 10000 && g_async_queue_length(log) == 0; ++turn)
        g_main_context_iteration(nullptr, FALSE) ? void() : g_usleep(500);
    g_autofree auto* line = static_cast<gchar*>(g_async_queue_try_pop(log));
    return line != nullptr ? line : "nothing";
}

// A session manager's answer to a call; runs on a thread of its connection.
static GDBusMessage* Answer(GDBusConnection* bus, GDBusMessage* call, gboolean isIncoming, gpointer log)
{
    if (!isIncoming || g_dbus_message_get_message_type(call) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
        return call;
    [[maybe_unused]] g_autoptr(GDBusMessage) taken = call;
    g_autoptr(GDBusMessage) reply = g_dbus_message_new_method_reply(call);
    g_dbus_message_set_body(reply, g_variant_new("(o)", "/client"));
    g_dbus_connection_send_message(bus, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_autofree gchar* arguments = g_variant_print(g_dbus_message_get_body(call), FALSE);
    gchar* line = g_strconcat(g_dbus_message_get_path(call), " ", g_dbus_message_get_interface(call), ".",
        g_dbus_message_get_member(call), arguments, nullptr);
    g_async_queue_push(static_cast<GAsyncQueue*>(log), line);
    return nullptr;
}

TEST(EndRequests, TakeSignalsAndAnswerTheSessionManager)
{
    const std::string gnome = "org.gnome.SessionManager", xfce = "org.xfce.Session",
                      xfceName = xfce + "Manager";
    for (const auto& [name, manager, client] :
        {std::array{gnome, "/org/gnome/SessionManager " + gnome + '.', gnome + ".ClientPrivate"},
            std::array{xfceName, "/org/xfce/SessionManager " + xfce + ".Manager.", xfce + ".Client"}}) {
        g_autoptr(GTestDBus) daemon = g_test_dbus_new(G_TEST_DBUS_NONE);
        g_test_dbus_up(daemon);
        g_autoptr(GAsyncQueue) log = g_async_queue_new();
        g_autoptr(GDBusConnection) bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        g_variant_unref(g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
            "RequestName", g_variant_new("(su)", name.c_str(), 0), nullptr, {}, -1, nullptr, nullptr));
        g_dbus_connection_add_filter(bus, Answer, log, nullptr);
        const auto emit = [bus, &client = client](const char* path, const char* signal) {
            g_dbus_connection_emit_signal(bus, nullptr, path, client.c_str(), signal, nullptr, nullptr);
        };
        setenv("DESKTOP_AUTOSTART_ID", "id7", 1);
        std::signal(SIGHUP, SIG_IGN);
        const auto end = [log] { g_usleep(5000), g_async_queue_push(log, g_strdup("end")); };
        auto requests = std::make_unique<EndRequests>(end);
        EXPECT_EQ(std::getenv("DESKTOP_AUTOSTART_ID"), nullptr);
        EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
        kill(getpid(), SIGTERM);
        EXPECT_EQ(Next(log), "end");
        requests->WatchSession();
        EXPECT_EQ(Next(log), manager + "RegisterClient('vantro', 'id7')");
        const std::string ready = "/client " + client + ".EndSessionResponse(true, '')";
        emit("/other", "Stop");
        emit("/client", "QueryEndSession");
        EXPECT_EQ(Next(log), ready);
        emit("/client", "EndSession");
        EXPECT_EQ(Next(log), "end");
        EXPECT_EQ(Next(log), ready);
        emit("/client", "Stop");
        EXPECT_EQ(Next(log), "end");
        requests.reset();
        EXPECT_EQ(Next(log), manager + "UnregisterClient('/client',)");
        EXPECT_FALSE(g_dbus_connection_get_exit_on_close(bus)) << "would end with its bus";
    }
}

} // namespace vantro
