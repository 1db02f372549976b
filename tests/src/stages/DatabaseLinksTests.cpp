// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"
#include "WatchedDatabase.h"

namespace Halvern::Test {

namespace {

/// a.tlk has an item with links already.
class DatabaseLinks : public CopyingFixture
{
protected:
    DatabaseLinks()
    {
        tree.File("src/a.tlk", "").File("cloud/a.tlk", "").File("cloud/b.tlk", "");
        mapping = Add("src/a.tlk", "a.tlk", FileMapping::Selected | FileMapping::Copied);
        EXPECT_TRUE(importer->UpdateSyncDatabase());
    }

    static SyncServices::FileLink Resolved(const QString& refId, const QString& path, int id)
    {
        SyncServices::FileLink link = Link(refId, path);
        link.ItemId = id;
        link.CloudItemId = "cloud " + QString::number(id);
        return link;
    }
    FileLinkList Merge(const FileLinkList& known, const FileLinkList& found)
    {
        const auto item = Item("a.tlk");
        item->SetFileLinks(known);
        EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(item));
        mapping->SetTargetFileLinks(found);
        EXPECT_TRUE(importer->UpdateSyncDatabase());
        return Item("a.tlk")->GetFileLinks();
    }

    FileMappingPointer mapping;
};

} // namespace

TEST_F(DatabaseLinks, AKnownPathKeepsItsIdsAndTakesTheNewReference)
{
    EXPECT_EQ(Merge({Resolved("old", "b.tlk", 77)}, {Link("new", "b.tlk")}),
              FileLinkList{Resolved("new", "b.tlk", 77)});
}

TEST_F(DatabaseLinks, TheNewListReplacesTheOldOneInItsOwnOrder)
{
    EXPECT_EQ(Merge({Resolved("1", "gone", 70), Resolved("2", "b.tlk", 71), Resolved("3", "c", 72)},
                    {Link("9", "c"), Link("8", "new"), Link("7", "b.tlk")}),
              (FileLinkList{Resolved("9", "c", 72), Link("8", "new"), Resolved("7", "b.tlk", 71)}));
}

TEST_F(DatabaseLinks, PathsThatDifferInLetterCaseAreDifferent)
{
    EXPECT_EQ(Merge({Resolved("1", "X.tlk", 77)}, {Link("2", "x.tlk")}),
              FileLinkList{Link("2", "x.tlk")});
}

TEST_F(DatabaseLinks, OfTwoKnownLinksWithOnePathTheFirstCounts)
{
    EXPECT_EQ(Merge({Resolved("1", "b.tlk", 70), Resolved("2", "b.tlk", 71)},
                    {Link("3", "b.tlk"), Link("4", "b.tlk")}),
              (FileLinkList{Resolved("3", "b.tlk", 70), Resolved("4", "b.tlk", 70)}));
}

TEST_F(DatabaseLinks, AKnownLinkThatIsUnresolvedIsTriedAgain)
{
    const auto linked = Add("src/b.tlk", "b.tlk", FileMapping::Selected | FileMapping::Copied);
    tree.File("src/b.tlk", "");
    const FileLinkList links = Merge({Link("1", "b.tlk")}, {Link("1", "b.tlk")});
    ASSERT_EQ(links.size(), 1);
    EXPECT_EQ(links[0].ItemId, Item("b.tlk")->GetId());
}

TEST_F(DatabaseLinks, TheDateOfTheLinksIsThatOfTheMapping)
{
    const QDateTime date = QDateTime::fromSecsSinceEpoch(1'234'567'890, Qt::UTC);
    mapping->SetTargetFileLinksExtractedAtFileDate(date);
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    EXPECT_EQ(Item("a.tlk")->GetFileLinksExtractedAtFileDate(), date);
}

TEST_F(DatabaseLinks, AWholeImportRecordsWhatTheCopiesHold)
{
    Restart();
    tree.File("proj/top.tlk", LinkText({{"1", "parts/bolt.tlk"}, {"2", "../lib/nut.tlk"}}))
        .File("proj/parts/bolt.tlk", LinkText({{"1", "../../lib/nut.tlk"}}))
        .File("lib/nut.tlk", "content\n");
    ASSERT_TRUE(Prepare({"proj/top.tlk"}, "T"));
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    // The nut is laid out beside the first file that links it, the bolt.
    EXPECT_EQ(tree.Contents("cloud/T"),
              (FileTree::Snapshot{
                  {"top.tlk", LinkText({{"1", "parts/bolt.tlk"}, {"2", "parts/lib/nut.tlk"}})},
                  {"parts/bolt.tlk", LinkText({{"1", "lib/nut.tlk"}})},
                  {"parts/lib/nut.tlk", "content\n"}}));
    const FileLinkList links = Item("T/top.tlk")->GetFileLinks();
    const auto nut = Item("T/parts/lib/nut.tlk");
    ASSERT_TRUE(nut);
    EXPECT_EQ(PathsOf(links), (QStringList{"parts/bolt.tlk", "parts/lib/nut.tlk"}));
    EXPECT_EQ(links[0].ItemId, Item("T/parts/bolt.tlk")->GetId());
    EXPECT_EQ(links[1].ItemId, nut->GetId());
    EXPECT_EQ(Item("T/parts/bolt.tlk")->GetFileLinks()[0].ItemId, nut->GetId());
    EXPECT_EQ(Item("T/top.tlk")->GetFileLinksExtractedAtFileDate().toSecsSinceEpoch(),
              tree.Modified("cloud/T/top.tlk").toSecsSinceEpoch());
}

} // namespace Halvern::Test
