// SPDX-License-Identifier: Apache-2.0

// Opening the database: what is made, and what is refused.

#include "DatabaseFixture.h"

#include <QtCore/QFile>

#include <thread>
#include <vector>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

struct DatabaseFile : DatabaseFixture
{
    /// Starts the services with another database file; the error that they give.
    QString ErrorFor(const QString& file)
    {
        settings.databaseFile = file;
        Restart();
        EXPECT_EQ(FolderManager::GetInstance()->GetSyncDatabase(), nullptr);
        return FolderManager::GetInstance()->GetLastError();
    }
};

} // namespace

TEST_F(DatabaseFile, IsMadeWithTheTablesOfTheCurrentVersion)
{
    EXPECT_EQ(Ask("PRAGMA user_version"), "2");
    EXPECT_EQ(Ask("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(Ask("SELECT group_concat(name, ' ') FROM (SELECT name FROM sqlite_master "
                  "WHERE type = 'table' AND name NOT LIKE 'sqlite_%' ORDER BY name)"),
              "copy_history copy_history_links item_links items");
}

TEST_F(DatabaseFile, IsMadeInFoldersThatDoNotExistYet)
{
    settings.databaseFile = tree.Path(u"new/Ordner ä/sync.db"_s);
    Restart();
    EXPECT_EQ(FolderManager::GetInstance()->GetLastError(), QString());
    EXPECT_TRUE(tree.Exists(u"new/Ordner ä/sync.db"_s));
    EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(File(u"/c/a"_s)));
}

TEST_F(DatabaseFile, KeepsItsContentAtTheNextStart)
{
    const ItemPointer item = File(u"/c/a"_s);
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    Restart();
    EXPECT_EQ(Find(u"/c/a"_s)->GetId(), item->GetId());
}

TEST_F(DatabaseFile, CanBeInMemory)
{
    settings.databaseFile = u":memory:"_s;
    Restart();
    EXPECT_EQ(FolderManager::GetInstance()->GetLastError(), QString());
    EXPECT_TRUE(Database().AddOrUpdateFileConfiguration(File(u"/c/a"_s)));
    EXPECT_TRUE(Find(u"/c/a"_s));
    Restart();
    EXPECT_FALSE(Find(u"/c/a"_s));
}

TEST_F(DatabaseFile, OfANewerVersionIsRefusedAndLeftAlone)
{
    FolderManager::Uninitialize();
    {
        SQLite::Database raw(settings.databaseFile.toStdString(), SQLite::OPEN_READWRITE);
        raw.exec("PRAGMA user_version = 3");
        raw.exec("PRAGMA journal_mode = DELETE");
    }
    const QByteArray before = tree.Read(u"sync.db"_s);
    EXPECT_EQ(ErrorFor(settings.databaseFile),
              u"Failed to open sync database %1: It was written by a newer version "
              "(database version 3, this one knows 2)."_s.arg(settings.databaseFile));
    EXPECT_EQ(tree.Read(u"sync.db"_s), before);
}

TEST_F(DatabaseFile, OfAnotherProgramIsRefusedAndLeftAlone)
{
    const QString file = tree.Path(u"other.db"_s);
    SQLite::Database(file.toStdString(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec("CREATE TABLE theirs (x)");
    const QByteArray before = tree.Read(u"other.db"_s);
    EXPECT_EQ(
        ErrorFor(file),
        u"Failed to open sync database %1: It is the database of another program."_s.arg(file));
    EXPECT_EQ(tree.Read(u"other.db"_s), before);
}

TEST_F(DatabaseFile, ThatIsNoDatabaseIsRefusedAndLeftAlone)
{
    const QByteArray content = PatternBytes(10000);
    tree.File(u"sync2.db"_s, content);
    EXPECT_EQ(
        ErrorFor(tree.Path(u"sync2.db"_s)),
        u"Failed to open sync database %1: file is not a database"_s.arg(tree.Path(u"sync2.db"_s)));
    EXPECT_EQ(tree.Read(u"sync2.db"_s), content);
    tree.File(u"tiny.db"_s, "not a database");
    EXPECT_THAT(ErrorFor(tree.Path(u"tiny.db"_s)).toStdString(),
                testing::HasSubstr("file is not a database"));
    EXPECT_EQ(tree.Read(u"tiny.db"_s), "not a database");
}

TEST_F(DatabaseFile, InAFolderThatCannotBeMadeIsReportedWithTheReason)
{
    tree.File(u"taken"_s);
    const QString file = tree.Path(u"taken/sync.db"_s);
    EXPECT_THAT(
        ErrorFor(file).toStdString(),
        testing::StartsWith(
            u"Failed to create the folder of sync database %1: "_s.arg(file).toStdString()));
}

TEST_F(DatabaseFile, ThatIsAFolderIsReportedWithTheReason)
{
    tree.Folder(u"folder.db"_s);
    EXPECT_EQ(ErrorFor(tree.Path(u"folder.db"_s)),
              u"Failed to open sync database %1: unable to open database file"_s.arg(
                  tree.Path(u"folder.db"_s)));
}

TEST_F(DatabaseFile, ThatIsNotConfiguredIsReported)
{
    EXPECT_EQ(ErrorFor(QString()), u"Failed to open sync database: No file is configured."_s);
}

TEST_F(DatabaseFile, WhoseRowsAreDamagedGivesAFailureAndNoException)
{
    for (int i = 0; i < 2000; ++i)
        ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(File(u"/c/%1"_s.arg(i))));
    FolderManager::Uninitialize();
    QFile file(settings.databaseFile);
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    // All pages but the first, which holds the header and the schema, and the six roots after it.
    const qint64 intact = 8 * 4096;
    ASSERT_GT(file.size(), 2 * intact);
    ASSERT_TRUE(file.seek(intact));
    ASSERT_EQ(file.write(PatternBytes(file.size() - intact)), file.size() - intact);
    file.close();
    Restart();
    ASSERT_NE(FolderManager::GetInstance()->GetSyncDatabase(), nullptr);
    EXPECT_TRUE(Database().GetAllItems(7).isEmpty());
    EXPECT_EQ(Database().GetLastError(),
              u"GetAllItems failed on sync database %1: database disk image is malformed"_s.arg(
                  settings.databaseFile));
}

TEST_F(DatabaseFile, OneObjectServesSeveralThreads)
{
    SyncDatabase& database = Database();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&database, thread] {
            for (int i = 0; i < 100; ++i) {
                const QString path = u"/c/%1/%2"_s.arg(thread).arg(i);
                EXPECT_TRUE(database.AddOrUpdateFileConfiguration(File(path)));
                EXPECT_TRUE(database.GetSyncItem(path, true, 7, FileItem::ItemOnly));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Count("items"), 400);
    EXPECT_EQ(database.GetLastError(), QString());
}
