#include "tests/support/FeedFixture.h"

#include "feeds/ItemTag.h"
#include "platform/PrivateFolder.h"
#include "settings/modRegistry.h"
#include "shell/StartUp.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace vantro {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : path_(MakePrivateFolder(fs::temp_directory_path(), "vantro-test-")) { }

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path TemporaryFolder::Write(std::string_view name, std::string_view bytes) const
{
    std::ofstream(path_ / name, std::ios::binary) << bytes;
    return path_ / name;
}

std::size_t StripCount()
{
    return static_cast<std::size_t>(
        std::ranges::count_if(Sites(), [](const Site* site) { return site->strip.has_value(); }));
}

void FeedFixture::Restart()
{
    store_.reset(); // before it is opened again
    store_ = std::make_unique<RegistryStore>(folder_.Path() / "registry.db");
    registry_ = std::make_unique<modRegistry>(*store_);
    tree_ = std::make_unique<NewsTree>();
    registry_->CreateRegKey(RegRoot, RegPath);
    AddSiteRoots(*tree_);
    LoadStoredItems(Services());
}

void FeedFixture::Receive(const Site& site, std::string_view feed)
{
    const fs::path file = folder_.Write("received.xml", feed);
    MergeFeed(site, Services(), file);
    EXPECT_FALSE(fs::exists(file)) << "a downloaded file does not outlive its merge";
}

void FeedFixture::ReceiveTitles(const Site& site, const Titles& titles)
{
    std::string feed = "<rss><channel><title>Channel</title>\n";
    for (const std::string& title : titles)
        feed += ReplaceAll(
            "<item><title>{T}</title><link>http://news.example/{T}</link></item>\n", "{T}", title);
    Receive(site, feed);
}

NewsNode& FeedFixture::Item(const Site& site, std::string_view title) const
{
    for (const auto& node : Root(site).Children()) {
        if (node->Text() == title)
            return *node;
    }
    throw std::runtime_error("no item " + std::string(title));
}

Titles FeedFixture::ListTitles(const Site& site, bool unreadOnly) const
{
    Titles titles;
    for (const auto& node : Root(site).Children()) {
        if (!unreadOnly || IsUnread(node->Tag()))
            titles.push_back(node->Text());
    }
    return titles;
}

} // namespace vantro
