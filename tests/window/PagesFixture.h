#pragma once

#include "feeds/PageDisplay.h"
#include "feeds/Site.h"
#include "tests/support/FeedFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/window/WindowTest.h"
#include "toolkit/Browser.h"

#include <chrono>
#include <filesystem>
#include <gtk/gtk.h>
#include <memory>
#include <optional>
#include <string>
#include <webkit2/webkit2.h>
#include <wx/frame.h>
#include <wx/sizer.h>
#include <wx/uiaction.h>

namespace vantro::test {

// Real pages in the real engine.
class PagesWindowTest : public FeedFixture {
protected:
    PagesWindowTest()
    {
        std::filesystem::create_directory(run_);
        Open(std::chrono::seconds(30));
    }
    ~PagesWindowTest() override { Close(); }

    void Open(std::chrono::milliseconds loadLimit)
    {
        frame_ = new wxFrame(nullptr, wxID_ANY, "Pages", wxPoint(100, 100), wxSize(900, 600));
        browser_ = std::make_unique<Browser>(
            frame_, [this] { display_->BrowserLost(); },
            BrowserSettings{[this](const std::string& sentence) { pageSays_ = sentence; }, loadLimit,
                [this](const std::string& address) {
                    outside_.push_back(address);
                    return outsideStarts_;
                }});
        browser_->SetSilent(true);
        frame_->SetSizer(new wxBoxSizer(wxVERTICAL));
        frame_->GetSizer()->Add(browser_->Window(), 1, wxEXPAND);
        display_.emplace(*browser_, Services(), run_);
        engine_ = WEBKIT_WEB_VIEW(browser_->Window()->GetHandle());
        g_signal_connect(engine_, "decide-policy", G_CALLBACK(OnAllowed), &went_);
        g_signal_connect(engine_, "mouse-target-changed",
            G_CALLBACK(+[](WebKitWebView*, WebKitHitTestResult* under, guint, bool* isOnLink) {
                *isOnLink = webkit_hit_test_result_context_is_link(under) != FALSE;
            }),
            &isOnLink_);
        ASSERT_TRUE(ShowAndSettle(*frame_));
    }
    void Close()
    {
        display_.reset();
        browser_.reset();
        DestroyAndWait(*frame_);
    }
    // The browser's own handler comes first and ends the signal where it forbids.
    static gboolean OnAllowed(
        WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type, Titles* went)
    {
        if (type != WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
            went->push_back(webkit_uri_request_get_uri(
                webkit_navigation_action_get_request(webkit_navigation_policy_decision_get_navigation_action(
                    WEBKIT_NAVIGATION_POLICY_DECISION(decision)))));
        return FALSE;
    }

    void Begin(const Site& site, int item = 1)
    {
        went_.clear();
        shown_ = false;
        // The display before, which this one ends, reports as well.
        ShowItemPage(site, *display_, std::string(site.prefix) + std::to_string(item),
            [this, mine = ++begun_] { shown_ = mine == begun_; });
    }
    void Show(const Site& site, int item = 1)
    {
        Begin(site, item);
        ASSERT_TRUE(PumpUntil([this] { return shown_; }));
    }
    static void Pump(std::chrono::milliseconds time) { Rest(time); }
    void Click(int x, int y, int button = wxMOUSE_BTN_LEFT, int key = 0)
    {
        test::Click(*browser_->Window(), {x, y}, button, key);
    }
    // Waits until the page is so far that there is a link.
    void ClickLink(int x, int y, int button = wxMOUSE_BTN_LEFT, int key = 0)
    {
        isOnLink_ = false;
        EXPECT_TRUE(PumpUntil([&, i = 0]() mutable {
            wxUIActionSimulator().MouseMove(browser_->Window()->ClientToScreen(wxPoint(x + ++i % 2, y)));
            return isOnLink_;
        }));
        Click(x, y, button, key);
    }
    [[nodiscard]] std::string ColourAt(int x, int y) const
    {
        return test::ColourAt(*browser_->Window(), {x, y});
    }
    void ReceiveLink(const Site& site, const std::string& link, const std::string& description = {})
    {
        static int number = 0;
        Receive(site,
            "<item><title>" + std::to_string(++number) + kWideLink + "</title><link>" + link
                + "</link><description>" + kWideLink + description + "</description></item>");
    }
    [[nodiscard]] bool NoFilesLeft() const { return std::filesystem::is_empty(run_); }

    static constexpr const char* kWideLink = "<style>a{position:fixed;top:0;left:0;width:100%;height:95px;"
                                             "max-height:none;transform:none}</style>";
    std::filesystem::path run_ = folder_.Path() / "run";
    wxFrame* frame_ = nullptr;
    std::unique_ptr<Browser> browser_;
    std::optional<PageDisplay> display_;
    WebKitWebView* engine_ = nullptr;
    Titles went_; // where pages and frames were let go, since the last Begin()
    Titles outside_;
    bool isOnLink_ = false; // the mouse
    bool outsideStarts_ = true;
    std::string pageSays_; // of the page shown
    int begun_ = 0;
    bool shown_ = false; // the one begun last
    HttpServer server_;
};

inline std::string Html(const std::string& body)
{
    return HttpText("200 OK", body, "Content-Type: text/html\r\n");
}

} // namespace vantro::test
