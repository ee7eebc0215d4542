#pragma once

#include "base/Words.h"

#include <string>
#include <string_view>

namespace vantro {

// The pictures a node of the news tree can have.
enum class TreeImage { Vantro, XboxScene, Site, ItemUnread, ItemRead, New };

// The picture's key: the name of its resources of the type "icons" but for the size.
[[nodiscard]] constexpr std::string_view ImageKey(TreeImage image)
{
    switch (image) {
    case TreeImage::Vantro: return "vantro";
    case TreeImage::XboxScene: return "xboxscene";
    case TreeImage::Site: return "site";
    case TreeImage::ItemUnread: return "item_unread";
    case TreeImage::ItemRead: return "item_read";
    case TreeImage::New: return "new";
    }
    return {};
}

// What an item's picture tells, in a word; null for that of a site.
[[nodiscard]] inline const char* StateWord(TreeImage image)
{
    switch (image) {
    case TreeImage::ItemUnread: return Words("unread");
    case TreeImage::ItemRead: return Words("read");
    case TreeImage::New: return Words("new");
    case TreeImage::Vantro:
    case TreeImage::XboxScene:
    case TreeImage::Site: break;
    }
    return nullptr;
}

// What a node of the news tree shows of its item's state. The tag of an item holds one of the markers of
// modMain.h, unless the store holds another; that of a root is its site's display name.
struct ItemState {
    TreeImage image = TreeImage::New;
    bool bold = true;
    std::string tag;

    friend bool operator==(const ItemState&, const ItemState&) = default;
};

} // namespace vantro
