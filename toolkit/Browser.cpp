#include "toolkit/Browser.h"

#include "base/TextCoding.h"
#include "base/Words.h"
#include "platform/Files.h"
#include "toolkit/Screen.h"
#include "toolkit/WebEngine.h"
#include "web/WebAddress.h"

#include <cmath>
#include <utility>

namespace vantro {

namespace {

constexpr int kComplete = 4;
constexpr int kLoading = 1;
constexpr int kLookForStopped = 2000; // milliseconds
constexpr double kHeadHeight = 95; // pixels, as the pages give it to their upper frame
constexpr const char* kBlankPage = "about:blank";

PagePart PartOf(std::string_view file, std::string bytes)
{
    if (file.ends_with(".gif"))
        return {std::move(bytes), "image/gif"};
    if (file.ends_with(".jpg"))
        return {std::move(bytes), "image/jpeg"};
    // The engine writes the query of an address in the encoding of its page, and servers expect UTF-8. The
    // mark in front counts more than what the page says of itself.
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    return {std::string(kUtf8Mark) + DecodePageText(bytes), "text/html"};
}

} // namespace

Browser::Browser(wxWindow* parent, std::function<void()> lost, BrowserSettings settings)
    : lost_(std::move(lost)), settings_(std::move(settings)), limit_(this), answerLimit_(this), stopped_(this)
{
    NativeWebView::Events events;
    events.allow = [this](const Navigation& navigation) { return Allow(navigation); };
    events.serve = [this](const std::string& address) { return Part(address); };
    // The engine also reports loads that were given up for a newer one, and "finished" after every failure.
    events.finished = [this](const std::string& address) {
        if (loading_ && address == page_.address)
            SendTexts();
    };
    events.failed = [this](const std::string& address) {
        if (loading_ && address == page_.address)
            Finish(LoadEnd::Failed);
    };
    events.document = [this](const DocumentEnd& end) { DocumentCame(end); };
    events.wantsAll = [this](const std::string& address) {
        CallAfter([this, address] { NavigateFrame(address, kMainFrame); });
    };
    events.pressed = [this] { gate_.Pressed(); };
    events.pointed = [this](const std::string& link) { settings_.point(IsOwnAddress(link) ? "" : link); };
    events.clicked = [this](const std::string& link) { Clicked(link); };
    events.command = [this](NativeWebView::Command command, const std::string& link) { Do(command, link); };
    events.processLost = [this] { Lost(); };
    events.networkLost = [this] {
        if (followed_.empty()) // what is there of another page is there
            Lost();
    };
    events.processHangs = [this] {
        CallAfter([this] {
            if (loading_)
                LoadAfresh();
        });
    };
    native_ = NewNativeWebView(parent, std::move(events));
    Bind(
        wxEVT_TIMER,
        [this](wxTimerEvent&) {
            if (!loading_)
                return;
            Finish(LoadEnd::TimedOut);
            native_->Stop(); // what has come is painted only then
        },
        limit_.GetId());
    Bind(
        wxEVT_TIMER, [this](wxTimerEvent&) { LookForStopped(); }, stopped_.GetId());
    Bind(
        wxEVT_TIMER,
        [this](wxTimerEvent&) {
            DocumentCame({DocumentEnd::Kind::Late, wanted_});
        },
        answerLimit_.GetId());
}

Browser::~Browser() = default;

wxWindow* Browser::Window() const
{
    return native_->Window();
}

void Browser::ShowBlank(LoadEnded ended)
{
    Begin({kBlankPage, {}, {}, {}}, {}, std::move(ended));
}

void Browser::ShowPage(const LocalPage& page, LoadEnded ended)
{
    const DisplayAddress addresses(page.number, page.link);
    Page next{addresses.OfFile(page.shown), addresses, {}, {}};
    std::map<std::string, PagePart> parts;
    for (const std::string_view file : page.files) {
        if (std::optional<std::string> bytes
            = ReadWholeFile(page.folder / file)) // the engine reports the others
            parts[addresses.OfFile(file)] = PartOf(file, std::move(*bytes));
    }
    for (const LocalPage::Frame& frame : page.frames) {
        next.frames.push_back(addresses.OfFile(frame.file));
        next.texts.emplace_back(frame.name,
            native_->Normalized(frame.isStory ? addresses.OfStory() : next.frames.back() + "?text"));
        parts[next.texts.back().second] = std::exchange(parts[next.frames.back()], {{}, "text/html"});
    }
    Begin(std::move(next), std::move(parts), std::move(ended));
}

void Browser::Begin(Page page, std::map<std::string, PagePart> parts, LoadEnded ended)
{
    page_ = std::move(page);
    parts_ = std::move(parts);
    ended_ = std::move(ended);
    wanted_.clear();
    followed_.clear();
    answerLimit_.Stop();
    limit_.StartOnce(static_cast<int>(settings_.loadLimit.count()));
    Say({});
    settings_.point({});
    native_->SetCookies(false);
    if (native_->ProcessResponds())
        Load();
    else
        LoadAfresh();
}

void Browser::Load()
{
    loading_ = true;
    awaited_.clear();
    policy_.PageBegins(page_.address, page_.frames, page_.addresses);
    native_->Load(page_.address);
    stopped_.StartOnce(kLookForStopped);
}

// A stopped process would be waited for until the limits of the load and of the answer.
void Browser::LookForStopped()
{
    if (!loading_ && !answerLimit_.IsRunning())
        return;
    native_->EndStoppedProcess();
    stopped_.StartOnce(kLookForStopped);
}

void Browser::Lost()
{
    loading_ = false;
    limit_.Stop();
    CallAfter([this] { lost_(); });
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
        native_->LoadFrame(frame, address, false);
}

int Browser::ReadyState() const
{
    return loading_ ? kLoading : kComplete;
}

void Browser::SetSilent(bool silent)
{
    native_->SetSilent(silent);
}

bool Browser::Allow(const Navigation& navigation)
{
    const NavigationPolicy::Decision decision = policy_.Decide(navigation);
    if (navigation.link && navigation.byUser) {
        Say({});
        settings_.point({}); // the link goes with its page
    }
    if (navigation.redirect)
        answerLimit_.Stop(); // until the next is asked
    switch (decision.verdict) {
    case NavigationPolicy::Verdict::Allow:
        if (IsWebAddress(navigation.address)) {
            wanted_ = navigation.address;
            native_->SetCookies(true);
            answerLimit_.StartOnce(static_cast<int>(settings_.loadLimit.count()));
            stopped_.StartOnce(kLookForStopped);
        }
        return true;
    case NavigationPolicy::Verdict::Follow:
        CallAfter([this, address = decision.address] { NavigateFrame(address, kMainFrame); });
        return false;
    case NavigationPolicy::Verdict::OpenOutside: OpenOutside(decision.address); return false;
    case NavigationPolicy::Verdict::Refuse:
        CallAfter([this, from = navigation.redirect ? wanted_ : ""] {
            Tell({DocumentEnd::Kind::NoWebAddress, from});
        });
        return false;
    case NavigationPolicy::Verdict::Ignore: return false;
    }
    return false;
}

std::optional<PagePart> Browser::Part(const std::string& address) const
{
    const auto found = parts_.find(address);
    return found == parts_.end() ? std::nullopt : std::optional(found->second);
}

// The engine paints a page with frames only when everything in them has come, pictures from anywhere
// included. So the frames are empty at first, and are sent to their texts when the page is there.
void Browser::SendTexts()
{
    for (const auto& [frame, address] : page_.texts)
        awaited_.push_back(address);
    if (awaited_.empty())
        Finish(LoadEnd::Complete);
    policy_.TextsBegin(awaited_);
    if (TextScale() != 1)
        FollowTextScale();
    for (const auto& [frame, address] : page_.texts)
        native_->LoadFrame(frame, address, true);
}

void Browser::FollowTextScale()
{
    if (page_.texts.size() > 1)
        native_->SetHeadHeight(static_cast<int>(std::lround(kHeadHeight * TextScale())));
}

void Browser::Finish(LoadEnd end)
{
    limit_.Stop();
    loading_ = false;
    policy_.PageEnds();
    // The engine is in the middle of its own work here.
    CallAfter([ended = std::exchange(ended_, {}), end] {
        if (ended)
            ended(end);
    });
}

void Browser::DocumentCame(const DocumentEnd& end)
{
    if (IsOwnAddress(end.address)) {
        followed_.clear();
        native_->SetCookies(false);
        if (!loading_ || end.kind == DocumentEnd::Kind::Answered || std::erase(awaited_, end.address) == 0)
            return;
        if (end.kind != DocumentEnd::Kind::Finished)
            Finish(LoadEnd::Failed);
        else if (awaited_.empty())
            Finish(LoadEnd::Complete);
        return;
    }
    if (!IsWebAddress(end.address) || end.kind == DocumentEnd::Kind::Finished)
        return;
    answerLimit_.Stop();
    if (end.kind == DocumentEnd::Kind::Answered)
        followed_ = end.address;
    else if (followed_.empty())
        native_->SetCookies(false); // pictures of the item's text may still come
    CallAfter([this, end] { Tell(end); });
}

// What forbids frames is replaced by an empty page. What is sent on to where the engine does not go ends in
// the same way, sometimes without that page.
void Browser::Tell(DocumentEnd end)
{
    const bool isRefused = end.kind == DocumentEnd::Kind::ForbidsFrames
        || (end.kind == DocumentEnd::Kind::NoWebAddress && !end.address.empty());
    if (isRefused && native_->IsReplaced())
        native_->Back();
    else if (isRefused)
        end.kind = DocumentEnd::Kind::NoWebAddress;
    const bool opens = IsForAnotherBrowser(end) && gate_.Opens(OutsideGate::Clock::now());
    settings_.say(SentenceOf(end, opens && settings_.openOutside(end.address)));
}

// At links of these kinds the engine does and says nothing.
void Browser::Clicked(const std::string& link)
{
    const bool isScriptOfAPage = !followed_.empty() && link.starts_with("javascript:");
    const bool isElsewhere = !isScriptOfAPage && !IsOwnAddress(link) && !MayLeave(link);
    if (isElsewhere || HasBarredPort(link))
        Say(SentenceOf({DocumentEnd::Kind::NoWebAddress, {}}, false));
}

void Browser::Do(NativeWebView::Command command, const std::string& link)
{
    Say({});
    switch (command) {
    case NativeWebView::Command::Back: native_->Back(); break;
    case NativeWebView::Command::Forward: native_->Forward(); break;
    case NativeWebView::Command::Reload:
        if (!followed_.empty())
            native_->LoadFrame(kMainFrame, followed_, true);
        break;
    case NativeWebView::Command::OpenOutside:
        gate_.Pressed();
        if (const std::string& address = link.empty() ? followed_ : link; MayLeave(address))
            OpenOutside(address);
        break;
    }
}

void Browser::OpenOutside(const std::string& address)
{
    if (!gate_.Opens(OutsideGate::Clock::now()))
        return;
    CallAfter([this, address] {
        if (!settings_.openOutside(address))
            settings_.say(IsWebAddress(address) ? Words("Your browser could not be started.")
                                                : Words("Your mail program could not be started."));
    });
}

void Browser::Say(const std::string& sentence)
{
    CallAfter([this, sentence] { settings_.say(sentence); });
}

} // namespace vantro
