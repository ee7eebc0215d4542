#pragma once

#include "feeds/NewsTree.h"
#include "feeds/Site.h"
#include "feeds/Sites.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace vantro {

class PageDisplay;
class modRegistry;

// What the site operations work on. Everything outlives them.
struct FeedServices {
    modRegistry& registry;
    NewsTree& tree;
    // Paints what waits to be painted and handles no other event.
    std::function<void()> paint;
    // Puts a sentence about a subject where the user looks; "" when what was said of it holds no longer.
    std::function<void(std::string_view subject, const std::string& sentence)> say;
};

// The operations of a site, the same for all but for the site's row. Interface thread only.

// What of a feed is taken at most, so that none holds the window for long: items, bytes of all their texts,
// and bytes of one text, which is cut. What lies behind the first kMostRead bytes of the file is not read.
inline constexpr std::size_t kMostItems = 10'000;
inline constexpr std::size_t kMostText = 4UL * 1024 * 1024;
inline constexpr std::size_t kLongestText = 1UL * 1024 * 1024;
inline constexpr std::size_t kMostRead = 2 * kMostText;

// Folds a downloaded feed file into the store and the tree, all or nothing, and deletes the file. A feed
// without any new title changes nothing. A feed with more than is taken gives its first items, which is said.
// What cannot be stored is said, and then the old list stays. Returns how many items of the new list were not
// in the old one.
std::size_t MergeFeed(const Site& site, const FeedServices& services, const std::filesystem::path& file);

// Builds the site's item nodes from the store. Run once, when the site node has no items.
void LoadSiteItems(const Site& site, const FeedServices& services);

// Lets the window paint, then rewrites the site node's caption with the counts of new, unread and
// stored items, sets it bold when some are new, and then expands it if kAutoExpandNew is on.
void UpdateSiteCounts(const Site& site, const FeedServices& services);

// Shows the page of an item, marked read; `shown` is called when the display has ended.
void ShowItemPage(
    const Site& site, PageDisplay& display, std::string_view nodeKey, std::function<void()> shown);

// The site whose item nodes have keys of this prefix; null when there is none. Letter case counts.
[[nodiscard]] const Site* FindSite(std::string_view nodeKey);

// Adds the root nodes of all sites to an empty tree.
void AddSiteRoots(NewsTree& tree);

} // namespace vantro
