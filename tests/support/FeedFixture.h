#pragma once

#include "feeds/ItemStore.h"
#include "feeds/NewsTree.h"
#include "feeds/Site.h"
#include "feeds/SiteOperations.h"
#include "feeds/Sites.h"
#include "platform/RegType.h"
#include "platform/RegistryStore.h"
#include "settings/modRegistry.h"

#include <cstddef>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantro {

// A folder of the test's own, removed at its end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
    // Writes bytes into a file of the folder and returns its path.
    std::filesystem::path Write(std::string_view name, std::string_view bytes) const;

private:
    std::filesystem::path path_;
};

using Titles = std::vector<std::string>;

// How many sites have a download strip.
[[nodiscard]] std::size_t StripCount();

// A store on disk, the tree with its roots, and the site operations, told in the words of the feeds.
class FeedFixture : public ::testing::Test {
protected:
    FeedFixture() { Restart(); }

    // Merges a feed of this text, or one made of these titles, as if it had just been downloaded.
    void Receive(const Site& site, std::string_view feed);
    void ReceiveTitles(const Site& site, const Titles& titles);
    // Closes store and tree and starts again from what is on disk.
    void Restart();

    NewsNode& Root(const Site& site) const { return *tree_->Find(site.identifier); }
    std::string Caption(const Site& site) const { return Root(site).Text(); }
    NewsNode& Item(const Site& site, std::string_view title) const;
    Titles ListTitles(const Site& site, bool unreadOnly) const;
    Titles TreeTitles(const Site& site) const { return ListTitles(site, false); }
    Titles UnreadTitles(const Site& site) const { return ListTitles(site, true); }
    std::string Stored(const Site& site, int item, std::string_view value) const
    {
        return ItemStore(*registry_, site).ReadText(item, value);
    }
    // Numbers directly under the program's key: options and places.
    RegValue Option(std::string_view name) const { return registry_->ReadRegValue(RegRoot, RegPath, name); }
    void SetOption(std::string_view name, int value)
    {
        registry_->WriteRegValue(RegRoot, RegPath, name, value, RegType::Dword);
    }
    // Told apart by their places in the site's frame, and so not by what its page makes of them.
    static std::string_view AutoNfoOption() { return modXBINS.optionFrame.options.front().name; }
    static std::string_view ExternalOption(const Site& site) { return site.optionFrame.options.back().name; }
    FeedServices Services()
    {
        return {*registry_, *tree_, [] {},
            [this](std::string_view, const std::string& text) {
                if (!text.empty())
                    said_.push_back(text);
            }};
    }

    TemporaryFolder folder_;
    std::unique_ptr<RegistryStore> store_;
    std::unique_ptr<modRegistry> registry_;
    std::unique_ptr<NewsTree> tree_;
    std::vector<std::string> said_;
};

} // namespace vantro
