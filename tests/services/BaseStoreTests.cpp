// SPDX-License-Identifier: Apache-2.0

#include "BaseStoreFixture.h"

#include "syncservices/SyncManager.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <thread>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

using Contents = QList<QByteArray>;

} // namespace

TEST_F(BaseStore, KeepsACopyOfTheFileAndLeavesTheFileAlone)
{
    const QByteArray content = PatternBytes(700001);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1700000000);
    tree.File(u"cloud/Gehäuse.prt"_s, content).Touch(u"cloud/Gehäuse.prt"_s, time);
    EXPECT_TRUE(Save(u"cloud/Gehäuse.prt"_s));
    const FileTree::Snapshot kept = Copies();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept.first(), content);
    EXPECT_TRUE(kept.firstKey().endsWith(u".prt"_s)) << kept.firstKey().toStdString();
    EXPECT_EQ(tree.Read(u"cloud/Gehäuse.prt"_s), content);
    EXPECT_EQ(tree.Modified(u"cloud/Gehäuse.prt"_s), time);
}

TEST_F(BaseStore, KeepsOneCopyPerPathAndContent)
{
    tree.File(u"cloud/a"_s, "one").File(u"cloud/b"_s, "one");
    EXPECT_TRUE(Save(u"cloud/a"_s));
    EXPECT_TRUE(Save(u"cloud/a"_s));
    EXPECT_EQ(Kept(), Contents({"one"}));
    EXPECT_TRUE(Save(u"cloud/b"_s));
    EXPECT_EQ(Kept(), Contents({"one", "one"}));
    tree.File(u"cloud/a"_s, "two");
    EXPECT_TRUE(Save(u"cloud/a"_s));
    EXPECT_EQ(Kept(), Contents({"one", "one", "two"}));
    Restart();
    EXPECT_TRUE(Save(u"cloud/a"_s));
    EXPECT_EQ(Kept(), Contents({"one", "one", "two"}));
}

TEST_F(BaseStore, MayLieInALongPath)
{
    settings.baseStoreFolder = tree.Path((QString(60, u'd') + u'/').repeated(6) + u"base"_s);
    Restart();
    tree.File(u"cloud/a"_s, "one");
    EXPECT_TRUE(Save(u"cloud/a"_s));
    EXPECT_EQ(Kept(QDir(tree.Path()).relativeFilePath(settings.baseStoreFolder)),
              Contents({"one"}));
}

TEST_F(BaseStore, KeepsEmptyFiles)
{
    tree.File(u"cloud/a"_s, "");
    EXPECT_TRUE(Save(u"cloud/a"_s));
    EXPECT_EQ(Kept(), Contents({""}));
}

TEST_F(BaseStore, ReplacesACopyThatLostItsBytes)
{
    tree.File(u"cloud/a"_s, "content");
    ASSERT_TRUE(Save(u"cloud/a"_s));
    const QString name = u"sync.db.base/"_s + Copies().firstKey();
    ASSERT_TRUE(QFile::resize(tree.Path(name), 0));
    EXPECT_TRUE(Save(u"cloud/a"_s));
    EXPECT_EQ(tree.Read(name), "content");
}

TEST_F(BaseStore, RemovesTheOldestCopiesBeyondTheLimit)
{
    settings.baseStoreLimit = 1000;
    Restart();
    for (const char* name : {"a", "b", "c", "d"}) {
        tree.File(QString::fromLatin1(name), QByteArray(300, name[0]));
        ASSERT_TRUE(Save(QString::fromLatin1(name)));
        Wait();
    }
    EXPECT_EQ(Kept(), Contents({QByteArray(300, 'b'), QByteArray(300, 'c'), QByteArray(300, 'd')}));
    ASSERT_TRUE(Save(u"b"_s)) << "saved again, it is the newest";
    Wait();
    tree.File(u"e"_s, QByteArray(600, 'e'));
    ASSERT_TRUE(Save(u"e"_s));
    EXPECT_EQ(Kept(), Contents({QByteArray(300, 'b'), QByteArray(600, 'e')}));
}

TEST_F(BaseStore, KnowsTheAgeOfCopiesAfterARestart)
{
    settings.baseStoreLimit = 1000;
    for (const char* name : {"c", "a", "b"}) {
        tree.File(QString::fromLatin1(name), QByteArray(300, name[0]));
        ASSERT_TRUE(Save(QString::fromLatin1(name)));
        Wait();
    }
    ASSERT_TRUE(Save(u"c"_s));
    Restart();
    tree.File(u"d"_s, QByteArray(400, 'd'));
    ASSERT_TRUE(Save(u"d"_s));
    EXPECT_EQ(Kept(), Contents({QByteArray(300, 'b'), QByteArray(300, 'c'), QByteArray(400, 'd')}));
}

TEST_F(BaseStore, CountsWhatOtherProcessesKeep)
{
    settings.baseStoreLimit = 1000;
    Restart();
    tree.File(u"a"_s, QByteArray(300, 'a')).File(u"b"_s, QByteArray(300, 'b'));
    ASSERT_TRUE(Save(u"a"_s));
    Wait();
    const QString other = u"sync.db.base/"_s + QString(32, u'0') + u'-' + QString(64, u'f');
    tree.File(other, QByteArray(600, 'x'));
    Wait();
    ASSERT_TRUE(Save(u"b"_s));
    EXPECT_EQ(Kept(), Contents({QByteArray(300, 'b'), QByteArray(600, 'x')}));
}

