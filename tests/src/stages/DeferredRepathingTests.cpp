// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"
#include "LockedFile.h"
#include "WatchedDatabase.h"

#include <QtTest/QSignalSpy>

namespace Halvern::Test {

namespace {

/// Items of the folder cloud/P, written straight to the database.
class DeferredRepathing : public CopyingFixture
{
protected:
    DeferredRepathing() : database(WatchedDatabase::Install()) {}

    std::shared_ptr<SyncItem> Root() const
    {
        return SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncRootFolder(Cloud());
    }
    std::shared_ptr<SyncItem> Folder(const QString& path) const
    {
        return Database().AddFolderItem(Root(), Cloud(path));
    }
    std::shared_ptr<SyncItem> AddItem(const QString& path, const QString& link,
                                      SyncItem::SyncOption options = SyncItem::RepathPending |
                                                                     SyncItem::SkipFileLinks)
    {
        const auto item = std::make_shared<SyncItem>(Cloud(path), "/" + path, "/");
        item->SetAuthenticationId(7);
        item->SetRootFolderId(Root()->GetId());
        item->SetParentFolderId(Folder(QFileInfo(path).path())->GetId());
        item->SetSyncOption(options);
        if (!link.isEmpty())
            item->SetFileLinks({Link("1", link)});
        EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(item));
        database->Clear();
        log.Clear();
        return item;
    }
    bool RepathFolder(const QString& path) { return importer->RepathFiles(Folder(path)->GetId()); }

    std::shared_ptr<WatchedDatabase> database;
};

} // namespace

TEST_F(DeferredRepathing, AnIdOfMinusOneFails)
{
    EXPECT_FALSE(importer->RepathFiles(-1));
    EXPECT_EQ(controller->polls, 0);
}

TEST_F(DeferredRepathing, AFolderThatTheDatabaseDoesNotKnowFails)
{
    EXPECT_FALSE(importer->RepathFiles(4711));
}

TEST_F(DeferredRepathing, TheIdOfAFileFails)
{
    tree.File("cloud/P/a.tlk", "");
    EXPECT_FALSE(importer->RepathFiles(AddItem("P/a.tlk", "x")->GetId()));
}

TEST_F(DeferredRepathing, AFolderOutsideTheCloudFolderSucceedsAndNothingIsDone)
{
    const auto outside = Database().AddRootFolder(tree.Path("elsewhere"), "/", 7);
    ASSERT_TRUE(outside);
    bool asked = false;
    database->filesWithOption = [&](const auto& items) {
        asked = true;
        return items;
    };
    EXPECT_TRUE(importer->RepathFiles(outside->GetId()));
    EXPECT_FALSE(asked);
}

TEST_F(DeferredRepathing, RepathsPendingFilesAtAnyDepthAndKeepsTheirOtherOptions)
{
    tree.File("cloud/P/a.tlk", LinkText({{"1", "old"}}))
        .File("cloud/P/deep/b.tlk", LinkText({{"1", "old"}}));
    AddItem("P/a.tlk", "new a");
    AddItem("P/deep/b.tlk", "new b");
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(RepathFolder("P"));
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "new a"}}));
    EXPECT_EQ(tree.Read("cloud/P/deep/b.tlk"), LinkText({{"1", "new b"}}));
    EXPECT_EQ(modified.size(), 2);
    EXPECT_EQ(Item("P/a.tlk")->GetSyncOption(), SyncItem::SkipFileLinks);
    EXPECT_EQ(Item("P/deep/b.tlk")->GetSyncOption(), SyncItem::SkipFileLinks);
    EXPECT_EQ(PathsOf(Item("P/a.tlk")->GetFileLinks()), QStringList{"new a"});
}

TEST_F(DeferredRepathing, FilesOutsideTheFolderAndFilesNotPendingAreLeftAlone)
{
    tree.File("cloud/P/a.tlk", LinkText({{"1", "old"}}))
        .File("cloud/Q/b.tlk", LinkText({{"1", "old"}}));
    AddItem("P/a.tlk", "new", SyncItem::SkipFileLinks);
    AddItem("Q/b.tlk", "new");
    EXPECT_TRUE(RepathFolder("P"));
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "old"}}));
    EXPECT_EQ(tree.Read("cloud/Q/b.tlk"), LinkText({{"1", "old"}}));
    EXPECT_TRUE(database->written.isEmpty());
    EXPECT_EQ(controller->polls, 0);
}

TEST_F(DeferredRepathing, ItemsWithoutTheOptionAreNotTriedEvenWhenTheDatabaseGivesThem)
{
    tree.File("cloud/P/a.tlk", LinkText({{"1", "old"}}));
    const auto item = AddItem("P/a.tlk", "new", SyncItem::SkipFileLinks);
    database->filesWithOption = [&](const auto&) { return QList{item}; };
    EXPECT_TRUE(RepathFolder("P"));
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "old"}}));
    EXPECT_TRUE(database->written.isEmpty());
}

TEST_F(DeferredRepathing, AFileThatVanishedIsDroppedWithoutAWord)
{
    AddItem("P/a.tlk", "new");
    EXPECT_TRUE(RepathFolder("P"));
    EXPECT_TRUE(Lines().isEmpty());
    EXPECT_EQ(Item("P/a.tlk")->GetSyncOption(), SyncItem::SkipFileLinks);
    EXPECT_EQ(database->written, QStringList{Cloud("P/a.tlk")});
}

TEST_F(DeferredRepathing, AFileThatThePluginRefusesIsNotTriedAgain)
{
    tree.File("cloud/P/a.tlk", LinkText({{"1", "old"}}) + "norepath\n")
        .File("cloud/P/b.tlk", LinkText({{"1", "old"}}));
    AddItem("P/a.tlk", "new");
    AddItem("P/b.tlk", "new");
    EXPECT_TRUE(RepathFolder("P"));
    EXPECT_EQ(Item("P/a.tlk")->GetSyncOption(), SyncItem::SkipFileLinks);
    EXPECT_EQ(tree.Read("cloud/P/b.tlk"), LinkText({{"1", "new"}}));
    PluginCallLog calls;
    EXPECT_TRUE(RepathFolder("P"));
    EXPECT_TRUE(calls.Calls().isEmpty());
}

TEST_F(DeferredRepathing, ALockedFileWaitsWhileTheOthersAreRepathed)
{
    tree.File("cloud/P/a.tlk", LinkText({{"1", "old"}}))
        .File("cloud/P/b.tlk", LinkText({{"1", "old"}}));
    AddItem("P/a.tlk", "new");
    AddItem("P/b.tlk", "new");
    const LockedFile locked(Cloud("P/a.tlk"));
    EXPECT_TRUE(RepathFolder("P"));
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "old"}}));
    EXPECT_EQ(tree.Read("cloud/P/b.tlk"), LinkText({{"1", "new"}}));
    EXPECT_EQ(Item("P/a.tlk")->GetSyncOption(), SyncItem::RepathPending | SyncItem::SkipFileLinks);
    EXPECT_EQ(Item("P/b.tlk")->GetSyncOption(), SyncItem::SkipFileLinks);
    EXPECT_EQ(database->written, QStringList{Cloud("P/b.tlk")});
}

TEST_F(DeferredRepathing, NoItemsIsSuccessWithoutAPoll)
{
    EXPECT_TRUE(importer->RepathFiles(QList<std::shared_ptr<SyncItem>>()));
    EXPECT_EQ(controller->polls, 0);
}

} // namespace Halvern::Test
