#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// What the one line of the status bar shows: the newest of what has been said and still holds. A lasting
// notice comes back when a sentence has been there for kSentenceStays. Interface thread only.
class StatusLine {
public:
    // `show` puts the text into the bar.
    explicit StatusLine(std::function<void(const std::string& text)> show);

    // Says a sentence about the subject, in the place of the one before; "" when that no longer holds.
    void Say(std::string_view subject, const std::string& sentence);
    // The same for what is less than a sentence said with Say(), and shown only while there is none of those.
    void Mention(std::string_view subject, const std::string& sentence);
    // Says one more sentence that holds until the end of the program. An empty one adds nothing.
    void AddNotice(const std::string& sentence);
    // To be called when nothing has been said for kSentenceStays.
    void ComeToRest();

    static constexpr std::chrono::seconds kSentenceStays{10};

private:
    struct Said {
        std::string subject;
        std::string sentence;
    };

    void Put(std::string_view subject, const std::string& sentence, bool onTop);
    void Show();

    std::function<void(const std::string&)> show_;
    std::vector<Said> said_; // the newest is the last
    std::string notice_;
    bool rests_ = true;
};

} // namespace vantro
