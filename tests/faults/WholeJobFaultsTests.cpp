// SPDX-License-Identifier: Apache-2.0

// Whole imports in which something goes wrong between or within the stages.

#include "CopyingFixture.h"
#include "WatchedDatabase.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QtCore/QDir>

namespace Halvern::Test {

using SyncFolderManagerLib::FolderManager;

namespace {

/// top.tlk links a.tlk and lib/b.tlk; a.tlk links lib/b.tlk as well. Everything goes to cloud/T.
class WholeJobFaults : public CopyingFixture
{
protected:
    WholeJobFaults()
    {
        tree.File("src/top.tlk", LinkText({{"1", "a.tlk"}, {"2", "../lib/b.tlk"}}))
            .File("src/a.tlk", LinkText({{"1", "../lib/b.tlk"}}))
            .File("lib/b.tlk", "part\n")
            .Folder("cloud/T");
        complete = {{"top.tlk", LinkText({{"1", "a.tlk"}, {"2", "lib/b.tlk"}})},
                    {"a.tlk", LinkText({{"1", "lib/b.tlk"}})},
                    {"lib/b.tlk", "part\n"}};
    }

    bool Start() { return Prepare({"src/top.tlk"}, "T"); }
    bool WholeJob()
    {
        log.Clear();
        return importer->CopyToCloudCacheFolder({tree.Path("src/top.tlk")}, Cloud("T"),
                                                Global::NoCopyOption, {});
    }
    void EmptyTarget() { tree.Remove("cloud/T").Folder("cloud/T"); }
    void StagesAfterCopying()
    {
        repathed = importer->RepathFiles();
        recorded = importer->UpdateSyncDatabase();
    }
    QStringList ItemNames() const
    {
        QStringList names;
        for (const auto& item : Database().GetAllItems(7))
            if (item->GetKind() == SyncItem::File)
                names.append(QFileInfo(item->GetLocalPath()).fileName());
        return names;
    }
    /// Every item of a file knows the items that its links name.
    bool AllLinksAreResolved() const
    {
        for (const auto& item : Database().GetAllItems(7))
            for (const auto& link : item->GetFileLinks())
                if (link.ItemId < 0)
                    return false;
        return true;
    }

    FileTree::Snapshot complete;
    bool repathed = false;
    bool recorded = false;
};

} // namespace

TEST_F(WholeJobFaults, ASourceThatVanishesBeforeCopyingCostsOnlyItself)
{
    ASSERT_TRUE(Start());
    tree.Remove("lib/b.tlk");
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_TRUE(log.Has("INFO Finished copying files. Copied: 2, Folders created: 0, Failed: 1, "
                        "Skipped: 0, Total: 3"));
    StagesAfterCopying();
    EXPECT_TRUE(repathed);
    EXPECT_TRUE(recorded);
    complete.remove("lib/b.tlk");
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_EQ(ItemNames(), (QStringList{"a.tlk", "top.tlk"}));

    // Back again, it completes the import.
    tree.File("lib/b.tlk", "part\n");
    EmptyTarget();
    EXPECT_TRUE(WholeJob());
    complete.insert("lib/b.tlk", "part\n");
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_TRUE(AllLinksAreResolved());
}

TEST_F(WholeJobFaults, ASourceThatVanishesBeforeItsLinksAreReadComesWithoutThem)
{
    ASSERT_TRUE(importer->Initialize({tree.Path("src/top.tlk"), tree.Path("src/a.tlk")}, Cloud("T"),
                                     false, Global::NoCopyOption, {}));
    tree.Remove("src/top.tlk");
    EXPECT_TRUE(importer->ExtractFileLinks());
    importer->AssignTargetPaths();
    importer->MarkCollisions();
    importer->ResolveCollisions();
    EXPECT_TRUE(importer->CopyFiles());
    StagesAfterCopying();
    complete.remove("top.tlk");
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_EQ(ItemNames(), (QStringList{"a.tlk", "b.tlk"}));
}

TEST_F(WholeJobFaults, ACopyThatVanishesBeforeRepathingIsNamedAndTheOthersGoOn)
{
    ASSERT_TRUE(Start());
    EXPECT_TRUE(importer->CopyFiles());
    tree.Remove("cloud/T/a.tlk");
    StagesAfterCopying();
    EXPECT_FALSE(repathed);
    EXPECT_TRUE(recorded); // a linked file's failure is not its parent's
    EXPECT_TRUE(
        log.Has("ERROR Failed to repath file links in " + Cloud("T/a.tlk") + ". File not found."));
    complete.remove("a.tlk");
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_EQ(ItemNames(), (QStringList{"b.tlk", "top.tlk"}));
}

TEST_F(WholeJobFaults, ATargetFolderThatIsAFileCopiesNothingAndRecordsNothing)
{
    tree.Remove("cloud/T").File("cloud/T", "file");
    ASSERT_TRUE(importer->Initialize({tree.Path("src/top.tlk"), tree.Path("src/a.tlk")},
                                     Cloud("T/sub"), false, Global::NoCopyOption, {}));
    importer->ExtractFileLinks();
    importer->AssignTargetPaths();
    importer->MarkCollisions();
    importer->ResolveCollisions();
    EXPECT_TRUE(importer->CopyFiles());
    StagesAfterCopying();
    EXPECT_TRUE(log.Has("INFO Finished copying files. Copied: 0, Folders created: 0, Failed: 3, "
                        "Skipped: 0, Total: 3"));
    EXPECT_TRUE(log.Has("ERROR Failed to create folder " + Cloud("T/sub")));
    EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"T", "file"}}));
    EXPECT_TRUE(ItemNames().isEmpty());
}

