// SPDX-License-Identifier: Apache-2.0

#include "VersionsFixture.h"

#include <QtCore/QDir>

namespace Halvern::Test {

using namespace Jobs;
using SyncServices::SyncManager;

namespace {

using Contents = QList<QByteArray>;

class OldVersions : public VersionsFixture
{
protected:
    ~OldVersions() override { QDir::setCurrent(m_before); }

    /// Begins a session whose base store may hold so many bytes.
    void BeginWithStoreOf(qint64 bytes)
    {
        SyncServices::ServicesSettings settings = Settings();
        settings.baseStoreLimit = bytes;
        session.reset();
        session.emplace(settings, PluginFolders());
    }

private:
    const QString m_before = QDir::currentPath();
};

} // namespace

TEST_F(OldVersions, AreListedNewestFirstWithSizeAndTime)
{
    Write(u"Demo/a.gltf"_s, {"one", "second", "now"});
    EXPECT_EQ(Versions(Cloud(u"Demo/a.gltf"_s)), Contents({"second", "one"}));
    const Version newest = ListVersions(*session, Cloud(u"Demo/a.gltf"_s)).first();
    EXPECT_EQ(newest.bytes, 6);
    EXPECT_LT(qAbs(newest.saved.secsTo(QDateTime::currentDateTimeUtc())), 60);
    EXPECT_EQ(newest.saved.timeSpec(), Qt::UTC);
    Write(u"Demo/b.gltf"_s, {"b"});
    EXPECT_EQ(Versions(Cloud(u"Demo/b.gltf"_s)), Contents());
}

TEST_F(OldVersions, OfAFileThatIsGoneAreThereStill)
{
    Write(u"Demo/a.gltf"_s, {"one", "two"});
    tree.Remove(u"cloud/Demo"_s);
    EXPECT_EQ(Versions(Cloud(u"Demo/a.gltf"_s)), Contents({"one"}));
    const Refusal refusal = RefusalOf([&] { ListVersions(*session, Cloud(u"Demo/no.gltf"_s)); });
    EXPECT_EQ(refusal.kind, JobErrorKind::VersionMissing);
    EXPECT_EQ(refusal.text, u"cloud/Demo/no.gltf: no such file, and no old version of it"_s);
}

TEST_F(OldVersions, AreFoundByPathsRelativeToEitherFolder)
{
    Write(u"Demo/a.gltf"_s, {"one", "two"});
    tree.File(u"work/Demo/a.gltf"_s, "the source");
    ASSERT_TRUE(QDir::setCurrent(tree.Path(u"work"_s)));
    EXPECT_EQ(VersionedFile(*session, u"Demo/a.gltf"_s), Cloud(u"Demo/a.gltf"_s));
    EXPECT_EQ(VersionedFile(*session, u"../cloud/Demo/./a.gltf"_s), Cloud(u"Demo/a.gltf"_s));
    EXPECT_EQ(VersionedFile(*session, u"../elsewhere/a.gltf"_s), tree.Path(u"elsewhere/a.gltf"_s));
    ASSERT_TRUE(QDir::setCurrent(Cloud(u"Demo"_s)));
    EXPECT_EQ(VersionedFile(*session, u"a.gltf"_s), Cloud(u"Demo/a.gltf"_s));
    EXPECT_EQ(Versions(u"a.gltf"_s), Contents({"one"}));
}

TEST_F(OldVersions, AreListedInASessionForPlansToo)
{
    Write(u"a"_s, {"one", "two"});
    Begin(SessionUse::PlanOnly);
    EXPECT_EQ(Versions(Cloud(u"a"_s)), Contents({"one"}));
    EXPECT_EQ(RefusalToRestore(Cloud(u"a"_s)).kind, JobErrorKind::WrongOrder);
    session.reset();
    for (const QString& name : {u"sync.db"_s, u"sync.db-wal"_s, u"sync.db-shm"_s})
        if (tree.Exists(name))
            tree.Remove(name);
    Begin(SessionUse::PlanOnly);
    EXPECT_EQ(Versions(Cloud(u"a"_s)), Contents({"one"})) << "the database is gone, not the store";
    EXPECT_FALSE(tree.Exists(u"sync.db"_s));
}

TEST_F(OldVersions, ARestoredOneTakesThePlaceOfTheFileWhichIsKept)
{
    Write(u"Demo/a.gltf"_s, {"one", "two", "now"});
    const RestoredVersion restored = Restore(Cloud(u"Demo/a.gltf"_s), 2);
    EXPECT_EQ(restored.file, Cloud(u"Demo/a.gltf"_s));
    EXPECT_EQ(restored.version.number, 2);
    EXPECT_EQ(restored.version.bytes, 3);
    EXPECT_TRUE(restored.replaced);
    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"Demo/a.gltf"_s, "one"}}));
    EXPECT_EQ(Versions(Cloud(u"Demo/a.gltf"_s)), Contents({"now", "two", "one"}));
    Restore(Cloud(u"Demo/a.gltf"_s));
    EXPECT_EQ(tree.Read(u"cloud/Demo/a.gltf"_s), "now") << "undone";
}

