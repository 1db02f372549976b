// SPDX-License-Identifier: Apache-2.0

#include "ServicesFixture.h"

#include "syncservices/SyncManager.h"

namespace Halvern::Test {

using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

SyncServices::ServicesSettings SettingsFor(const FileTree& tree)
{
    SyncServices::ServicesSettings settings;
    settings.cloudCacheFolder = tree.Path(QStringLiteral("cloud"));
    settings.databaseFile = tree.Path(QStringLiteral("sync.db"));
    settings.authenticationConfigurationId = 7;
    settings.userName = QStringLiteral("tester");
    return settings;
}

ServicesFixture::ServicesFixture() : settings(SettingsFor(tree))
{
    FolderManager::Configure(settings);
    FolderManager::Initialize();
    SyncManager::Initialize();
    EXPECT_TRUE(FolderManager::GetInstance()->GetLastError().isEmpty())
        << FolderManager::GetInstance()->GetLastError().toStdString();
}

ServicesFixture::~ServicesFixture()
{
    SyncManager::Uninitialize();
    FolderManager::Uninitialize();
}

QString ServicesFixture::Cloud(const QString& relative) const
{
    return tree.Path(QStringLiteral("cloud/") + relative);
}

SyncServices::SyncDatabase& ServicesFixture::Database() const
{
    return *FolderManager::GetInstance()->GetSyncDatabase();
}

} // namespace Halvern::Test
