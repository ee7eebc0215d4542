#pragma once

#include "feeds/NewsTree.h"
#include "feeds/SiteOperations.h"

namespace vantro {

// Mark an item read or unread, in the store and then in the tree: what cannot be stored is said, and the tree
// keeps showing the old state. An item that arrived as new stops being new. The site's counts are not taken
// anew. A node of an unknown prefix changes in the tree alone.
void MarkRead(const FeedServices& services, NewsNode& node);
void MarkUnread(const FeedServices& services, NewsNode& node);

} // namespace vantro
