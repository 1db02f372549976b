// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

#include "plugins/PluginManager.h"
#include "syncservices/SyncManager.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using FileLink::FileLinkManager;
using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

/// Stages of importers that meet a module or services which have ended, or never opened a database.
class WithoutServices : public ImporterFixture
{
protected:
    ~WithoutServices() override
    {
        // The fixtures below end what runs.
        FolderManager::Configure(settings);
        FolderManager::Initialize();
        if (!SyncManager::GetInstance())
            SyncManager::Initialize();
        if (!FileLinkManager::GetInstance())
            FileLinkManager::Initialize();
    }
    static void EndServices()
    {
        FileLinkManager::Uninitialize();
        SyncManager::Uninitialize();
        FolderManager::Uninitialize();
        ASSERT_EQ(FileLink::GetPluginManager(), nullptr);
        ASSERT_EQ(SyncManager::GetInstance(), nullptr);
        ASSERT_EQ(FolderManager::GetInstance(), nullptr);
    }
    void Initialize(const QString& name, const QString& target)
    {
        ASSERT_TRUE(importer.Initialize({Source(name)}, Cloud(target), true, {}, {}));
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(WithoutServices, NothingIsImportedAtAll)
{
    tree.File(u"src/a.tlk"_s).File(u"cloud/b.tasm"_s);
    EndServices();
    const LogCapture log;
    EXPECT_FALSE(Import({Source(u"a.tlk"_s)}));
    EXPECT_FALSE(importer.Initialize({Source(u"a.tlk"_s)}, Cloud(), false, {}, {}));
    EXPECT_TRUE(importer.ExtractAndImportFileLinksOfCloudFiles(1, {Cloud(u"b.tasm"_s)},
                                                               {SyncItem::NoSyncOption}));
    EXPECT_EQ(importer.GetFileSet(), nullptr);
    EXPECT_FALSE(tree.Exists(u"cloud/a.tlk"_s));
    EXPECT_EQ(log.Lines(), QStringList{u"INFO Updating file links of file %1 in database"_s.arg(
                               Cloud(u"b.tasm"_s))});
}

TEST_F(WithoutServices, StagesStillCopyFilesButKnowNoLinks)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"cloud/P/a.tasm"_s, "old");
    Initialize(u"a.tasm"_s, u"P/a.tasm"_s);
    EndServices();
    EXPECT_TRUE(importer.ExtractFileLinks());
    EXPECT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Targets(importer), QStringList{u"src/a.tasm -> cloud/P/a.tasm"_s});
    EXPECT_TRUE(importer.MarkCollisions());
    EXPECT_TRUE(importer.ResolveCollisions());
    EXPECT_TRUE(importer.CopyFiles());
    EXPECT_TRUE(importer.RepathFiles());
    EXPECT_FALSE(importer.UpdateSyncDatabase());
    EXPECT_EQ(tree.Contents(u"cloud/P"_s),
              (FileTree::Snapshot{{u"a.tasm"_s, "src/a.tasm\nlink 1 b.tlk\n"}}));
}

TEST_F(WithoutServices, LinksThatAreKnownCannotBeWritten)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    Initialize(u"a.tasm"_s, u"a.tasm"_s);
    ASSERT_TRUE(importer.ExtractFileLinks());
    EndServices();
    EXPECT_TRUE(importer.AssignTargetPaths());
    EXPECT_TRUE(importer.CopyFiles());
    EXPECT_FALSE(importer.RepathFiles());
    EXPECT_EQ(tree.Read(u"cloud/a.tasm"_s), tree.Read(u"src/a.tasm"_s));
}

TEST_F(WithoutServices, FoldersAreNotFoundAndItemsAreNotWritten)
{
    tree.File(u"cloud/a.tasm"_s);
    const auto item = std::make_shared<SyncItem>(Cloud(u"a.tasm"_s), u"/a.tasm"_s, u"/"_s);
    item->SetSyncOption(SyncItem::RepathPending);
    EndServices();
    EXPECT_FALSE(importer.RepathFiles(1));
    EXPECT_TRUE(importer.RepathFiles(QList{item}));
    EXPECT_EQ(item->GetSyncOption(), SyncItem::NoSyncOption);
}

TEST_F(WithoutServices, AUserIsLoggedInButSyncCannotBeAskedFor)
{
    tree.File(u"src/a.tlk"_s);
    SyncManager::Uninitialize();
    SyncManager::Uninitialize();
    ASSERT_EQ(SyncManager::GetInstance(), nullptr);
    EXPECT_FALSE(Import({Source(u"a.tlk"_s)}));
    EXPECT_FALSE(tree.Exists(u"cloud/a.tlk"_s));
}

TEST_F(WithoutServices, LinksOfACloudFileAreReadWhereTheDatabaseIsMissing)
{
    Assembly(u"cloud/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"cloud/b.tlk"_s);
    FolderManager::GetInstance()->SetSyncDatabase(nullptr);
    ASSERT_TRUE(importer.Initialize({}, Cloud(u"a.tasm"_s), true, {}, {}));
    EXPECT_TRUE(importer.ExtractFileLinks());
    EXPECT_EQ(Members(importer), (QStringList{u"cloud/a.tasm"_s, u"cloud/b.tlk"_s}));
    EXPECT_FALSE(importer.RepathFiles(1));
}

} // namespace Halvern::Test
