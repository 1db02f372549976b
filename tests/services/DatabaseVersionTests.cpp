// SPDX-License-Identifier: Apache-2.0

// Databases that an earlier version wrote.

#include "DatabaseFixture.h"
#include "Version1Database.h"

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

namespace {

struct DatabaseOfVersion1 : DatabaseFixture
{
    DatabaseOfVersion1()
    {
        settings.databaseFile = tree.Path(u"old.db"_s);
        Raw().exec(version1Database);
    }

    SQLite::Database Raw() const
    {
        return SQLite::Database(settings.databaseFile.toStdString(),
                                SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, 10000);
    }

    int NumberOf(const char* query) const { return std::stoi(Ask(query)); }
};

} // namespace

TEST_F(DatabaseOfVersion1, KeepsEveryItemWithItsLinksAndIsSound)
{
    Restart();
    ASSERT_EQ(FolderManager::GetInstance()->GetLastError(), QString());
    EXPECT_EQ(Ask("PRAGMA user_version"), "2");
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(Ask("SELECT count(*) FROM pragma_foreign_key_check"), "0");
    const ItemPointer item = Find(u"/Cloud/Demo/Ärmel.asm"_s);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->GetId(), 4);
    EXPECT_EQ(item->GetCloudItemId(), u"c91f1a47-766f-49ad-b423-8c8d7616904b"_s);
    EXPECT_EQ(item->GetParentFolderId(), 2);
    EXPECT_EQ(item->GetSyncOption(), SyncItem::RepathPending);
    EXPECT_EQ(item->GetFileLinksExtractedAtFileDate().toMSecsSinceEpoch(), 1700000000123);
    EXPECT_EQ(item->GetFileLinks(), (QList<FileLink>{{3, u"r1"_s, u"Part.PRT"_s, u"c3"_s},
                                                     {-1, u"r2"_s, u"gone.prt"_s, QString()}}));
    EXPECT_EQ(Paths(Database().GetAllItems(-1)),
              (QStringList{u"/Cloud"_s, u"/Cloud/Demo"_s, u"/Cloud/./Demo//low.prt"_s,
                           u"/Cloud/Demo/Part.PRT"_s, u"/Cloud/Demo/Part.PRT"_s,
                           u"/Cloud/Demo/Ärmel.asm"_s}));
}

TEST_F(DatabaseOfVersion1, FindsItemsAsBeforeInAnyLetterCase)
{
    Restart();
    for (const QString& path : {u"/Cloud/Demo/Part.PRT"_s, u"/cloud/demo/part.prt"_s}) {
        EXPECT_EQ(Find(path, 7)->GetId(), 3);
        EXPECT_EQ(Find(path, 8)->GetId(), 6);
        EXPECT_EQ(Find(path, -1)->GetId(), 3);
    }
    EXPECT_EQ(Find(u"/cloud/demo/LOW.prt"_s)->GetId(), 5);
    EXPECT_EQ(Database().GetSyncItem(u"/CLOUD/DEMO/new/x"_s, false, 7, FileItem::ItemOnly)->GetId(),
              2);
    EXPECT_EQ(Database().GetFilesWithSyncOption(1, SyncItem::RepathPending).size(), 3);
}

TEST_F(DatabaseOfVersion1, GoesOnWithTheRowsThatItHas)
{
    Restart();
    const ItemPointer item = File(u"/cloud/demo/PART.prt"_s);
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(item));
    EXPECT_EQ(item->GetId(), 3);
    const ItemPointer added = File(u"/Cloud/Demo/new.prt"_s);
    ASSERT_TRUE(Database().AddOrUpdateFileConfiguration(added));
    EXPECT_GT(added->GetId(), 7) << "7 was deleted, and no id is used twice";
    EXPECT_EQ(Count("items"), 7);

    const auto copy = std::make_shared<FileMapping>(u"/work/part.prt"_s, u"/Cloud/b"_s, 7);
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({copy}, {}));
    const QList<MappingPointer> history = Database().GetFileCopyHistoryByAuthenticationId(7);
    ASSERT_EQ(history.size(), 2);
    EXPECT_EQ(history.first()->GetTargetFile(), u"/Cloud/b"_s);
    EXPECT_EQ(history.last()->GetSourceFile(), u"/Work/low.prt"_s);
    EXPECT_EQ(Database().GetFileCopyHistoryByAuthenticationId(8).size(), 1);
}

TEST_F(DatabaseOfVersion1, IsLeftAloneWhenItCannotBeBroughtToTheCurrentVersion)
{
    Raw().exec("CREATE TRIGGER refuse BEFORE UPDATE ON copy_history "
               "BEGIN SELECT raise(ABORT, 'refused'); END");
    Restart();
    EXPECT_EQ(FolderManager::GetInstance()->GetLastError(),
              u"Failed to open sync database %1: refused"_s.arg(settings.databaseFile));
    EXPECT_EQ(Ask("PRAGMA user_version"), "1");
    EXPECT_EQ(Ask("SELECT path_key FROM items WHERE id = 3"), "/cloud/demo/part.prt");
    EXPECT_EQ(Ask("SELECT count(*) FROM pragma_table_info('items') WHERE name = 'folded_key'"),
              "0");
}

TEST_F(DatabaseOfVersion1, TakesNoNewRowsOfAProcessThatStillHasItOpen)
{
    SQLite::Database old = Raw();
    SQLite::Statement item(
        old, "INSERT INTO items (kind, authentication_id, path_key, local_path, cloud_path, "
             "cloud_root, cloud_item_id, product_configuration_id, source_consumer_id, "
             "sync_option) VALUES (0, 7, '/c/x', '/c/X', '/x', '/', 'id', 1, '', 0)");
    SQLite::Statement copy(old, "INSERT INTO copy_history (authentication_id, source_key, "
                                "source_path, target_path, source_size, target_size) "
                                "VALUES (7, '/c/x', '/c/X', '/c/Y', 1, 1)");
    Restart();
    for (SQLite::Statement* statement : {&item, &copy}) {
        try {
            statement->exec();
            ADD_FAILURE() << "a row that nobody finds";
        } catch (const SQLite::Exception& error) {
            EXPECT_STREQ(error.what(), "A newer version has taken over the file.");
        }
        statement->tryReset();
    }
    EXPECT_EQ(Count("items"), 6);
    EXPECT_EQ(Count("copy_history"), 3);
}
