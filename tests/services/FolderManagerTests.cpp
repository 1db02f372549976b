// SPDX-License-Identifier: Apache-2.0

#include "FolderManagerFixture.h"

#include "syncservices/SyncManager.h"
#include "syncservices/SyncPrivate.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

TEST(FolderManagerLifecycle, ThereIsNoInstanceBeforeInitializeAndAfterUninitialize)
{
    EXPECT_EQ(FolderManager::GetInstance(), nullptr);
    FolderManager::Uninitialize();
    FileTree tree;
    FolderManager::Configure(SettingsFor(tree));
    FolderManager::Initialize();
    FolderManager* const first = FolderManager::GetInstance();
    EXPECT_NE(first, nullptr);
    FolderManager::Initialize();
    EXPECT_EQ(FolderManager::GetInstance(), first);
    FolderManager::Uninitialize();
    EXPECT_EQ(FolderManager::GetInstance(), nullptr);
}

TEST_F(FolderManagerRunning, TellsWhatTheSettingsSay)
{
    EXPECT_TRUE(Manager().IsLoggedIn());
    EXPECT_EQ(Manager().GetSettings().userName, u"tester"_s);
    settings.loggedIn = false;
    Restart();
    EXPECT_FALSE(Manager().IsLoggedIn());
}

TEST_F(FolderManagerRunning, TheCloudCacheFolderIsMadeAtTheStartAndWhenAskedFor)
{
    EXPECT_TRUE(tree.Exists(u"cloud"_s));
    tree.Remove(u"cloud"_s);
    EXPECT_EQ(Manager().GetCloudCacheFolderPath(false), tree.Path(u"cloud"_s));
    EXPECT_FALSE(tree.Exists(u"cloud"_s));
    EXPECT_EQ(Manager().GetCloudCacheFolderPath(true), tree.Path(u"cloud"_s));
    EXPECT_TRUE(tree.Exists(u"cloud"_s));
}

TEST_F(FolderManagerRunning, TheConfiguredFolderIsCleaned)
{
    settings.cloudCacheFolder = tree.Path() + u"/x/..//cloud/"_s;
    Restart();
    EXPECT_EQ(Manager().GetCloudCacheFolderPath(false), tree.Path(u"cloud"_s));
}

TEST_F(FolderManagerRunning, WithoutACloudCacheFolderThePathIsEmptyAndNothingLiesInIt)
{
    settings.cloudCacheFolder.clear();
    Restart();
    EXPECT_EQ(Manager().GetLastError(), QString());
    EXPECT_EQ(Manager().GetCloudCacheFolderPath(true), QString());
    EXPECT_FALSE(In(tree.Path()));
    EXPECT_FALSE(Manager().GetSyncRootFolder(tree.Path()));
    EXPECT_NE(Manager().GetSyncDatabase(), nullptr);
}

TEST_F(FolderManagerRunning, AFolderThatCannotBeMadeIsReportedWithTheReason)
{
    tree.File(u"taken"_s);
    settings.cloudCacheFolder = tree.Path(u"taken/cloud"_s);
    Restart();
    EXPECT_THAT(Manager().GetLastError().toStdString(),
                testing::StartsWith(
                    u"Failed to create cloud cache folder %1: "_s.arg(settings.cloudCacheFolder)
                        .toStdString()));
    EXPECT_EQ(Manager().GetSyncDatabase(), nullptr);
    settings.cloudCacheFolder = tree.Path(u"taken"_s);
    Restart();
    EXPECT_NE(Manager().GetLastError(), QString());
    settings.cloudCacheFolder = u"relative/cloud"_s;
    Restart();
    EXPECT_EQ(Manager().GetLastError(), u"Failed to create cloud cache folder relative/cloud: "
                                        "It is not an absolute path."_s);
    EXPECT_EQ(Manager().GetSyncDatabase(), nullptr);
}

TEST_F(FolderManagerRunning, TheFolderItselfAndWhatLiesBelowIsInIt)
{
    EXPECT_TRUE(In(Cloud()));
    EXPECT_TRUE(In(Cloud() + u'/'));
    EXPECT_TRUE(In(Cloud(u"a/b.prt"_s)));
    EXPECT_TRUE(In(tree.Path(u"CLOUD/A"_s)));
    EXPECT_TRUE(In(tree.Path() + u"/x/../cloud/a"_s));
    EXPECT_FALSE(In(tree.Path()));
    EXPECT_FALSE(In(tree.Path(u"cloud2/a"_s)));
    EXPECT_FALSE(In(Cloud() + u"/../a"_s));
    EXPECT_FALSE(In(u"cloud/a"_s));
    EXPECT_FALSE(In(QString()));
    EXPECT_FALSE(In(u"https://host/cloud/a"_s));
}

