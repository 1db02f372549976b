// SPDX-License-Identifier: Apache-2.0

// The folders of the user, as the system names them, when the host gives no settings.

#include "FileTree.h"

#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

QString Below(const char* variable, const QString& name)
{
    return QDir::fromNativeSeparators(qEnvironmentVariable(variable)) + u'/' + name;
}

/// Needs a user who has none of these yet, as in the Wine prefix of the tests: what somebody keeps
/// there is left alone, and the tests fail.
class UserFolders : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const QString& path : {settingsFile, databaseFile, cloudFolder})
            ASSERT_FALSE(QFileInfo::exists(path)) << path.toStdString() << " is somebody's";
        m_ours = true;
    }
    void TearDown() override
    {
        SyncManager::Uninitialize();
        FolderManager::Uninitialize();
        if (!m_ours)
            return;
        QFile::remove(settingsFile);
        QFile::remove(databaseFile);
        QDir().rmdir(cloudFolder);
    }

    const QString settingsFile = Below("APPDATA", u"corsync/settings.ini"_s);
    const QString databaseFile = Below("LOCALAPPDATA", u"corsync/sync.db"_s);
    const QString cloudFolder = Below("USERPROFILE", u"Corsync"_s);

private:
    bool m_ours = false;
};

} // namespace

TEST_F(UserFolders, HoldSettingsDatabaseAndCloudFolderWhenTheHostConfiguresNothing)
{
    FolderManager::Initialize();

    EXPECT_EQ(FolderManager::GetInstance()->GetLastError(), QString());
    EXPECT_EQ(FolderManager::GetInstance()->GetCloudCacheFolderPath(false), cloudFolder);
    EXPECT_TRUE(QFileInfo(cloudFolder).isDir());
    EXPECT_TRUE(QFileInfo(settingsFile).isFile());
    EXPECT_TRUE(QFileInfo(databaseFile).isFile());
}

TEST_F(UserFolders, WithSettingsThatCannotBeReadStopEveryJob)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(settingsFile).path()));
    QFile settings(settingsFile);
    ASSERT_TRUE(settings.open(QFile::WriteOnly));
    settings.write("[General]\nbaseStoreLimit=much\n");
    settings.close();

    FolderManager::Initialize();
    SyncManager::Initialize();

    const FolderManager& manager = *FolderManager::GetInstance();
    EXPECT_EQ(manager.GetLastError(),
              u"Failed to read settings file %1: The value of baseStoreLimit has the "
              "wrong form."_s.arg(settingsFile));
    EXPECT_EQ(manager.GetSyncDatabase(), nullptr);
    EXPECT_FALSE(manager.IsLoggedIn());
    EXPECT_FALSE(SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled());
    EXPECT_FALSE(QFileInfo::exists(cloudFolder));
}

} // namespace Halvern::Test
