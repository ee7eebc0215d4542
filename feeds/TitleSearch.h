#pragma once

#include "feeds/NewsTree.h"

#include <string>
#include <string_view>

namespace vantro {

// Looks for titles by letters as they are typed. Interface thread only.
class TitleSearch {
public:
    // `tree` outlives this.
    explicit TitleSearch(NewsTree& tree) : tree_(tree) { }

    // Adds to what is looked for (UTF-8) and selects the node that holds it, whatever the letters' case: the
    // selected one, or the next in sight, round the end. Nodes of closed branches are out of sight. False
    // when none holds it; the selection stays.
    bool Add(std::string_view typed);
    // Takes the last character back and looks again.
    bool TakeBack();
    void End() { text_.clear(); }

    // What is looked for; empty when nothing is.
    [[nodiscard]] const std::string& Text() const { return text_; }

private:
    bool Find();

    NewsTree& tree_;
    std::string text_;
};

// The first unread item behind the selected node, also in a closed branch, round the end; null when nothing
// is unread.
[[nodiscard]] NewsNode* NextUnread(const NewsTree& tree);

} // namespace vantro
