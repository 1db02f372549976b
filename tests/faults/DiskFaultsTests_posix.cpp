// SPDX-License-Identifier: Apache-2.0

// Whole imports to disks that are full and folders that are closed.

#include "CopyingFixture.h"
#include "OrdinaryRights.h"
#include "SmallDisk.h"

#include <sys/stat.h>

namespace Halvern::Test {

namespace {

/// top.tlk links big.tlk, which is large, and small.tlk. Everything goes to cloud/T.
class DiskFaults : public CopyingFixture
{
protected:
    DiskFaults()
    {
        big = PatternBytes(2'000'000);
        tree.File("src/top.tlk", LinkText({{"1", "lib/big.tlk"}, {"2", "lib/small.tlk"}}))
            .File("src/lib/big.tlk", big)
            .File("src/lib/small.tlk", "part\n")
            .Folder("cloud/T");
    }
    bool WholeJob(Global::CopyOption options = Global::NoCopyOption)
    {
        log.Clear();
        return importer->CopyToCloudCacheFolder({tree.Path("src/top.tlk")}, Cloud("T"), options,
                                                {});
    }
    QStringList ItemNames() const
    {
        QStringList names;
        for (const auto& item : Database().GetAllItems(7))
            if (item->GetKind() == SyncItem::File)
                names.append(QFileInfo(item->GetLocalPath()).fileName());
        return names;
    }
    void SetMode(const QString& relative, mode_t mode)
    {
        ASSERT_EQ(::chmod(QFile::encodeName(tree.Path(relative)).constData(), mode), 0);
    }

    QByteArray big;
};

} // namespace

TEST_F(DiskFaults, OnAFullDiskWhatFitsIsImportedAndTheRestNeitherThereNorRecorded)
{
    const QByteArray top = tree.Read("src/top.tlk");
    {
        const SmallDisk disk(Cloud("T"), 512 * 1024);
        EXPECT_TRUE(WholeJob());
        EXPECT_TRUE(log.Has("INFO Finished copying files. Copied: 2, Folders created: 0, "
                            "Failed: 1, Skipped: 0, Total: 3"));
        EXPECT_EQ(tree.Contents("cloud/T"),
                  (FileTree::Snapshot{{"top.tlk", top}, {"lib/small.tlk", "part\n"}}));
        EXPECT_EQ(ItemNames(), (QStringList{"small.tlk", "top.tlk"}));
        EXPECT_EQ(Item("T/top.tlk")->GetFileLinks()[0].ItemId, -1);
        EXPECT_EQ(Item("T/top.tlk")->GetFileLinks()[1].ItemId, Item("T/lib/small.tlk")->GetId());
    }
    // With room enough the next import is complete.
    tree.Remove("cloud/T").Folder("cloud/T");
    Restart();
    EXPECT_TRUE(WholeJob());
    EXPECT_EQ(
        tree.Contents("cloud/T"),
        (FileTree::Snapshot{{"top.tlk", top}, {"lib/big.tlk", big}, {"lib/small.tlk", "part\n"}}));
    EXPECT_EQ(ItemNames(), (QStringList{"big.tlk", "small.tlk", "top.tlk"}));
    EXPECT_EQ(Item("T/top.tlk")->GetFileLinks()[0].ItemId, Item("T/lib/big.tlk")->GetId());
}

TEST_F(DiskFaults, AMoveToAFullDiskKeepsEverySourceThatDidNotFit)
{
    tree.File("src/top.tlk", big);
    const SmallDisk disk(Cloud("T"), 512 * 1024);
    EXPECT_TRUE(WholeJob(Global::MoveFiles));
    EXPECT_EQ(tree.Read("src/top.tlk"), big);
    EXPECT_TRUE(ItemNames().isEmpty());
}

TEST_F(DiskFaults, AClosedTargetFolderCostsEveryFileAndNothingElse)
{
    const FileTree::Snapshot sources = tree.Contents("src");
    SetMode("cloud/T", 0555);
    {
        const OrdinaryRights rights;
        EXPECT_TRUE(WholeJob());
    }
    EXPECT_TRUE(log.Has("INFO Finished copying files. Copied: 0, Folders created: 0, Failed: 3, "
                        "Skipped: 0, Total: 3"));
    EXPECT_EQ(tree.Contents("cloud/T"), FileTree::Snapshot());
    EXPECT_EQ(tree.Contents("src"), sources);
    EXPECT_TRUE(ItemNames().isEmpty());

    SetMode("cloud/T", 0755);
    Restart();
    EXPECT_TRUE(WholeJob());
    EXPECT_EQ(ItemNames(), (QStringList{"big.tlk", "small.tlk", "top.tlk"}));
}

TEST_F(DiskFaults, ASourceThatCannotBeReadCostsOnlyItself)
{
    SetMode("src/lib/small.tlk", 0);
    {
        const OrdinaryRights rights;
        EXPECT_TRUE(WholeJob());
    }
    EXPECT_TRUE(log.Has("INFO Finished copying files. Copied: 2, Folders created: 0, Failed: 1, "
                        "Skipped: 0, Total: 3"));
    EXPECT_EQ(tree.Read("cloud/T/lib/big.tlk"), big);
    EXPECT_FALSE(tree.Exists("cloud/T/lib/small.tlk"));
}

} // namespace Halvern::Test
