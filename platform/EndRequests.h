#pragma once

#include <functional>
#include <memory>

namespace vantro {

// Hears when the system asks the program to end: by SIGTERM, SIGINT or SIGHUP from the time of construction,
// and by the session manager of the desktop (GNOME, MATE, Cinnamon, Xfce) from WatchSession() on. A signal
// that the program was started to ignore, as by nohup, stays ignored. Used by the interface thread only.
class EndRequests {
public:
    // `end` is called from the event loop, never from a signal handler, for each request, so also again while
    // the program is ending already; signals of a kind that come together count as one. A session manager is
    // told that the program is ready when `end` has returned: what must last has to be stored by then. `end`
    // must not destroy this object; it arranges for the program to end afterwards. Takes DESKTOP_AUTOSTART_ID
    // out of the environment, which no other program may use: constructed before threads.
    explicit EndRequests(std::function<void()> end);
    // Signals have their default effect again. Waits for nothing.
    ~EndRequests();
    EndRequests(const EndRequests&) = delete;
    EndRequests& operator=(const EndRequests&) = delete;

    // Begins to register with the session manager and returns at once; a second call does nothing. Without a
    // session bus or manager, or when one is silent or goes away, only the signals are heard.
    void WatchSession();

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace vantro
