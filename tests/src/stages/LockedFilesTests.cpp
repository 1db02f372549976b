// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"
#include "LockedFile.h"
#include "WatchedDatabase.h"

#include <QtTest/QSignalSpy>

namespace Halvern::Test {

namespace {

/// a.tlk links b.tlk; both are selected and go to cloud/P.
class LockedFiles : public CopyingFixture
{
protected:
    LockedFiles()
    {
        tree.File("src/a.tlk", LinkText({{"1", "lib/b.tlk"}})).File("src/lib/b.tlk", "part\n");
    }

    /// The import up to and with copying.
    void Import()
    {
        EXPECT_TRUE(Prepare({"src/a.tlk", "src/lib/b.tlk"}, "P"));
        EXPECT_TRUE(importer->CopyFiles());
        log.Clear();
    }
    FileMappingPointer Holder() const { return importer->GetFileSet()->GetFiles().first(); }
    int FolderId(const QString& cloudPath) const { return Item(cloudPath)->GetId(); }
    static QString Skipped(const QString& level, const QString& path)
    {
        return level + " Repathing skipped for file " + path +
               ". File is locked. File will be repathed after it is unlocked.";
    }
    static bool IsPending(const std::shared_ptr<SyncItem>& item)
    {
        return (item->GetSyncOption() & SyncItem::RepathPending) != 0;
    }
};

} // namespace

TEST_F(LockedFiles, ALockedCopyIsDeferredInTheDatabaseAndRepathedLater)
{
    for (const char* kind : {"flock", "fcntl"}) {
        SCOPED_TRACE(kind);
        tree.Remove("cloud").Folder("cloud");
        Import();
        {
            const LockedFile locked(Cloud("P/a.tlk"), kind);
            EXPECT_FALSE(importer->RepathFiles());
            EXPECT_TRUE(importer->UpdateSyncDatabase());
        }
        EXPECT_EQ(log.Count(Skipped("INFO", Cloud("P/a.tlk"))), 1);
        EXPECT_TRUE(Holder()->HasFlag(FileMapping::NeedsRepath));
        EXPECT_FALSE(Holder()->HasFlag(FileMapping::Repathed));
        EXPECT_TRUE(IsPending(Item("P/a.tlk")));
        EXPECT_FALSE(IsPending(Item("P/b.tlk")));
        EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "lib/b.tlk"}}));

        EXPECT_TRUE(importer->RepathFiles(FolderId("P")));
        EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "b.tlk"}}));
        EXPECT_FALSE(IsPending(Item("P/a.tlk")));
    }
}

TEST_F(LockedFiles, AFileStillLockedStaysPending)
{
    Import();
    const LockedFile locked(Cloud("P/a.tlk"));
    importer->RepathFiles();
    importer->UpdateSyncDatabase();
    log.Clear();
    EXPECT_TRUE(importer->RepathFiles(FolderId("P")));
    EXPECT_EQ(Lines(), QStringList{Skipped("DEBUG", Cloud("P/a.tlk"))});
    EXPECT_TRUE(IsPending(Item("P/a.tlk")));
}

TEST_F(LockedFiles, TheNextImportOfTheFileClearsThePendingOption)
{
    Import();
    {
        const LockedFile locked(Cloud("P/a.tlk"));
        importer->RepathFiles();
        importer->UpdateSyncDatabase();
    }
    ASSERT_TRUE(IsPending(Item("P/a.tlk")));
    tree.Remove("cloud/P/a.tlk");
    Restart();
    Import();
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(importer->UpdateSyncDatabase());
    EXPECT_FALSE(IsPending(Item("P/a.tlk")));
}

TEST_F(LockedFiles, ALockedSourceIsCopiedAllTheSame)
{
    const LockedFile locked(tree.Path("src/a.tlk"));
    Import();
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "b.tlk"}}));
}

TEST_F(LockedFiles, TheProbeLeavesTimesAndPermissionsAlone)
{
    tree.File("cloud/x.tlk", "content");
    tree.Touch("cloud/x.tlk", QDateTime::fromSecsSinceEpoch(1'500'000'000));
    const QFile::Permissions before = QFile::permissions(Cloud("x.tlk"));
    const auto mapping = Add("src/a.tlk", "x.tlk", FileMapping::Copied);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_EQ(tree.Modified("cloud/x.tlk").toSecsSinceEpoch(), 1'500'000'000);
    EXPECT_EQ(QFile::permissions(Cloud("x.tlk")), before);
    EXPECT_EQ(tree.Read("cloud/x.tlk"), "content");
}

TEST_F(LockedFiles, AReadOnlyFileIsNeverLocked)
{
    Import();
    QFile::setPermissions(Cloud("P/a.tlk"), QFile::ReadOwner);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_EQ(tree.Read("cloud/P/a.tlk"), LinkText({{"1", "b.tlk"}}));
    EXPECT_FALSE(QFile::permissions(Cloud("P/a.tlk")) & QFile::WriteOwner);
}

TEST_F(LockedFiles, OneFileByPathIsSkippedWhileLocked)
{
    tree.File("cloud/x.tlk", LinkText({{"1", "old"}}));
    const LockedFile locked(Cloud("x.tlk"));
    EXPECT_FALSE(importer->RepathFile(Cloud("x.tlk"), FileLinkList{Link("1", "new")}));
    EXPECT_EQ(Lines(), QStringList{Skipped("INFO", Cloud("x.tlk"))});
    EXPECT_EQ(tree.Read("cloud/x.tlk"), LinkText({{"1", "old"}}));
}

} // namespace Halvern::Test
