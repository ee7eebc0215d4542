#include "tests/support/FeedFixture.h"

#include "feeds/ItemStore.h"
#include "feeds/ItemTag.h"
#include "shell/StartUp.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace vantro {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder()
{
    std::string name = (fs::temp_directory_path() / "vantro-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    path_ = name;
}

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

void ScriptedPump::RunPending()
{
    ++passes;
    if (const auto action = std::exchange(next, {}))
        action();
}

FeedFixture::FeedFixture()
{
    Restart();
}

void FeedFixture::Restart(const StoreOptions& options)
{
    tree_.reset();
    registry_.reset();
    store_.reset();
    store_ = std::make_unique<RegistryStore>(folder_.Path() / "registry.db", options);
    registry_ = std::make_unique<modRegistry>(*store_);
    tree_ = std::make_unique<NewsTree>();
    registry_->CreateRegKey(RegRoot, RegPath);
    AddSiteRoots(*tree_);
    LoadStoredItems(Services());
}

FeedServices FeedFixture::Services()
{
    return {*store_, *registry_, *tree_, pump_, [this](const std::string& text) { said_.push_back(text); }};
}

void FeedFixture::Receive(const SiteModule& module, std::string_view recorded)
{
    const auto bytes = ReadWholeFile(fs::path(VANTRO_TEST_FEEDS) / recorded);
    ASSERT_TRUE(bytes) << recorded;
    const fs::path file = folder_.Write("received.xml", *bytes);
    module.MergeFeed(Services(), file);
    EXPECT_FALSE(fs::exists(file)) << "a downloaded file does not outlive its merge";
}

void FeedFixture::ReceiveTitles(const SiteModule& module, const Titles& titles)
{
    std::string feed = "<rss><channel><title>Channel</title>\n";
    for (const std::string& title : titles)
        feed += "<item><title>" + title + "</title><link>http://news.example/" + title + "</link></item>\n";
    module.MergeFeed(Services(), folder_.Write("received.xml", feed));
}

NewsNode& FeedFixture::Item(const SiteModule& module, std::string_view title)
{
    for (const auto& node : tree_->Find(module.Row().identifier)->Children()) {
        if (node->Text() == title)
            return *node;
    }
    throw std::runtime_error("no item " + std::string(title));
}

Titles FeedFixture::TreeTitles(const SiteModule& module) const
{
    Titles titles;
    for (const auto& node : tree_->Find(module.Row().identifier)->Children())
        titles.push_back(node->Text());
    return titles;
}

Titles FeedFixture::UnreadTitles(const SiteModule& module) const
{
    Titles titles;
    for (const auto& node : tree_->Find(module.Row().identifier)->Children()) {
        if (IsUnread(node->Tag()))
            titles.push_back(node->Text());
    }
    return titles;
}

std::string FeedFixture::Stored(const SiteModule& module, int item, std::string_view value)
{
    return ItemStore(*registry_, module.Row()).ReadText(item, value);
}

std::string FeedFixture::Caption(const SiteModule& module) const
{
    return tree_->Find(module.Row().identifier)->Text();
}

void FeedFixture::SetOption(std::string_view name, int value)
{
    registry_->WriteRegValue(RegRoot, RegPath, name, value, RegType::Dword);
}

} // namespace vantro