TEST_F(BaseStore, NeverTouchesFilesOfOthersInItsFolder)
{
    settings.baseStoreFolder = tree.Path(u"mine"_s);
    settings.baseStoreLimit = 100;
    Restart();
    tree.File(u"mine/thesis.doc"_s, QByteArray(500, 't')).File(u"mine/notes.part"_s, "n");
    tree.Touch(u"mine/notes.part"_s, QDateTime::fromSecsSinceEpoch(1000000000));
    tree.File(u"a"_s, QByteArray(80, 'a')).File(u"b"_s, QByteArray(80, 'b'));
    ASSERT_TRUE(Save(u"a"_s) && Save(u"b"_s));
    EXPECT_EQ(Kept(u"mine"_s), Contents({QByteArray(80, 'b'), "n", QByteArray(500, 't')}));
    EXPECT_FALSE(tree.Exists(u"sync.db.base"_s));
}

TEST_F(BaseStore, RemovesTheUnfinishedCopiesOfKilledProcesses)
{
    const QString part = u"sync.db.base/1700000000000-4711-0.part"_s;
    const QString fresh = u"sync.db.base/1700000000000-4711-1.part"_s;
    tree.File(part, "half").Touch(part, QDateTime::fromSecsSinceEpoch(1700000000));
    tree.File(fresh, "being written").File(u"a"_s, "a");
    ASSERT_TRUE(Save(u"a"_s));
    EXPECT_EQ(Kept(), Contents({"a", "being written"}));
}

TEST_F(BaseStore, KeepsNothingLargerThanTheLimit)
{
    settings.baseStoreLimit = 100;
    Restart();
    tree.File(u"small"_s, QByteArray(100, 's')).File(u"large"_s, QByteArray(101, 'l'));
    EXPECT_TRUE(Save(u"small"_s));
    EXPECT_FALSE(Save(u"large"_s));
    EXPECT_EQ(Kept(), Contents({QByteArray(100, 's')}));
}

TEST_F(BaseStore, KeepsNothingWithALimitOfZeroOrADatabaseInMemory)
{
    tree.File(u"a"_s);
    settings.baseStoreLimit = 0;
    Restart();
    EXPECT_FALSE(Save(u"a"_s));
    settings.baseStoreLimit = 1000;
    settings.databaseFile = u":memory:"_s;
    Restart();
    EXPECT_FALSE(Save(u"a"_s));
    EXPECT_EQ(QDir(tree.Path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList({u"a"_s, u"cloud"_s, u"sync.db"_s}));
}

TEST_F(BaseStore, KeepsRegularFilesOnly)
{
    tree.File(u"a"_s).Folder(u"d"_s);
    EXPECT_FALSE(Save(u"d"_s));
    EXPECT_FALSE(Save(u"gone"_s));
    EXPECT_FALSE(SyncManager::GetInstance()->SaveBaseFile(nullptr));
    EXPECT_FALSE(SyncManager::GetInstance()->SaveBaseFile(L""));
    EXPECT_EQ(Kept(), Contents());
}

TEST_F(BaseStore, AFolderThatCannotBeMadeKeepsNothingAndHarmsNothing)
{
    tree.File(u"taken"_s, "t").File(u"a"_s, "a");
    settings.baseStoreFolder = tree.Path(u"taken"_s);
    Restart();
    EXPECT_FALSE(Save(u"a"_s));
    EXPECT_EQ(tree.Read(u"a"_s), "a");
    EXPECT_EQ(tree.Read(u"taken"_s), "t");
}

TEST_F(BaseStore, SeveralThreadsCanSaveAtOnce)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        for (int i = 0; i < 25; ++i)
            tree.File(u"%1-%2"_s.arg(thread).arg(i));
        threads.emplace_back([this, thread] {
            for (int i = 0; i < 25; ++i)
                EXPECT_TRUE(Save(u"%1-%2"_s.arg(thread).arg(i)));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Kept().size(), 100);
}

TEST_F(BaseStore, SyncIsEnabledAsTheSettingsSay)
{
    EXPECT_TRUE(SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled());
    settings.cloudCacheFolderSyncEnabled = false;
    Restart();
    EXPECT_FALSE(SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled());
}

TEST(SyncManagerLifecycle, WithoutFolderManagerSyncIsOffAndNothingIsKept)
{
    EXPECT_EQ(SyncManager::GetInstance(), nullptr);
    SyncManager::Uninitialize();
    FileTree tree;
    tree.File(u"a"_s);
    SyncManager::Initialize();
    SyncManager* const manager = SyncManager::GetInstance();
    ASSERT_NE(manager, nullptr);
    EXPECT_FALSE(manager->IsCloudCacheFolderSyncEnabled());
    EXPECT_FALSE(manager->SaveBaseFile(tree.Path(u"a"_s).toStdWString().c_str()));
    SyncManager::Initialize();
    EXPECT_EQ(SyncManager::GetInstance(), manager);
    SyncManager::Uninitialize();
    EXPECT_EQ(SyncManager::GetInstance(), nullptr);
}