TEST_F(WholeJobFaults, ADatabaseThatRefusesWritesCostsTheItemsButNoFile)
{
    const auto database = WatchedDatabase::Install();
    database->refuseWrites = true;
    EXPECT_TRUE(WholeJob());
    importer.reset(); // the history is refused as well
    EXPECT_EQ(database->historyWrites, 1);
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_TRUE(ItemNames().isEmpty());

    database->refuseWrites = false;
    Restart();
    EmptyTarget();
    EXPECT_TRUE(WholeJob());
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_EQ(ItemNames(), (QStringList{"a.tlk", "b.tlk", "top.tlk"}));
    EXPECT_TRUE(AllLinksAreResolved());
}

TEST_F(WholeJobFaults, ADatabaseThatAnotherProgramKeepsLockedCostsTheItemsButNoFile)
{
    importer.reset();
    FolderManager::Uninitialize();
    settings.databaseBusyTimeout = 20;
    FolderManager::Configure(settings);
    FolderManager::Initialize();
    Restart();
    SQLite::Database other(settings.databaseFile.toStdString(), SQLite::OPEN_READWRITE);
    other.exec("BEGIN IMMEDIATE");
    EXPECT_TRUE(WholeJob());
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_TRUE(ItemNames().isEmpty());
    EXPECT_TRUE(Database().GetLastError().contains("locked"))
        << Database().GetLastError().toStdString();

    other.exec("ROLLBACK");
    Restart();
    EmptyTarget();
    EXPECT_TRUE(WholeJob());
    EXPECT_EQ(ItemNames(), (QStringList{"a.tlk", "b.tlk", "top.tlk"}));
    EXPECT_EQ(other.execAndGet("PRAGMA integrity_check").getString(), "ok");
}

TEST_F(WholeJobFaults, WithoutADatabaseFilesAreStillImported)
{
    FolderManager::GetInstance()->SetSyncDatabase(nullptr);
    EXPECT_TRUE(WholeJob());
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_TRUE(log.Has("INFO Finished updating sync database"));
    EXPECT_FALSE(importer->UpdateSyncDatabase());
}

TEST_F(WholeJobFaults, APluginThatRefusesToRewriteCostsTheLinksOfThatFileOnly)
{
    tree.File("src/a.tlk", LinkText({{"1", "../lib/b.tlk"}}) + "norepath\n");
    EXPECT_TRUE(WholeJob());
    complete["a.tlk"] = LinkText({{"1", "../lib/b.tlk"}}) + "norepath\n";
    EXPECT_EQ(tree.Contents("cloud/T"), complete);
    EXPECT_EQ(ItemNames(), (QStringList{"a.tlk", "b.tlk", "top.tlk"}));
    EXPECT_EQ(Item("T/a.tlk")->GetSyncOption(), SyncItem::NoSyncOption);
}

} // namespace Halvern::Test
