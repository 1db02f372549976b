// SPDX-License-Identifier: Apache-2.0

// What a host is told about the base store, and gets back from it.

#include "BaseStoreFixture.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Halvern::Test {

namespace {

class BaseStoreVersions : public BaseStore
{
protected:
    /// Writes the file and keeps it.
    void Keep(const QString& name, const QByteArray& content)
    {
        tree.File(name, content);
        ASSERT_EQ(ErrorOf(name), QString());
        Wait();
    }

    QList<QByteArray> ContentsOf(const QString& name) const
    {
        QList<QByteArray> contents;
        for (const StoredVersion& version : Versions(name)) {
            QFile copy(version.storeFile);
            EXPECT_TRUE(copy.open(QFile::ReadOnly));
            contents.append(copy.readAll());
            EXPECT_EQ(contents.last().size(), version.bytes);
        }
        return contents;
    }

    QString ErrorOfWriting(const StoredVersion& version, const QString& target) const
    {
        QString error = u"not set"_s;
        const bool written =
            SyncManager::GetInstance()->WriteVersion(version, tree.Path(target), &error);
        EXPECT_EQ(written, error.isEmpty());
        return error;
    }
};

using Contents = QList<QByteArray>;

} // namespace

TEST_F(BaseStoreVersions, OfAFileComeNewestFirst)
{
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-2);
    Keep(u"cloud/a.prt"_s, "one");
    Keep(u"cloud/b.prt"_s, "other");
    Keep(u"cloud/a.prt"_s, "two");
    EXPECT_EQ(ContentsOf(u"cloud/a.prt"_s), Contents({"two", "one"}));
    Keep(u"cloud/a.prt"_s, "one");
    EXPECT_EQ(ContentsOf(u"cloud/a.prt"_s), Contents({"one", "two"})) << "kept again";
    const StoredVersion newest = Versions(u"cloud/x/../a.prt"_s).first();
    EXPECT_GT(newest.saved, before);
    EXPECT_LT(newest.saved, QDateTime::currentDateTimeUtc().addSecs(2));
    EXPECT_EQ(newest.saved.timeSpec(), Qt::UTC);
    EXPECT_TRUE(Versions(u"cloud/c.prt"_s).isEmpty());
    tree.Remove(u"cloud/a.prt"_s);
    Restart();
    EXPECT_EQ(ContentsOf(u"cloud/a.prt"_s), Contents({"one", "two"})) << "the file is gone";
}

TEST_F(BaseStoreVersions, AreFoundWhicheverWayTheyWereKept)
{
    tree.File(u"cloud/a"_s, "one");
    ASSERT_TRUE(Save(u"cloud/a"_s));
    EXPECT_EQ(ContentsOf(u"cloud/a"_s), Contents({"one"}));
}

TEST_F(BaseStoreVersions, TellThePathThatTheyAreOf)
{
    Keep(u"cloud/Gehäuse.prt"_s, "one");
    Keep(u"cloud/Gehäuse.prt"_s, "two");
    EXPECT_EQ(tree.Contents(u"sync.db.base/paths"_s).values(),
              Contents({tree.Path(u"cloud/Gehäuse.prt"_s).toUtf8()}));
    tree.Remove(u"sync.db.base/paths"_s);
    EXPECT_EQ(Versions(u"cloud/Gehäuse.prt"_s).size(), 2) << "also without that";
}

TEST_F(BaseStoreVersions, ForgetPathsWithoutCopiesAfterADay)
{
    const QString name = QString(32, u'a');
    const QString fresh = QString(32, u'b');
    tree.File(u"sync.db.base/paths/"_s + name).File(u"sync.db.base/paths/"_s + fresh);
    tree.Touch(u"sync.db.base/paths/"_s + name, QDateTime::fromSecsSinceEpoch(1700000000));
    Keep(u"cloud/a"_s, "one");
    EXPECT_FALSE(tree.Exists(u"sync.db.base/paths/"_s + name));
    EXPECT_TRUE(tree.Exists(u"sync.db.base/paths/"_s + fresh));
    EXPECT_EQ(tree.Contents(u"sync.db.base/paths"_s).size(), 2);
}

