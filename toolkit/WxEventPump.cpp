#include "toolkit/WxEventPump.h"

#include <wx/evtloop.h>

namespace vantro {

bool WxEventPump::RunUntil(const std::function<bool()>& done)
{
    constexpr unsigned long kLongestSleep = 50; // milliseconds; an event ends it sooner
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    while (!done()) {
        if (loop == nullptr)
            return false;
        loop->DispatchTimeout(kLongestSleep);
        loop->ProcessIdle();
    }
    return true;
}

} // namespace vantro
