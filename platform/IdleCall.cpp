#include "platform/IdleCall.h"

#include <glib.h>
#include <utility>

namespace vantro {

namespace {

using Action = std::function<void()>;

// The toolkit paints at G_PRIORITY_HIGH_IDLE + 20 and measures rows at + 25.
constexpr int kBeforeMeasuring = G_PRIORITY_HIGH_IDLE + 22;

void Call(int priority, Action action)
{
    g_idle_add_full(
        priority,
        [](gpointer data) -> gboolean {
            (*static_cast<Action*>(data))();
            return G_SOURCE_REMOVE;
        },
        new Action(std::move(action)), [](gpointer data) { delete static_cast<Action*>(data); });
}

} // namespace

void CallSoon(std::function<void()> action)
{
    Call(kBeforeMeasuring, std::move(action));
}

void CallWhenIdle(std::function<void()> action)
{
    Call(G_PRIORITY_DEFAULT_IDLE, std::move(action));
}

} // namespace vantro
