// SPDX-License-Identifier: Apache-2.0

// Folders of the user that environment variables name, and symbolic links as every user can make
// them.

#include "FolderManagerFixture.h"

#include "syncservices/SyncManager.h"

#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

/// Sets an environment variable for the length of a scope.
class Environment
{
public:
    Environment(const char* name, const QString& value) : m_name(name), m_old(qgetenv(name))
    {
        qputenv(name, value.toUtf8());
    }
    ~Environment()
    {
        if (m_old.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, m_old);
    }

private:
    const char* m_name;
    QByteArray m_old;
};

} // namespace

TEST(FolderManagerLifecycle, WithoutConfigureTheUsersSettingsFileIsUsedAndMade)
{
    const FileTree tree;
    const Environment config("XDG_CONFIG_HOME", tree.Path(u"config"_s));
    const Environment data("XDG_DATA_HOME", tree.Path(u"data"_s));
    const Environment home("HOME", tree.Path(u"home"_s));
    FolderManager::Initialize();
    EXPECT_EQ(FolderManager::GetInstance()->GetLastError(), QString());
    EXPECT_EQ(FolderManager::GetInstance()->GetCloudCacheFolderPath(false),
              tree.Path(u"home/Corsync"_s));
    EXPECT_TRUE(tree.Exists(u"home/Corsync"_s));
    EXPECT_TRUE(tree.Exists(u"config/corsync/settings.ini"_s));
    EXPECT_TRUE(tree.Exists(u"data/corsync/sync.db"_s));
    FolderManager::Uninitialize();
}

TEST(FolderManagerLifecycle, SettingsThatCannotBeReadStopEveryJob)
{
    FileTree tree;
    const Environment config("XDG_CONFIG_HOME", tree.Path(u"config"_s));
    const Environment home("HOME", tree.Path(u"home"_s));
    tree.File(u"config/corsync/settings.ini"_s, "[General]\nbaseStoreLimit=much\n");
    FolderManager::Initialize();
    SyncManager::Initialize();
    const FolderManager& manager = *FolderManager::GetInstance();
    EXPECT_EQ(
        manager.GetLastError(),
        u"Failed to read settings file %1: The value of baseStoreLimit has the wrong form."_s.arg(
            tree.Path(u"config/corsync/settings.ini"_s)));
    EXPECT_EQ(manager.GetSyncDatabase(), nullptr);
    EXPECT_FALSE(manager.IsLoggedIn());
    EXPECT_FALSE(SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled());
    EXPECT_EQ(manager.GetCloudCacheFolderPath(true), QString());
    EXPECT_FALSE(tree.Exists(u"home"_s));
    SyncManager::Uninitialize();
    FolderManager::Uninitialize();
}

TEST_F(FolderManagerRunning, APathThroughASymbolicLinkIsInTheFolderEvenBeforeItExists)
{
    tree.File(u"cloud/Demo/a.prt"_s);
    ASSERT_TRUE(QFile::link(Cloud(u"Demo"_s), tree.Path(u"short"_s)));
    EXPECT_TRUE(In(tree.Path(u"short/a.prt"_s)));
    EXPECT_TRUE(In(tree.Path(u"short/new/b.prt"_s)));
    EXPECT_TRUE(In(tree.Path(u"short"_s)));
    EXPECT_FALSE(In(tree.Path(u"long/a.prt"_s)));
    EXPECT_EQ(Convert(tree.Path(u"short/a.prt"_s)), Cloud(u"Demo/a.prt"_s));
    EXPECT_EQ(Convert(tree.Path(u"short/new/b.prt"_s)), Cloud(u"Demo/new/b.prt"_s));
    EXPECT_EQ(CloudPath(tree.Path(u"short/a.prt"_s), false), u"/Demo/a.prt"_s);
}

TEST_F(FolderManagerRunning, AConfiguredFolderThatIsASymbolicLinkIsKnownByBothPaths)
{
    tree.File(u"disk/cloud/a.prt"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"disk/cloud"_s), tree.Path(u"mine"_s)));
    settings.cloudCacheFolder = tree.Path(u"mine"_s);
    Restart();
    for (const QString& name : {u"mine/a.prt"_s, u"disk/cloud/a.prt"_s, u"DISK/x/../cloud/a.prt"_s,
                                u"disk/cloud/a.prt"_s}) {
        if (!tree.Exists(name))
            continue;
        EXPECT_TRUE(In(tree.Path(name))) << name.toStdString();
        EXPECT_EQ(Convert(tree.Path(name)), tree.Path(u"mine/a.prt"_s));
    }
    EXPECT_TRUE(In(tree.Path(u"disk/cloud/new/x"_s)));
    EXPECT_EQ(Convert(tree.Path(u"disk/cloud/new/x"_s)), tree.Path(u"mine/new/x"_s));
    EXPECT_FALSE(In(tree.Path(u"disk/other"_s)));
}

TEST_F(FolderManagerRunning, AFolderBesideItThatDiffersInLetterCaseAloneIsNotTheCloudFolder)
{
    EXPECT_TRUE(In(tree.Path(u"CLOUD/a"_s))) << "another spelling";
    tree.Folder(u"Cloud"_s);
    EXPECT_FALSE(In(tree.Path(u"Cloud/a"_s)));
    EXPECT_EQ(Convert(tree.Path(u"Cloud/a"_s)), tree.Path(u"Cloud/a"_s));
    EXPECT_EQ(CloudPath(tree.Path(u"Cloud/a"_s), false), QString());
    EXPECT_EQ(Manager().GetSyncRootFolder(tree.Path(u"Cloud"_s)), nullptr);
    EXPECT_TRUE(In(Cloud(u"a"_s)));
    EXPECT_EQ(Convert(tree.Path(u"CLOUD/a"_s)), Cloud(u"a"_s));
    ASSERT_TRUE(QFile::link(tree.Path(u"Cloud"_s), tree.Path(u"link"_s)));
    EXPECT_FALSE(In(tree.Path(u"link/a"_s)));
}

} // namespace Halvern::Test
