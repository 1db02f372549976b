// SPDX-License-Identifier: Apache-2.0

#include "ServicesFixture.h"

#include "syncservices/SyncManager.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

SyncServices::ServicesSettings SettingsFor(const FileTree& tree)
{
    SyncServices::ServicesSettings settings;
    settings.cloudCacheFolder = tree.Path(u"cloud"_s);
    settings.databaseFile = tree.Path(u"sync.db"_s);
    settings.authenticationConfigurationId = 7;
    settings.userName = u"tester"_s;
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
    return tree.Path(u"cloud/"_s + relative);
}

SyncServices::SyncDatabase& ServicesFixture::Database() const
{
    return *FolderManager::GetInstance()->GetSyncDatabase();
}

} // namespace Halvern::Test
