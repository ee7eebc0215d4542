#include "feeds/TitleSearch.h"

#include "base/Owned.h"
#include "feeds/ItemTag.h"

#include <algorithm>
#include <glib.h>
#include <vector>

namespace vantro {

namespace {

std::string FoldCase(std::string_view text)
{
    const Owned<char, g_free> folded(g_utf8_casefold(text.data(), static_cast<gssize>(text.size())));
    return folded.get();
}

// In the order of the tree, from the one after `from` on and round the end; `from` is the last.
std::vector<NewsNode*> NodesAfter(const NewsTree& tree, const NewsNode* from, bool closedToo)
{
    std::vector<NewsNode*> nodes;
    for (const auto& root : tree.Roots()) {
        nodes.push_back(root.get());
        if (closedToo || root->Expanded())
            for (const auto& item : root->Children())
                nodes.push_back(item.get());
    }
    if (const auto found = std::ranges::find(nodes, from); found != nodes.end())
        std::rotate(nodes.begin(), found + 1, nodes.end());
    return nodes;
}

} // namespace

bool TitleSearch::Add(std::string_view typed)
{
    text_ += typed;
    return Find();
}

bool TitleSearch::TakeBack()
{
    while (!text_.empty() && (static_cast<unsigned char>(text_.back()) & 0xC0U) == 0x80)
        text_.pop_back();
    if (!text_.empty())
        text_.pop_back();
    return text_.empty() || Find();
}

bool TitleSearch::Find()
{
    const auto holds = [looked = FoldCase(text_)](const NewsNode* node) {
        return FoldCase(node->Text()).find(looked) != std::string::npos;
    };
    NewsNode* selected = tree_.SelectedItem();
    if (selected != nullptr && holds(selected))
        return true;
    const std::vector<NewsNode*> nodes = NodesAfter(tree_, selected, false);
    const auto found = std::ranges::find_if(nodes, holds);
    if (found == nodes.end())
        return false;
    tree_.Select(*found);
    return true;
}

NewsNode* NextUnread(const NewsTree& tree)
{
    const std::vector<NewsNode*> nodes = NodesAfter(tree, tree.SelectedItem(), true);
    const auto found
        = std::ranges::find_if(nodes, [](const NewsNode* node) { return IsUnread(node->Tag()); });
    return found == nodes.end() ? nullptr : *found;
}

} // namespace vantro
