// Whole histories of feeds, marks and starts, against a model that is written as the rules are told: lists
// that are searched from end to end, in the order of the rules.

#include "feeds/ItemStore.h"
#include "feeds/NewsTree.h"
#include "feeds/ReadMarks.h"
#include "feeds/SiteOperations.h"
#include "fuzz/Fuzz.h"
#include "platform/RegistryStore.h"
#include "settings/Options.h"
#include "settings/modRegistry.h"
#include "shell/StartUp.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace vantro {

namespace {

// An item as it has to be in the tree and, but for being new, in the store.
struct Item {
    std::string title;
    std::string link;
    bool isRead = false;
    bool isNew = true;
};

// A branch as the rules have it.
class Model {
public:
    void Merge(const std::vector<Item>& feed)
    {
        std::vector<Item> list = feed;
        std::vector<bool> isKnown(feed.size());
        for (const Item& old : items) {
            for (std::size_t k = 0; k < list.size(); ++k) {
                if (list[k].title == old.title) {
                    list[k].isRead = old.isRead;
                    list[k].isNew = old.isNew;
                    isKnown[k] = true;
                    break;
                }
            }
        }
        if (std::ranges::count(isKnown, false) == 0)
            return;
        items = list;
        Count();
    }
    void Mark(std::size_t item, bool isRead)
    {
        items[item].isRead = isRead;
        items[item].isNew = false;
    }
    void Restart()
    {
        for (Item& item : items)
            item.isNew = false;
        isExpanded = false;
        Count();
    }
    void Count()
    {
        int fresh = 0;
        int unread = 0;
        for (const Item& item : items) {
            fresh += item.isNew ? 1 : 0;
            unread += item.isRead ? 0 : 1;
        }
        counts = " (" + std::to_string(fresh) + " New, " + std::to_string(unread) + " Unread, "
            + std::to_string(items.size()) + " Total)";
        isBold = fresh > 0;
        isExpanded = isExpanded || (isBold && expandsNew);
    }

    std::vector<Item> items;
    std::string counts;
    bool isBold = false;
    bool isExpanded = false;
    bool expandsNew = false;
};

class History {
public:
    History()
    {
        registry_.CreateRegKey(RegRoot, RegPath);
        Restart();
    }

    void Run(Input& input)
    {
        const std::size_t number = input.Below(Sites().size());
        const Site& site = *Sites()[number];
        Model& model = models_[number];
        switch (const std::uint8_t step = input.Byte(); step) {
        case 'f': Receive(site, model, input.UpTo('.')); break;
        case 'r':
        case 'u':
            if (!model.items.empty())
                Mark(site, model, input.Below(model.items.size()), step == 'r');
            break;
        case 'c':
            UpdateSiteCounts(site, Services());
            model.Count();
            break;
        case 'e': SetExpandNew(input.Below(2) == 1); break;
        default:
            Restart();
            CompareAll();
            break;
        }
        Compare(site, model);
    }

    void CompareAll()
    {
        for (std::size_t i = 0; i < models_.size(); ++i)
            Compare(*Sites()[i], models_[i]);
    }

private:
    FeedServices Services()
    {
        return {registry_, *tree_, [] {},
            [](std::string_view, const std::string& said) { Require(said.empty(), "all goes well"); }};
    }

    // Each byte is an item; the text of each feed is another.
    void Receive(const Site& site, Model& model, std::string_view list)
    {
        static constexpr std::array<std::string_view, 7> kTitles
            = {"", "A", "a", " A", "<b>A</b>", "\xC3\xA9", "[TITLE] <UNREAD><NEW>"};
        ++feeds_;
        std::string text = "<rss>";
        std::vector<Item> feed;
        for (const char c : list) {
            Item item{std::string(kTitles[static_cast<unsigned char>(c) % kTitles.size()]),
                "http://news.example/" + std::to_string(feeds_)};
            text += "<Item>" + (item.title.empty() ? "" : "<title>" + item.title + "</TITLE>") + "<link>"
                + item.link + "</link></item>\n";
            feed.push_back(std::move(item));
        }
        const std::filesystem::path file = Write("feed.xml", text);
        MergeFeed(site, Services(), file);
        Require(!std::filesystem::exists(file), "a downloaded file does not outlive its merge");
        model.Merge(feed);
    }

    void Mark(const Site& site, Model& model, std::size_t item, bool isRead)
    {
        NewsNode* node = tree_->Find(NodeKey(site, static_cast<std::int32_t>(item + 1)));
        Require(node != nullptr, "every item has a node");
        (isRead ? MarkRead : MarkUnread)(Services(), *node);
        model.Mark(item, isRead);
    }

    void SetExpandNew(bool isOn)
    {
        registry_.WriteRegValue(RegRoot, RegPath, kAutoExpandNew.name, isOn ? 1 : 0, RegType::Dword);
        for (Model& model : models_)
            model.expandsNew = isOn;
    }

    void Restart()
    {
        tree_ = std::make_unique<NewsTree>();
        AddSiteRoots(*tree_);
        LoadStoredItems(Services());
        RefreshAllSiteCounts(Services());
        for (Model& model : models_)
            model.Restart();
    }

    void Compare(const Site& site, const Model& model)
    {
        const NewsNode& root = *tree_->Find(site.identifier);
        Require(root.Text() == std::string(site.displayName) + model.counts, "the caption holds the counts");
        Require(
            root.Bold() == model.isBold && root.Expanded() == model.isExpanded, "new items are pointed out");
        const ItemStore store(registry_, site);
        const auto total = static_cast<std::int32_t>(model.items.size());
        Require(store.Total() == total && std::ssize(root.Children()) == total,
            "tree and store hold the whole list");
        const std::vector<std::string> titles = store.ReadTexts(total, "Title");
        const std::vector<std::string> links = store.ReadTexts(total, "LINK");
        const std::vector<std::string> tags = store.ReadTexts(total, "Tag");
        for (std::size_t i = 0; i < model.items.size(); ++i) {
            const Item& item = model.items[i];
            const NewsNode& node = *root.Children()[i];
            const std::string tag = item.isRead ? "<READ>" : "<UNREAD>";
            Require(titles[i] == item.title && links[i] == item.link && tags[i] == tag,
                "the store holds the item");
            Require(
                node.Key() == NodeKey(site, static_cast<std::int32_t>(i + 1)) && node.Text() == item.title,
                "the tree holds the item");
            Require(node.Tag() == tag && node.Bold() == !item.isRead, "the tree tells whether it was read");
            Require(node.Image()
                    == (item.isNew        ? TreeImage::New
                            : item.isRead ? TreeImage::ItemRead
                                          : TreeImage::ItemUnread),
                "the tree tells whether it is new");
        }
    }

    RegistryStore store_{NoPlace()};
    modRegistry registry_{store_};
    std::unique_ptr<NewsTree> tree_;
    std::array<Model, 4> models_;
    int feeds_ = 0;
};

} // namespace

} // namespace vantro

// Each step is a byte for the site, one for what is done, and what that takes.
void vantro::Try(std::string_view bytes)
{
    constexpr int kMostSteps = 40;
    History history;
    Input input(bytes);
    for (int step = 0; step < kMostSteps && !input.IsAtEnd(); ++step)
        history.Run(input);
    history.CompareAll();
}
