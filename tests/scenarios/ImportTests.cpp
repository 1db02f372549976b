// SPDX-License-Identifier: Apache-2.0

// Whole jobs through the exported classes, with real plug-in libraries and a real database.

#include "FileTree.h"
#include "LogCapture.h"
#include "ServicesFixture.h"
#include "TestPlugins.h"

#include "filelink/FileLinkImporter.h"
#include "filelink/FileLinkManager.h"
#include "syncservices/FolderManager.h"

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using FileLink::FileLinkImporter;
using FileLink::FileLinkManager;
using SyncFolderManagerLib::FolderManager;
using SyncServices::FileMapping;
using SyncServices::Global;
using SyncServices::SyncItem;

namespace {

class ImportScenario : public ::testing::Test
{
protected:
    ImportScenario()
    {
        FolderManager::Configure(SettingsFor(tree));
        FileLinkManager::Initialize();
        RegisterTestResolver(tree, u"plugins"_s);
        FileLinkManager::GetInstance()->AddPluginRegistrationFolders({tree.Path(u"plugins"_s)});
        FileLinkManager::GetInstance()->AddPluginSearchPaths({TestPluginFolder()});
    }

    ~ImportScenario() override { FileLinkManager::Uninitialize(); }

    /// An assembly with a part beside it and one in a sibling folder that a second assembly shares.
    void MakeProject()
    {
        tree.File("work/asm/top.tasm", "head\nlink 1 sub.tasm\nlink 2 ../lib/bolt.tlk\ntail\n");
        tree.File("work/asm/sub.tasm", "link a ../lib/bolt.tlk\nlink b plate.tlk\n");
        tree.File("work/asm/plate.tlk", "plate\n");
        tree.File("work/lib/bolt.tlk", "bolt\n");
        tree.Folder("cloud/Demo");
    }

    bool Import(const QString& source, Global::CopyOption options = Global::NoCopyOption)
    {
        FileLinkImporter importer;
        return importer.CopyToCloudCacheFolder({tree.Path(source)}, u"Demo"_s, false, options, {});
    }

    SyncServices::SyncDatabase& Database()
    {
        return *FolderManager::GetInstance()->GetSyncDatabase();
    }

    FileTree tree;
};

} // namespace

TEST_F(ImportScenario, ASelectedAssemblyComesWithEverythingItLinksAndItsLinksNameTheCopies)
{
    MakeProject();
    const FileTree::Snapshot before = tree.Contents("work");

    EXPECT_TRUE(Import("work/asm/top.tasm"));

    EXPECT_EQ(
        tree.Contents("cloud"),
        (FileTree::Snapshot{{"Demo/top.tasm", "head\nlink 1 sub.tasm\nlink 2 lib/bolt.tlk\ntail\n"},
                            {"Demo/sub.tasm", "link a lib/bolt.tlk\nlink b plate.tlk\n"},
                            {"Demo/plate.tlk", "plate\n"},
                            {"Demo/lib/bolt.tlk", "bolt\n"}}));
    EXPECT_EQ(tree.Contents("work"), before);
}

TEST_F(ImportScenario, TheDatabaseHoldsOneItemPerFileWithResolvedLinks)
{
    MakeProject();
    Import("work/asm/top.tasm");

    QMap<QString, std::shared_ptr<SyncItem>> items;
    for (const auto& item : Database().GetAllItems(-1))
        if (item->GetKind() == SyncItem::File)
            items.insert(item->GetCloudPath(), item);
    ASSERT_EQ(items.keys(), (QStringList{"/Demo/lib/bolt.tlk", "/Demo/plate.tlk", "/Demo/sub.tasm",
                                         "/Demo/top.tasm"}));
    const auto links = items["/Demo/top.tasm"]->GetFileLinks();
    ASSERT_EQ(links.size(), 2);
    EXPECT_EQ(links[0].Path, "sub.tasm");
    EXPECT_EQ(links[0].ItemId, items["/Demo/sub.tasm"]->GetId());
    EXPECT_EQ(links[0].CloudItemId, items["/Demo/sub.tasm"]->GetCloudItemId());
    EXPECT_EQ(links[1].Path, "lib/bolt.tlk");
    EXPECT_EQ(links[1].ItemId, items["/Demo/lib/bolt.tlk"]->GetId());
}

TEST_F(ImportScenario, ASecondImportReadsNoUnchangedFileAgainAndCopiesNoLinkedOne)
{
    MakeProject();
    Import("work/asm/top.tasm");
    PluginCallLog calls;
    FileLinkImporter importer;
    QSignalSpy copied(&importer, &FileLinkImporter::FileCopied);

    EXPECT_TRUE(importer.CopyToCloudCacheFolder({tree.Path("work/asm/top.tasm")}, "Demo", false,
                                                Global::NoCopyOption, {}));

    ASSERT_EQ(copied.size(), 1);
    EXPECT_EQ(copied[0][1].toString(), tree.Path("cloud/Demo/top (2).tasm"));
    EXPECT_TRUE(calls.Calls().filter("GetFileLinks").isEmpty())
        << calls.Calls().join('\n').toStdString();
    EXPECT_EQ(tree.Read("cloud/Demo/top (2).tasm"),
              "head\nlink 1 sub.tasm\nlink 2 lib/bolt.tlk\ntail\n");
}

} // namespace Halvern::Test