TEST_F(FolderManagerRunning, ConvertGivesTheConfiguredSpellingAndCleansOtherPaths)
{
    EXPECT_EQ(Convert(tree.Path() + u"/CLOUD//a/./B"_s), Cloud(u"a/B"_s));
    EXPECT_EQ(Convert(tree.Path(u"CLOUD"_s)), Cloud());
    EXPECT_EQ(Convert(tree.Path() + u"/x//y/../z/"_s), tree.Path(u"x/z"_s));
    EXPECT_EQ(Convert(u"a/../b"_s), u"b"_s);
    EXPECT_EQ(Convert(QString()), QString());
}

TEST_F(FolderManagerRunning, CloudPathsBeginAtTheFolder)
{
    EXPECT_EQ(CloudPath(Cloud(u"Demo/scene.gltf"_s), false), u"/Demo/scene.gltf"_s);
    EXPECT_EQ(CloudPath(Cloud(u"Demo/scene.gltf"_s), true), u"/Demo/scene.gltf"_s);
    EXPECT_EQ(CloudPath(Cloud(), false), u"/"_s);
    EXPECT_EQ(CloudPath(tree.Path(u"elsewhere"_s), true), QString());
    EXPECT_EQ(CloudPath(QString(), true), QString());
    settings.cloudRoot = u"/Projects"_s;
    Restart();
    EXPECT_EQ(CloudPath(Cloud(u"Demo/scene.gltf"_s), true), u"/Projects/Demo/scene.gltf"_s);
    EXPECT_EQ(CloudPath(Cloud(u"Demo/scene.gltf"_s), false), u"/Demo/scene.gltf"_s);
    EXPECT_EQ(CloudPath(Cloud(), true), u"/Projects"_s);
}

TEST_F(FolderManagerRunning, TheRootItemIsMadeOnFirstUseWithTheUsersData)
{
    settings.productConfigurationId = 5;
    settings.sourceConsumerId = u"consumer"_s;
    settings.cloudRoot = u"/Projects"_s;
    Restart();
    EXPECT_EQ(Count("items"), 0);
    EXPECT_FALSE(Manager().GetSyncRootFolder(tree.Path(u"elsewhere"_s)));
    EXPECT_EQ(Count("items"), 0);
    const ItemPointer root = Manager().GetSyncRootFolder(Cloud(u"a/b"_s));
    ASSERT_TRUE(root);
    EXPECT_EQ(root->GetKind(), SyncItem::RootFolder);
    EXPECT_EQ(root->GetLocalPath(), Cloud());
    EXPECT_EQ(root->GetCloudRoot(), u"/Projects"_s);
    EXPECT_EQ(root->GetAuthenticationId(), 7);
    EXPECT_EQ(root->GetProductConfigurationId(), 5);
    EXPECT_EQ(root->GetSourceConsumerId(), u"consumer"_s);
    EXPECT_EQ(Manager().GetSyncRootFolder(Cloud()), root);

    Restart();
    const ItemPointer again = Manager().GetSyncRootFolder(Cloud());
    EXPECT_EQ(again->GetId(), root->GetId());
    EXPECT_EQ(again->GetProductConfigurationId(), 5);
}

TEST_F(FolderManagerRunning, AnotherDatabaseTakesTheEmbeddedOnesPlace)
{
    const std::shared_ptr<SyncDatabase> embedded = Manager().GetSyncDatabase();
    ASSERT_TRUE(Manager().GetSyncRootFolder(Cloud()));
    Manager().SetSyncDatabase(nullptr);
    EXPECT_EQ(Manager().GetSyncDatabase(), nullptr);
    EXPECT_FALSE(Manager().GetSyncRootFolder(Cloud())) << "the root item of the other one";
    Manager().SetSyncDatabase(embedded);
    EXPECT_EQ(Manager().GetSyncDatabase(), embedded);
    EXPECT_TRUE(Manager().GetSyncRootFolder(Cloud()));
}

TEST_F(FolderManagerRunning, TheUsersIdAndFileTypesAreThoseOfTheSettings)
{
    settings.supportedFileTypes = QStringList({u"prt"_s, u"asm"_s});
    Restart();
    EXPECT_EQ(SyncPrivate::GetCurrentUserAuthenticationConfigurationId(), 7);
    EXPECT_EQ(SyncPrivate::GetSupportedFileTypesForFileLinks(), QStringList({u"prt"_s, u"asm"_s}));
    FolderManager::Uninitialize();
    EXPECT_EQ(SyncPrivate::GetCurrentUserAuthenticationConfigurationId(), -1);
    EXPECT_TRUE(SyncPrivate::GetSupportedFileTypesForFileLinks().isEmpty());
}