TEST_F(OldVersions, ARestoredOneOfAFileThatIsGoneBringsItsFolderBack)
{
    Write(u"Demo/lib/a.gltf"_s, {"one", "two"});
    tree.Remove(u"cloud/Demo"_s);
    EXPECT_FALSE(Restore(Cloud(u"Demo/lib/a.gltf"_s)).replaced);
    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"Demo/lib/a.gltf"_s, "one"}}));
    EXPECT_EQ(Versions(Cloud(u"Demo/lib/a.gltf"_s)), Contents({"one"}));
}

TEST_F(OldVersions, ALargeOneComesBackByteForByte)
{
    const QByteArray content = PatternBytes(1'500'007);
    Write(u"a.bin"_s, {content, "now"});
    Restore(Cloud(u"a.bin"_s));
    EXPECT_EQ(tree.Read(u"cloud/a.bin"_s), content);
}

TEST_F(OldVersions, WrittenElsewhereLeavesTheFileAlone)
{
    Write(u"a"_s, {"one", "now"});
    const RestoredVersion restored = Restore(Cloud(u"a"_s), 1, tree.Path(u"work/out"_s));
    EXPECT_EQ(restored.file, tree.Path(u"work/out"_s));
    EXPECT_FALSE(restored.replaced);
    EXPECT_EQ(tree.Contents(u"work"_s), (FileTree::Snapshot{{u"out"_s, "one"}}));
    EXPECT_EQ(tree.Read(u"cloud/a"_s), "now");
    EXPECT_EQ(Versions(Cloud(u"a"_s)), Contents({"one"}));
    Begin(SessionUse::PlanOnly);
    Restore(Cloud(u"a"_s), 1, tree.Path(u"work/out2"_s));
    EXPECT_EQ(tree.Read(u"work/out2"_s), "one");
}