TEST_F(BaseStoreVersions, AreWrittenToNewFilesOnly)
{
    const QByteArray content = PatternBytes(700001);
    Keep(u"cloud/a"_s, content);
    const StoredVersion version = Versions(u"cloud/a"_s).first();
    EXPECT_EQ(ErrorOfWriting(version, u"out"_s), QString());
    EXPECT_EQ(tree.Read(u"out"_s), content);
    tree.File(u"mine"_s, "mine");
    EXPECT_NE(ErrorOfWriting(version, u"mine"_s), QString());
    EXPECT_EQ(tree.Read(u"mine"_s), "mine");
    EXPECT_NE(ErrorOfWriting(version, u"no folder/out"_s), QString());
}

TEST_F(BaseStoreVersions, ThatAreDamagedAreNotWritten)
{
    Keep(u"cloud/a"_s, "content");
    const StoredVersion version = Versions(u"cloud/a"_s).first();
    QFile copy(version.storeFile);
    ASSERT_TRUE(copy.open(QFile::ReadWrite) && copy.write("x") == 1);
    copy.close();
    EXPECT_EQ(ErrorOfWriting(version, u"out"_s), u"the copy in the base store is damaged"_s);
    EXPECT_FALSE(tree.Exists(u"out"_s));
    ASSERT_TRUE(copy.remove());
    EXPECT_TRUE(ErrorOfWriting(version, u"out"_s)
                    .startsWith(u"the copy in the base store cannot be read: "_s));
    EXPECT_FALSE(tree.Exists(u"out"_s));
    EXPECT_EQ(ErrorOfWriting({version.saved, 7, tree.Path(u"cloud/a"_s)}, u"out"_s),
              u"it is no copy of the base store"_s);
    EXPECT_EQ(ErrorOf(u"cloud/a"_s), QString());
    EXPECT_EQ(ErrorOfWriting(version, u"out"_s), QString()) << "kept again, it is whole";
}

TEST_F(BaseStoreVersions, TheStatusTellsTheRoom)
{
    settings.baseStoreLimit = 1000;
    Restart();
    EXPECT_EQ(Status().folder, tree.Path(u"sync.db.base"_s));
    EXPECT_EQ(Status().limit, 1000);
    EXPECT_EQ(Status().used, 0);
    EXPECT_EQ(Status().available, 1000);
    EXPECT_EQ(Status().problem, QString());
    EXPECT_FALSE(tree.Exists(u"sync.db.base"_s)) << "asking writes nothing";
    ASSERT_EQ(ErrorOf(u"a"_s, 300), QString());
    EXPECT_EQ(Status().used, 300);
    EXPECT_EQ(Status().available, 1000) << "what is old may go";
    const BaseStoreRun run;
    ASSERT_EQ(ErrorOf(u"b"_s, 500), QString());
    EXPECT_EQ(Status().used, 800);
    EXPECT_EQ(Status().available, 500);
}

TEST_F(BaseStoreVersions, NothingIsKeptWithoutAStoreAndTheReasonIsTold)
{
    tree.File(u"a"_s);
    settings.baseStoreLimit = 0;
    Restart();
    EXPECT_EQ(ErrorOf(u"a"_s), u"no old versions are kept: baseStoreLimit is 0"_s);
    EXPECT_EQ(Status().problem, ErrorOf(u"a"_s));
    EXPECT_EQ(Status().limit, 0);
    settings.baseStoreLimit = 1000;
    settings.databaseFile = u":memory:"_s;
    Restart();
    EXPECT_EQ(ErrorOf(u"a"_s), u"no old versions are kept: the database is in memory"_s);
    EXPECT_EQ(Status().problem, ErrorOf(u"a"_s));
    EXPECT_EQ(Status().folder, QString());
    EXPECT_TRUE(Versions(u"a"_s).isEmpty());
    EXPECT_FALSE(SyncManager::GetInstance()->SaveVersion(tree.Path(u"a"_s), nullptr));
}

