#include "shell/StatusLine.h"

#include <utility>

namespace vantro {

StatusLine::StatusLine(std::function<void(const std::string& text)> show) : show_(std::move(show)) { }

void StatusLine::Say(std::string_view subject, const std::string& sentence)
{
    Put(subject, sentence, true);
}

void StatusLine::Mention(std::string_view subject, const std::string& sentence)
{
    Put(subject, sentence, false);
}

void StatusLine::Put(std::string_view subject, const std::string& sentence, bool onTop)
{
    const auto erased = std::erase_if(said_, [&](const Said& said) { return said.subject == subject; });
    if (!sentence.empty()) {
        said_.insert(onTop ? said_.end() : said_.begin(), {std::string(subject), sentence});
        rests_ = false;
    }
    if (erased != 0 || !sentence.empty())
        Show();
}

void StatusLine::AddNotice(const std::string& sentence)
{
    if (sentence.empty())
        return;
    notice_ += (notice_.empty() ? "" : " ") + sentence;
    rests_ = true;
    Show();
}

void StatusLine::ComeToRest()
{
    if (rests_ || notice_.empty())
        return;
    rests_ = true;
    Show();
}

void StatusLine::Show()
{
    show_(rests_ || said_.empty() ? notice_ : said_.back().sentence);
}

} // namespace vantro
