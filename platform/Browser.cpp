#include "platform/Browser.h"

#include <utility>
#include <wx/utils.h>
#include <wx/webview.h>

namespace vantro {

namespace {
constexpr int kComplete = 4;
constexpr int kLoading = 1;
} // namespace

void OpenInDefaultProgram(const std::string& address)
{
    wxLaunchDefaultBrowser(wxString::FromUTF8(address));
}

Browser::Browser(wxWindow* parent, const std::filesystem::path& pageFolder, std::function<void()> lost,
    BrowserSettings settings)
    : lost_(std::move(lost)), settings_(std::move(settings)), limit_(this)
{
    NativeWebView::PrepareEngine(pageFolder);
    view_ = wxWebView::New(parent, wxID_ANY, "about:blank", wxDefaultPosition, wxDefaultSize,
        wxWebViewBackendDefault, wxBORDER_NONE, "web");
    native_ = std::make_unique<NativeWebView>(*view_,
        NativeWebView::Events{[this](const Navigation& navigation) { return Allow(navigation); },
            [this](const std::string& address) { LoadCame(address, LoadEnd::Complete); },
            [this](const std::string& address) { LoadCame(address, LoadEnd::Failed); },
            [this] {
                expected_.clear();
                limit_.Stop();
                CallAfter([this] { lost_(); });
            },
            [this] {
                CallAfter([this] {
                    if (!expected_.empty())
                        LoadAfresh();
                });
            }});
    policy_.PageBegins("about:blank", {});
    Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
        if (!expected_.empty())
            Finish(LoadEnd::TimedOut);
    });
}

Browser::~Browser() = default;

wxWindow* Browser::Window() const
{
    return view_;
}

void Browser::Navigate(const std::string& address, LoadEnded ended)
{
    expected_ = NativeWebView::Normalized(address);
    folder_.clear();
    if (address.starts_with('/')) {
        folder_ = expected_.substr(0, expected_.rfind('/') + 1);
        // Tells this load from an earlier one of the same file, whose end may still be reported.
        expected_ += "?" + std::to_string(++loads_);
    }
    ended_ = std::move(ended);
    limit_.StartOnce(static_cast<int>(settings_.loadLimit.count()));
    if (native_->ProcessResponds())
        Load();
    else
        LoadAfresh();
}

void Browser::Load()
{
    policy_.PageBegins(expected_, folder_);
    native_->Load(expected_);
}

// A page that keeps the engine busy could never be left.
void Browser::LoadAfresh()
{
    native_->EndProcess();
    Load();
}

void Browser::NavigateFrame(const std::string& address, std::string_view frame)
{
    if (IsWebAddress(address))
        native_->LoadFrame(std::string(frame), address);
}

int Browser::ReadyState() const
{
    return expected_.empty() ? kComplete : kLoading;
}

void Browser::SetSilent(bool silent)
{
    native_->SetSilent(silent);
}

bool Browser::Allow(const Navigation& navigation)
{
    const NavigationPolicy::Verdict verdict = policy_.Decide(navigation);
    if (verdict == NavigationPolicy::Verdict::OpenOutside)
        CallAfter([this, address = navigation.address] { settings_.openOutside(address); });
    return verdict == NavigationPolicy::Verdict::Allow;
}

// The engine also reports loads that were given up for a newer one, and "finished" after every failure.
void Browser::LoadCame(const std::string& address, LoadEnd end)
{
    if (!expected_.empty() && address == expected_)
        Finish(end);
}

void Browser::Finish(LoadEnd end)
{
    limit_.Stop();
    expected_.clear();
    policy_.PageEnds();
    // The engine is in the middle of its own work here.
    CallAfter([ended = std::exchange(ended_, {}), end] {
        if (ended)
            ended(end);
    });
}

} // namespace vantro
