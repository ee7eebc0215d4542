#include "platform/WxEventPump.h"

#include <utility>
#include <wx/app.h>
#include <wx/evtloop.h>

namespace vantro {

WxEventPump::Pass::~Pass()
{
    if (--pump_.depth_ > 0)
        return;
    for (auto& action : std::exchange(pump_.unwound_, {}))
        wxTheApp->CallAfter(std::move(action));
}

void WxEventPump::RunPending()
{
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    if (loop == nullptr)
        return;
    const Pass pass(*this);
    loop->YieldFor(wxEVT_CATEGORY_ALL);
}

bool WxEventPump::RunUntil(const std::function<bool()>& done)
{
    constexpr unsigned long kLongestSleep = 50; // milliseconds; an event ends it sooner
    wxEventLoopBase* loop = wxEventLoopBase::GetActive();
    const Pass pass(*this);
    while (!stopping_ && loop != nullptr) {
        if (done())
            return true;
        loop->YieldFor(wxEVT_CATEGORY_ALL);
        if (!done() && !stopping_)
            loop->DispatchTimeout(kLongestSleep);
    }
    return false;
}

void WxEventPump::WhenUnwound(std::function<void()> action)
{
    if (depth_ == 0)
        action();
    else
        unwound_.push_back(std::move(action));
}

} // namespace vantro
