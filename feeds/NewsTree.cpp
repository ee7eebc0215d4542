#include "feeds/NewsTree.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vantro {

HeldItem Hold(const NewsNode& item)
{
    assert(item.Parent() != nullptr);
    return {item.Parent()->Key(), item.Key(), item.Text()};
}

NewsNode& NewsTree::AddRoot(NodeData data, std::optional<Colour> backColor)
{
    NewsNode& root = *roots_.emplace_back(std::make_unique<NewsNode>());
    root.data_ = std::move(data);
    root.backColor_ = backColor;
    byKey_.emplace(root.Key(), &root);
    if (listener_ != nullptr)
        listener_->RootAdded(root);
    return root;
}

void NewsTree::ReplaceBranch(NewsNode& root, std::vector<NodeData> items)
{
    std::optional<HeldItem> held;
    if (selected_ != nullptr && selected_->parent_ == &root)
        held = Hold(*selected_);
    for (const auto& child : root.children_)
        byKey_.erase(child->Key());
    const auto old = std::exchange(root.children_, {});
    root.children_.reserve(items.size());
    byKey_.reserve(byKey_.size() + items.size());
    for (NodeData& item : items) {
        NewsNode& node = *root.children_.emplace_back(std::make_unique<NewsNode>());
        node.data_ = std::move(item);
        node.parent_ = &root;
        byKey_.emplace(node.Key(), &node);
    }
    if (held) {
        NewsNode* same = Find(*held);
        selected_ = same != nullptr ? same : &root;
    }
    if (listener_ != nullptr)
        listener_->BranchReplaced(root);
}

NewsNode* NewsTree::Find(std::string_view key) const
{
    const auto found = byKey_.find(key);
    return found == byKey_.end() ? nullptr : found->second;
}

NewsNode* NewsTree::Find(const HeldItem& held) const
{
    NewsNode* node = Find(held.key);
    if (node != nullptr && node->Text() == held.title)
        return node;
    const NewsNode* root = Find(held.root);
    if (root == nullptr)
        return nullptr;
    const auto same = std::ranges::find_if(
        root->children_, [&](const auto& child) { return child->Text() == held.title; });
    return same == root->children_.end() ? nullptr : same->get();
}

void NewsTree::SetCaption(NewsNode& node, std::string text, bool bold)
{
    if (node.data_.text == text && node.data_.state.bold == bold)
        return;
    node.data_.text = std::move(text);
    node.data_.state.bold = bold;
    if (listener_ != nullptr)
        listener_->NodeChanged(node);
}

void NewsTree::SetState(NewsNode& node, ItemState state)
{
    node.data_.state = std::move(state);
    if (listener_ != nullptr)
        listener_->NodeChanged(node);
}

void NewsTree::SetExpanded(NewsNode& node, bool expanded)
{
    if (std::exchange(node.expanded_, expanded) != expanded && listener_ != nullptr)
        listener_->ExpandedChanged(node);
}

void NewsTree::Select(NewsNode* node)
{
    if (std::exchange(selected_, node) != node && listener_ != nullptr)
        listener_->SelectionChanged();
}

} // namespace vantro