TEST_F(OldVersions, AreNeverWrittenOverAnotherFile)
{
    Write(u"a"_s, {"one", "now"});
    tree.File(u"work/mine"_s, "mine").Folder(u"work/folder"_s);
    for (const QString& name : {u"work/mine"_s, u"work/folder"_s}) {
        const Refusal refusal = RefusalToRestore(Cloud(u"a"_s), 1, tree.Path(name));
        EXPECT_EQ(refusal.kind, JobErrorKind::RestoreRefused);
        EXPECT_EQ(refusal.text, name + u" exists already"_s);
    }
    const Refusal refusal = RefusalToRestore(Cloud(u"a"_s), 1, tree.Path(u"no/out"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreRefused);
    EXPECT_EQ(refusal.text, u"no/out has no folder to lie in"_s);
    EXPECT_EQ(tree.Contents(u"work"_s),
              (FileTree::Snapshot{{u"mine"_s, "mine"}, {u"folder/"_s, ""}}));
}

TEST_F(OldVersions, ThatThereAreNotAreNamed)
{
    Write(u"a"_s, {"one", "now"});
    for (const int number : {-1, 0, 2}) {
        const Refusal refusal = RefusalToRestore(Cloud(u"a"_s), number);
        EXPECT_EQ(refusal.kind, JobErrorKind::VersionMissing);
        EXPECT_EQ(refusal.text, u"cloud/a has no version %1, only 1 to 1"_s.arg(number));
    }
    Write(u"b"_s, {"now"});
    EXPECT_EQ(RefusalToRestore(Cloud(u"b"_s)).text, u"cloud/b has no old versions"_s);
}

TEST_F(OldVersions, AreRestoredInTheCloudFolderOnly)
{
    tree.File(u"work/a"_s, "mine");
    QString error;
    ASSERT_TRUE(SyncManager::GetInstance()->SaveVersion(tree.Path(u"work/a"_s), &error));
    tree.File(u"work/a"_s, "now");
    const Refusal refusal = RefusalToRestore(tree.Path(u"work/a"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreRefused);
    EXPECT_EQ(refusal.text, u"work/a does not lie in the cloud cache folder cloud"_s);
    EXPECT_EQ(tree.Read(u"work/a"_s), "now");
}

TEST_F(OldVersions, AreNotPutInThePlaceOfAFolder)
{
    Write(u"a"_s, {"one", "now"});
    tree.Remove(u"cloud/a"_s).File(u"cloud/a/b"_s);
    EXPECT_EQ(RefusalToRestore(Cloud(u"a"_s)).text, u"cloud/a is no file"_s);
    Write(u"d/e"_s, {"one", "now"});
    tree.Remove(u"cloud/d"_s).File(u"cloud/d"_s, "a file");
    const Refusal refusal = RefusalToRestore(Cloud(u"d/e"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreRefused);
    EXPECT_EQ(refusal.text, u"cloud/d/e lies below a file"_s);
}

TEST_F(OldVersions, AReadOnlyFileIsNotReplaced)
{
    Write(u"a"_s, {"one", "now"});
    ASSERT_TRUE(QFile::setPermissions(Cloud(u"a"_s), QFile::ReadOwner | QFile::ReadUser));
    EXPECT_EQ(RefusalToRestore(Cloud(u"a"_s)).text, u"cloud/a is read-only"_s);
    ASSERT_TRUE(QFile::setPermissions(Cloud(u"a"_s), QFile::ReadOwner | QFile::WriteOwner));
}

TEST_F(OldVersions, AFileThatCannotBeKeptIsNotReplaced)
{
    BeginWithStoreOf(1000);
    Write(u"a"_s, {"one", QByteArray(1001, 'x')});
    const Refusal refusal = RefusalToRestore(Cloud(u"a"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreFailed);
    EXPECT_EQ(refusal.text,
              u"cloud/a is not restored: what stands there could not be kept: it has 1001 bytes, "
              "and the base store sync.db.base may hold 1000"_s);
    EXPECT_EQ(Versions(Cloud(u"a"_s)), Contents({"one"}));
}

TEST_F(OldVersions, ARestoredOneIsNotPushedOutByTheFileThatItReplaces)
{
    BeginWithStoreOf(1000);
    Write(u"a"_s, {QByteArray(600, '1'), QByteArray(600, '2')});
    const Refusal refusal = RefusalToRestore(Cloud(u"a"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreFailed);
    EXPECT_EQ(Versions(Cloud(u"a"_s)), Contents({QByteArray(600, '1')}));
    Restore(Cloud(u"a"_s), 1, tree.Path(u"work/out"_s));
    EXPECT_EQ(tree.Read(u"work/out"_s), QByteArray(600, '1'));
}

TEST_F(OldVersions, ADamagedOneIsNotRestored)
{
    Write(u"a"_s, {"one", "now"});
    QFile copy(ListVersions(*session, Cloud(u"a"_s)).first().storeFile);
    ASSERT_TRUE(copy.open(QFile::ReadWrite) && copy.write("X") == 1);
    copy.close();
    const Refusal refusal = RefusalToRestore(Cloud(u"a"_s));
    EXPECT_EQ(refusal.kind, JobErrorKind::RestoreFailed);
    EXPECT_EQ(refusal.text, u"cloud/a is not restored: the copy in the base store is damaged"_s);
    EXPECT_EQ(RefusalToRestore(Cloud(u"a"_s), 1, tree.Path(u"work/out"_s)).kind,
              JobErrorKind::RestoreFailed);
    EXPECT_EQ(tree.Contents(u"work"_s), FileTree::Snapshot());
    EXPECT_EQ(Versions(Cloud(u"a"_s)).size(), 1) << "what stands there was not kept for nothing";
}

TEST_F(OldVersions, ARestoredCopyCountsAsChangedAndIsLeftByTheNextImport)
{
    tree.File(u"work/a.tlk"_s, "one");
    Import(Request({u"a.tlk"_s}));
    tree.File(u"work/a.tlk"_s, "second");
    EXPECT_EQ(Import(Request({u"a.tlk"_s})).summary.Count(Outcome::Updated), 1);
    Restore(Cloud(u"a.tlk"_s));
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "one");
    EXPECT_EQ(Import(Request({u"a.tlk"_s})).summary.Count(Outcome::Left), 1);
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "one");
}

} // namespace Halvern::Test
