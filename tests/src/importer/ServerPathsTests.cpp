// SPDX-License-Identifier: Apache-2.0

#include "ServicesFixture.h"

#include "filelink/SyncLibUtil.h"
#include "syncservices/SyncLibUtil.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QDir>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;
using SyncFolderManagerLib::FolderManager;
using SyncFolderManagerLib::SyncLibUtil;
using Services = SyncServices::SyncLibUtil;

const QStringList paths = {u""_s,
                           u"//server/share"_s,
                           u"//server/share/a/b.prt"_s,
                           u"\\\\server\\share\\a"_s,
                           u"vault://host/a"_s,
                           u"vault://host"_s,
                           u"//server"_s,
                           u"/a/b"_s,
                           u"a/b"_s,
                           u"D:/a/b"_s};

TEST(ServerPaths, APathHasAServerRootExactlyWhenOneCanBeExtracted)
{
    for (const QString& path : paths)
        EXPECT_EQ(SyncLibUtil::PathHasServerRoot(path),
                  !SyncLibUtil::ExtractServerRoot(path).isEmpty())
            << path.toStdString();
    EXPECT_TRUE(SyncLibUtil::PathHasServerRoot(u"//server/share/a"_s));
    EXPECT_FALSE(SyncLibUtil::PathHasServerRoot(u"D:/a/b"_s));
}

TEST(ServerPaths, SplittingKeepsTheSeparatorAndStrippingDoesNot)
{
    QString root;
    QString rest;
    SyncLibUtil::SplitServerPath(u"//server/share/a/b.prt"_s, root, rest);
    EXPECT_EQ(root, u"//server/share"_s);
    EXPECT_EQ(rest, u"/a/b.prt"_s);
    EXPECT_EQ(SyncLibUtil::StripServerRoot(u"//server/share/a/b.prt"_s), u"a/b.prt"_s);
}

TEST(ServerPaths, EachHelperFixesTheServicesArgument)
{
    for (const QString& path : paths) {
        QString root;
        QString rest;
        QString expectedRoot;
        QString expectedRest;
        SyncLibUtil::SplitServerPath(path, root, rest);
        Services::SplitServerPath(path, expectedRoot, expectedRest, true);
        EXPECT_EQ(root, expectedRoot) << path.toStdString();
        EXPECT_EQ(rest, expectedRest) << path.toStdString();
        EXPECT_EQ(SyncLibUtil::ExtractServerRoot(path), Services::ExtractServerRoot(path, true));
        Services::SplitServerPath(path, expectedRoot, expectedRest, false);
        EXPECT_EQ(SyncLibUtil::StripServerRoot(path), expectedRest) << path.toStdString();
    }
}

class ServicePrograms : public ServicesFixture
{
protected:
    void UseServiceFolder(const QString& folder)
    {
        FolderManager::Uninitialize();
        settings.serviceFolder = folder;
        FolderManager::Configure(settings);
        FolderManager::Initialize();
    }
};

TEST_F(ServicePrograms, TheSyncServiceStandsInTheConfiguredFolder)
{
    UseServiceFolder(tree.Path(u"service"_s));
    EXPECT_EQ(SyncLibUtil::GetSyncServiceExecutableFilePath(), tree.Path(u"service/Corsync.exe"_s));
}

TEST_F(ServicePrograms, ARelativeServiceFolderIsTakenAgainstTheCurrentFolder)
{
    UseServiceFolder(u"service"_s);
    EXPECT_EQ(QDir::cleanPath(SyncLibUtil::GetSyncServiceExecutableFilePath()),
              QDir::cleanPath(QDir::currentPath() + u"/service/Corsync.exe"_s));
}

} // namespace Halvern::Test
