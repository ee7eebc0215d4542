#include "feeds/MergePlan.h"
#include "feeds/ReadMarks.h"
#include "settings/modRegistry.h"
#include "tests/support/FaultyDisk.h"
#include "tests/support/FeedFixture.h"

namespace vantro {

using FeedMergeTest = FeedFixture;

const ItemState kRead{TreeImage::ItemRead, false, "<READ>"};
const ItemState kUnread{TreeImage::ItemUnread, true, "<UNREAD>"};
const ItemState kNew{TreeImage::New, true, "<UNREAD>"};

TEST(PlanMerge, GivesEveryIncomingItemItsState)
{
    using Kept = std::vector<KeptItem>;
    using Incoming = std::vector<std::string_view>;
    using States = std::vector<ItemState>;
    for (const auto& [name, kept, incoming, newItems, states] : {
             std::tuple{"another order", Kept{{"A", kRead}, {"B", kUnread}}, Incoming{"B", "A"},
                 std::size_t{0}, States{kUnread, kRead}},
             {"new from before is not new again", {{"A", kNew}}, {"A"}, 0, {kNew}},
             {"twice in the feed: the second is new each time", {{"A", kRead}, {"A", kUnread}}, {"A", "A"}, 1,
                 {kUnread, kNew}},
             {"twice in the store: the later state stays", {{"A", kRead}, {"A", kUnread}}, {"A"}, 0,
                 {kUnread}},
             {"what else a tag holds stays", {{"A", {TreeImage::ItemRead, false, "x<READ>y"}}}, {"A"}, 0,
                 {{TreeImage::ItemRead, false, "x<READ>y"}}},
             {"a stored new marker counts as new and goes",
                 {{"A", {TreeImage::ItemRead, false, "<NEW><READ><NEW>"}}}, {"A"}, 1,
                 {{TreeImage::ItemRead, false, "<READ>"}}},
         }) {
        const MergePlan plan = PlanMerge(kept, incoming);
        EXPECT_EQ(plan.newItems, newItems) << name;
        EXPECT_EQ(plan.states, states) << name;
    }
}

TEST_F(FeedMergeTest, KeepsReadMarksWhenTheFeedChangesItsOrderAndBringsAnItem)
{
    for (const Site* site : Sites()) {
        ReceiveTitles(*site, {"A", "B", "C"});
        for (const char* title : {"B", "C"})
            MarkRead(Services(), Item(*site, title));
        MarkUnread(Services(), Item(*site, "C"));
        ReceiveTitles(*site, {"D", "C", "B", "A"});
        EXPECT_EQ(UnreadTitles(*site), (Titles{"D", "C", "A"}));
        EXPECT_EQ(Item(*site, "B").State(), kRead);
        EXPECT_EQ(Item(*site, "C").State(), kUnread);
    }
    Restart();
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(tree_->Roots()[i]->Text(), (Titles{"Vantro", "Xbox-Scene", "Max Console", "Xbins"})[i]);
    for (const Site* site : Sites()) {
        EXPECT_EQ(TreeTitles(*site), (Titles{"D", "C", "B", "A"})) << site->identifier;
        EXPECT_EQ(UnreadTitles(*site), (Titles{"D", "C", "A"})) << site->identifier;
        EXPECT_EQ(Item(*site, "D").State(), kUnread) << "new items come back as unread";
    }
}

TEST_F(FeedMergeTest, ChangesNothingWhenTheFeedOnlyLostItems)
{
    ReceiveTitles(modXBOXSCENE, {"A", "B", "C"});
    tree_->SetCaption(Root(modXBOXSCENE), "As it was", true);
    ReceiveTitles(modXBOXSCENE, {"A", "B"});
    EXPECT_EQ(TreeTitles(modXBOXSCENE), (Titles{"A", "B", "C"}));
    EXPECT_EQ(Caption(modXBOXSCENE), "As it was");
    // A stored item without its node counts as not stored.
    registry_->WriteRegValue(RegRoot, SiteKey(modXBOXSCENE), "TotalItems", 5, RegType::Dword);
    ReceiveTitles(modXBOXSCENE, {"D", "B"});
    EXPECT_EQ(TreeTitles(modXBOXSCENE), (Titles{"D", "B"}));
    EXPECT_EQ(Stored(modXBOXSCENE, 3, "Title"), "");
    EXPECT_EQ(Caption(modXBOXSCENE), "Xbox-Scene (2 New, 2 Unread, 2 Total)");
}

TEST_F(FeedMergeTest, TakesEachSitesFieldsFromTheirElements)
{
    const std::string feed = "<item><title>T</title><link>L</link><homepage>H</homepage><date>D</date>"
                             "<releasedate>R</releasedate><description>X</description></item>";
    for (const auto& [site, fields] :
        {std::pair{&modVANTRO, "T|L|H|D||X|<UNREAD>|"}, {&modXBINS, "T|L|H||R||<UNREAD>|"},
            {&modXBOXSCENE, "T|L|||||<UNREAD>|"}, {&modMAXCONSOLE, "T|L||||X|<UNREAD>|"}}) {
        Receive(*site, feed);
        std::string values;
        for (const char* name : {"Title", "Link", "Homepage", "date", "Releasedate", "Description", "Tag"})
            values += Stored(*site, 1, name) + "|";
        EXPECT_EQ(values, fields);
    }
}

TEST_F(FeedMergeTest, ReadsEachFieldByItselfAsUtf8OrElseAsWindows1252)
{
    ReceiveTitles(modMAXCONSOLE, {"Caf\xE9"});
    MarkRead(Services(), Item(modMAXCONSOLE, "Café"));
    Receive(modMAXCONSOLE,
        "<item><description>\xC3</description><title>Café</title></item><item><title>B</title></item>");
    EXPECT_EQ(UnreadTitles(modMAXCONSOLE), (Titles{"B"})) << "a cut description does no harm to its title";
    EXPECT_EQ(Stored(modMAXCONSOLE, 1, "Description"), "Ã");
}

TEST_F(FeedMergeTest, TakesTheFirstItemsOfAFeedWithTooManyAndSaysSo)
{
    Titles titles;
    for (int i = 1; i <= 10'000; ++i)
        titles.push_back(std::to_string(i));
    ReceiveTitles(modXBOXSCENE, titles);
    EXPECT_EQ(said_, Titles{});
    titles.push_back("One more");
    for (const char* first : {"1", "New"}) { // nothing new, and something
        titles.front() = first;
        ReceiveTitles(modXBOXSCENE, titles);
        EXPECT_EQ(std::exchange(said_, {}),
            (Titles{"Xbox-Scene sent more than 10000 items; the first 10000 were taken."}));
    }
    EXPECT_EQ(TreeTitles(modXBOXSCENE), Titles(titles.begin(), titles.end() - 1));
}

TEST_F(FeedMergeTest, TakesTheBeginningsOfTextsThatAreTooLongAndTheItemsThatFit)
{
    const std::string most(kLongestText - 1, 'x');
    const auto item = [](const std::string& title, const std::string& text) {
        return "<item><title>" + title + "</title><description>" + text + "</description></item>";
    };
    const std::string cut = "Vantro sent a text of more than 1 MiB; its beginning was taken.";
    Receive(modVANTRO, item("A", most + "y") + item("B", "b"));
    EXPECT_EQ(said_, Titles{});
    Receive(modVANTRO, item("C", most + "\u00e9 and more") + item("B", "b"));
    EXPECT_EQ(Stored(modVANTRO, 1, "Description"), most) << "no half of a letter";
    EXPECT_EQ(std::exchange(said_, {}), Titles{cut});
    std::string feed;
    for (char title = 'a'; title <= 'e'; ++title)
        feed += item({title}, most + "y");
    Receive(modVANTRO, feed);
    EXPECT_EQ(TreeTitles(modVANTRO), (Titles{"a", "b", "c"}));
    Receive(modVANTRO, item("n", "n") + item("o", std::string(kMostRead, 'x')));
    EXPECT_EQ(TreeTitles(modVANTRO), (Titles{"n"}));
    const std::string tooMuch = "Vantro sent too much text; its last items were left out.";
    EXPECT_EQ(said_, (Titles{tooMuch, tooMuch}));
}

TEST_F(FeedMergeTest, LeavesStoreAndTreeAloneOnFeedsWithoutItems)
{
    ReceiveTitles(modVANTRO, {"A"});
    for (const char* feed : {"", "<rss><channel><title>Channel</title></channel></rss>"})
        Receive(modVANTRO, feed);
    MergeFeed(modVANTRO, Services(), folder_.Path() / "missing.xml");
    EXPECT_EQ(TreeTitles(modVANTRO), (Titles{"A"}));
    EXPECT_EQ(said_, (Titles{"The downloaded news list of Vantro cannot be read."}));
    Receive(modVANTRO, "<item><title>B</title></item><item><title>C</title><link>http://news.exam");
    EXPECT_EQ(TreeTitles(modVANTRO), (Titles{"B"})) << "of a feed cut short what is whole";
}

TEST_F(FeedMergeTest, SaysWhatAFullDiskDidNotTakeAndKeepsTheOldList)
{
    ReceiveTitles(modXBINS, {"A", "B"});
    {
        FaultyDisk disk;
        Restart();
        MarkRead(Services(), Item(modXBINS, "A"));
        disk.Fail(FaultyDisk::Write, 1, SQLITE_FULL, true);
        ReceiveTitles(modXBINS, {"C", "A"});
        EXPECT_EQ(said_, (Titles{"The news list of Xbins could not be stored: The disk is full."}));
        EXPECT_EQ(TreeTitles(modXBINS), (Titles{"A", "B"}));
        MarkRead(Services(), Item(modXBINS, "B"));
        EXPECT_EQ(said_.back(), "The read mark could not be stored: The disk is full.");
        EXPECT_EQ(UnreadTitles(modXBINS), (Titles{"B"})) << "what is not stored is not shown";
        store_.reset();
    }
    Restart();
    EXPECT_EQ(UnreadTitles(modXBINS), (Titles{"B"}));
}

TEST_F(FeedMergeTest, KeepsTheSelectionOnTheSameStory)
{
    ReceiveTitles(modXBINS, {"A", "B"});
    tree_->Select(&Item(modXBINS, "B"));
    ReceiveTitles(modXBINS, {"C", "A", "B"});
    EXPECT_EQ(tree_->SelectedItem()->Key(), "xbin3");
    ReceiveTitles(modXBINS, {"D"});
    EXPECT_EQ(tree_->SelectedItem()->Key(), "XBINS");
}

TEST_F(FeedMergeTest, ExpandsABranchWithNewItemsWhenAsked)
{
    const NewsNode& root = *tree_->Find("XBOXSCENE");
    ReceiveTitles(modXBOXSCENE, {"A"});
    EXPECT_TRUE(root.Bold() && !root.Expanded());
    SetOption(kAutoExpandNew.name, 1);
    UpdateSiteCounts(modXBOXSCENE, Services());
    EXPECT_TRUE(root.Expanded());
    MarkRead(Services(), Item(modXBOXSCENE, "A"));
    UpdateSiteCounts(modXBOXSCENE, Services());
    EXPECT_TRUE(!root.Bold() && root.Expanded());
    EXPECT_EQ(Caption(modXBOXSCENE), "Xbox-Scene (0 New, 0 Unread, 1 Total)");
}

} // namespace vantro
