#pragma once

#include "feeds/ItemState.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vantro {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

// What a node is made from.
struct NodeData {
    std::string key;
    std::string text;
    ItemState state;
};

// A node of the news tree. Only NewsTree changes it. A root stays for good; an item's node goes when its
// branch is replaced, so whoever comes back to an item later holds a HeldItem.
class NewsNode {
public:
    [[nodiscard]] const std::string& Key() const { return data_.key; }
    [[nodiscard]] const std::string& Text() const { return data_.text; }
    [[nodiscard]] TreeImage Image() const { return data_.state.image; }
    [[nodiscard]] bool Bold() const { return data_.state.bold; }
    [[nodiscard]] const std::string& Tag() const { return data_.state.tag; }
    [[nodiscard]] const ItemState& State() const { return data_.state; }
    [[nodiscard]] std::optional<Colour> BackColor() const { return backColor_; }
    [[nodiscard]] bool Expanded() const { return expanded_; }
    // Null for a root.
    [[nodiscard]] const NewsNode* Parent() const { return parent_; }
    [[nodiscard]] const std::vector<std::unique_ptr<NewsNode>>& Children() const { return children_; }

private:
    friend class NewsTree;
    NodeData data_;
    std::optional<Colour> backColor_;
    bool expanded_ = false;
    NewsNode* parent_ = nullptr;
    std::vector<std::unique_ptr<NewsNode>> children_;
};

// An item that somebody took hold of: a click, an open menu, a page under way. It stays the same story
// whatever a merge does to its branch.
struct HeldItem {
    std::string root; // key of its site's node
    std::string key;
    std::string title;
};
// REQUIRES: `item` is no root.
[[nodiscard]] HeldItem Hold(const NewsNode& item);

// Is told what has changed in the tree, after the change and before the call that made it returns. It must
// not change the tree meanwhile. A selection that a replaced branch takes along has no call of its own.
class NewsTreeListener {
public:
    virtual ~NewsTreeListener() = default;
    virtual void RootAdded(const NewsNode& root) = 0;
    virtual void BranchReplaced(const NewsNode& root) = 0;
    virtual void NodeChanged(const NewsNode& node) = 0;
    virtual void ExpandedChanged(const NewsNode& node) = 0;
    virtual void SelectionChanged() = 0;
};

// The news tree: a root node per site, its items below. Feeds write to this model only; the window shows it.
// Interface thread only.
class NewsTree {
public:
    // One listener, or null; it must outlive its attachment.
    void Attach(NewsTreeListener* listener) { listener_ = listener; }

    // REQUIRES: no node has its key; the same holds for the keys below.
    NewsNode& AddRoot(NodeData data, std::optional<Colour> backColor);
    // Puts these item nodes in the place of all items of the branch. The selection stays with its story, and
    // goes to the root when that is gone.
    void ReplaceBranch(NewsNode& root, std::vector<NodeData> items);

    // Null when there is no node of that key.
    [[nodiscard]] NewsNode* Find(std::string_view key) const;
    // The node of that key while it has that title, else the first one of its branch that has; null when the
    // story is gone.
    [[nodiscard]] NewsNode* Find(const HeldItem& held) const;
    [[nodiscard]] const std::vector<std::unique_ptr<NewsNode>>& Roots() const { return roots_; }

    // The listener is told when something has changed; of a state always.
    void SetCaption(NewsNode& node, std::string text, bool bold);
    void SetState(NewsNode& node, ItemState state);
    void SetExpanded(NewsNode& node, bool expanded);

    // Null when no node is selected.
    [[nodiscard]] NewsNode* SelectedItem() const { return selected_; }
    void Select(NewsNode* node);

private:
    // Item keys count upwards ("xbin1", "xbin2"), and all of them are looked up in that order: read as a
    // number they fall side by side, where scattered ones would each wait for the memory.
    struct KeyHash {
        std::size_t operator()(std::string_view key) const
        {
            std::size_t number = 0;
            for (const char c : key)
                number = number * 10 + static_cast<unsigned char>(c);
            return number;
        }
    };

    std::vector<std::unique_ptr<NewsNode>> roots_;
    // The keys are views into the nodes.
    std::unordered_map<std::string_view, NewsNode*, KeyHash> byKey_;
    NewsNode* selected_ = nullptr;
    NewsTreeListener* listener_ = nullptr;
};

} // namespace vantro
