// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "WatchedDatabase.h"

#include "filelink/FileLinkImporter.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

/// An importer with a database of its own, which another folder manager made.
class OwnDatabase : public ImporterFixture
{
protected:
    OwnDatabase()
    {
        Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
        tree.File(u"src/b.tlk"_s);
        settings.productConfigurationId = 21;
        settings.sourceConsumerId = u"consumer"_s;
        SyncServices::ServicesSettings other = settings;
        other.databaseFile = tree.Path(u"other.db"_s);
        settings.databaseFile = tree.Path(u"platform.db"_s);
        FileLink::FileLinkManager::Uninitialize();
        SyncFolderManagerLib::FolderManager::Configure(other);
        SyncFolderManagerLib::FolderManager::Initialize();
        own = std::make_shared<WatchedDatabase>(
            SyncFolderManagerLib::FolderManager::GetInstance()->GetSyncDatabase());
        SyncFolderManagerLib::FolderManager::Uninitialize();
        SyncFolderManagerLib::FolderManager::Configure(settings);
        FileLink::FileLinkManager::Initialize();
        Restart();
    }

    static int ItemsIn(SyncServices::SyncDatabase& database)
    {
        return int(database.GetAllItems(-1).size());
    }
    int CopiesIn(SyncServices::SyncDatabase& database) const
    {
        return int(
            database.GetFileCopyHistoryByAuthenticationId(settings.authenticationConfigurationId)
                .size());
    }
    void Run(FileLink::FileLinkImporter& importer)
    {
        EXPECT_TRUE(importer.CopyToCloudCacheFolder({Source(u"a.tasm"_s)}, Cloud(u"P/a.tasm"_s),
                                                    true, {}, {}));
    }

    std::shared_ptr<WatchedDatabase> own;
};

TEST_F(OwnDatabase, TakesItemsAndHistoryInPlaceOfThePlatforms)
{
    {
        FileLink::FileLinkImporter importer;
        importer.SetSyncDatabase(own);
        Run(importer);
    }
    EXPECT_EQ(own->written.filter(u".tasm"_s), QStringList{Cloud(u"P/a.tasm"_s)});
    EXPECT_EQ(CopiesIn(*own), 2);
    EXPECT_EQ(CopiesIn(Database()), 0);
    EXPECT_EQ(
        Database().GetSyncItem(Cloud(u"P/a.tasm"_s), true, -1, SyncServices::FileItem::ItemOnly),
        nullptr);
    const auto item =
        own->GetSyncItem(Cloud(u"P/a.tasm"_s), true, -1, SyncServices::FileItem::ItemOnly);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetProductConfigurationId(), 21);
    EXPECT_EQ(item->GetSourceConsumerId(), u"consumer"_s);
}

TEST_F(OwnDatabase, IsAskedForWhatWasCopiedBefore)
{
    {
        FileLink::FileLinkImporter importer;
        importer.SetSyncDatabase(own);
        Run(importer);
    }
    FileLink::FileLinkImporter again;
    again.SetSyncDatabase(own);
    ASSERT_TRUE(again.Initialize({Source(u"a.tasm"_s)}, Cloud(u"P"_s), false, {}, {}));
    ASSERT_TRUE(again.ExtractFileLinks());
    const auto linked = again.GetFileSet()->GetFiles().last();
    EXPECT_EQ(linked->GetTargetFile(), Cloud(u"P/b.tlk"_s));
    FileLink::FileLinkImporter platform;
    ASSERT_TRUE(platform.Initialize({Source(u"a.tasm"_s)}, Cloud(u"P"_s), false, {}, {}));
    ASSERT_TRUE(platform.ExtractFileLinks());
    EXPECT_FALSE(platform.GetFileSet()->GetFiles().last()->HasTargetFile());
}

TEST_F(OwnDatabase, CanBeTakenBackBeforeAnythingIsWritten)
{
    {
        FileLink::FileLinkImporter importer;
        importer.SetSyncDatabase(own);
        ASSERT_TRUE(importer.Initialize({Source(u"a.tasm"_s)}, Cloud(u"P"_s), false, {}, {}));
        ASSERT_TRUE(importer.ExtractFileLinks());
        importer.SetSyncDatabase(nullptr);
        EXPECT_TRUE(importer.AssignTargetPaths());
        EXPECT_TRUE(importer.CopyFiles());
        EXPECT_TRUE(importer.UpdateSyncDatabase());
    }
    EXPECT_TRUE(own->written.isEmpty());
    EXPECT_EQ(own->historyWrites, 0);
    EXPECT_EQ(CopiesIn(Database()), 2);
    EXPECT_GT(ItemsIn(Database()), 1);
}

} // namespace Halvern::Test
