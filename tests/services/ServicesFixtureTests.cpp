// SPDX-License-Identifier: Apache-2.0

// The fixture that tests of other folders build on.

#include "ServicesFixture.h"

#include "syncservices/SyncManager.h"
#include "syncservices/SyncPrivate.h"

using namespace Halvern::SyncServices;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

struct ServicesFixtureItself : ServicesFixture
{};

TEST_F(ServicesFixtureItself, RunsTheServicesOverItsTree)
{
    EXPECT_TRUE(FolderManager::GetInstance()->IsLoggedIn());
    EXPECT_TRUE(SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled());
    EXPECT_EQ(SyncPrivate::GetCurrentUserAuthenticationConfigurationId(), 7);
    EXPECT_EQ(FolderManager::GetInstance()->GetCloudCacheFolderPath(false), Cloud());
    EXPECT_EQ(Cloud(u"a"_s), tree.Path(u"cloud/a"_s));
    EXPECT_TRUE(FolderManager::GetInstance()->IsCloudCacheFolderPath(Cloud(u"a"_s)));
    EXPECT_TRUE(tree.Exists(u"cloud"_s));
    EXPECT_TRUE(tree.Exists(u"sync.db"_s));
}

TEST_F(ServicesFixtureItself, EachTestStartsWithAnEmptyDatabase)
{
    EXPECT_TRUE(Database().GetAllItems(-1).isEmpty());
    EXPECT_TRUE(Database().AddRootFolder(Cloud(), u"/"_s, 7));
    EXPECT_EQ(Database().GetAllItems(-1).size(), 1);
}

TEST_F(ServicesFixtureItself, EachTestStartsWithAnEmptyDatabaseAgain)
{
    EXPECT_TRUE(Database().GetAllItems(-1).isEmpty());
}

TEST(ServicesFixtureEnd, StopsTheServices)
{
    struct Running : ServicesFixture
    {
        void TestBody() override { EXPECT_NE(FolderManager::GetInstance(), nullptr); }
    };
    Running().TestBody();
    EXPECT_EQ(FolderManager::GetInstance(), nullptr);
    EXPECT_EQ(SyncManager::GetInstance(), nullptr);
}
