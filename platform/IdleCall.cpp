#include "platform/IdleCall.h"

#include <glib.h>
#include <utility>

namespace vantro {

void CallWhenIdle(std::function<void()> action)
{
    using Action = std::function<void()>;
    g_idle_add_full(
        G_PRIORITY_DEFAULT_IDLE,
        [](gpointer data) -> gboolean {
            (*static_cast<Action*>(data))();
            return G_SOURCE_REMOVE;
        },
        new Action(std::move(action)), [](gpointer data) { delete static_cast<Action*>(data); });
}

} // namespace vantro