TEST_F(BaseStoreVersions, AFileThatCannotBeKeptIsNamedWithTheReason)
{
    settings.baseStoreLimit = 100;
    Restart();
    tree.Folder(u"folder"_s);
    EXPECT_EQ(ErrorOf(u"a"_s, 101), u"it has 101 bytes, and the base store %1 may hold 100"_s.arg(
                                        tree.Path(u"sync.db.base"_s)));
    EXPECT_TRUE(ErrorOf(u"gone"_s).startsWith(u"it cannot be read: "_s));
    EXPECT_TRUE(ErrorOf(u"folder"_s).startsWith(u"it cannot be read: "_s));
    EXPECT_EQ(Kept(), Contents());
}

TEST_F(BaseStoreVersions, AStoreThatIsAFileKeepsNothing)
{
    tree.File(u"a"_s).File(u"sync.db.base"_s, "mine");
    const QString reason = u"the base store %1 is no folder"_s.arg(tree.Path(u"sync.db.base"_s));
    EXPECT_EQ(ErrorOf(u"a"_s), reason);
    EXPECT_EQ(Status().problem, reason);
    EXPECT_TRUE(Versions(u"a"_s).isEmpty());
    EXPECT_EQ(tree.Read(u"sync.db.base"_s), "mine");
}

TEST_F(BaseStoreVersions, AStoreBelowAFileKeepsNothing)
{
    tree.File(u"a"_s).File(u"file"_s, "mine");
    settings.baseStoreFolder = tree.Path(u"file/store"_s);
    Restart();
    EXPECT_TRUE(ErrorOf(u"a"_s).startsWith(u"the base store "_s + settings.baseStoreFolder));
    EXPECT_TRUE(Status().problem.startsWith(u"the base store "_s + settings.baseStoreFolder));
    EXPECT_EQ(tree.Read(u"file"_s), "mine");
}

TEST_F(BaseStoreVersions, AStoreThatIsBrokenInsideKeepsNothing)
{
    tree.File(u"a"_s).File(u"sync.db.base/paths"_s, "a file");
    EXPECT_EQ(ErrorOf(u"a"_s),
              u"the base store %1 is no folder"_s.arg(tree.Path(u"sync.db.base/paths"_s)));
    EXPECT_EQ(Status().problem, ErrorOf(u"a"_s));
    tree.Remove(u"sync.db.base/paths"_s).Folder(u"sync.db.base/lock"_s);
    EXPECT_TRUE(
        ErrorOf(u"a"_s).startsWith(u"the base store "_s + tree.Path(u"sync.db.base/lock"_s)));
    tree.Remove(u"sync.db.base/lock"_s);
    EXPECT_EQ(ErrorOf(u"a"_s), QString());
}

TEST(SyncManagerLifecycle, WithoutFolderManagerThereAreNoVersions)
{
    SyncManager::Initialize();
    SyncManager* const manager = SyncManager::GetInstance();
    FileTree tree;
    tree.File(u"a"_s);
    QString error;
    EXPECT_FALSE(manager->SaveVersion(tree.Path(u"a"_s), &error));
    EXPECT_EQ(error, u"there is no base store: FolderManager is not initialised"_s);
    EXPECT_EQ(manager->GetBaseStoreStatus().problem, error);
    EXPECT_TRUE(manager->GetVersions(tree.Path(u"a"_s)).isEmpty());
    EXPECT_FALSE(manager->WriteVersion({}, tree.Path(u"b"_s), &error));
    {
        const BaseStoreRun run;
    }
    SyncManager::Uninitialize();
    const BaseStoreRun run;
    EXPECT_EQ(SyncManager::GetInstance(), nullptr);
}

} // namespace Halvern::Test
