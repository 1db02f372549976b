// SPDX-License-Identifier: Apache-2.0

#include "filelink/SyncLibUtil.h"

#include "syncservices/SyncLibUtil.h"

#include <QtCore/QDir>

namespace Halvern::SyncFolderManagerLib {

using Services = SyncServices::SyncLibUtil;

namespace {
const QString SyncServiceExecutable = QStringLiteral("Corsync.exe");
}

void SyncLibUtil::SplitServerPath(const QString& path, QString& serverRoot, QString& rest)
{
    Services::SplitServerPath(path, serverRoot, rest, true);
}

bool SyncLibUtil::PathHasServerRoot(const QString& path)
{
    return !ExtractServerRoot(path).isEmpty();
}

QString SyncLibUtil::ExtractServerRoot(const QString& path)
{
    return Services::ExtractServerRoot(path, true);
}

QString SyncLibUtil::StripServerRoot(const QString& path)
{
    QString root;
    QString rest;
    Services::SplitServerPath(path, root, rest, false);
    return rest;
}

QString SyncLibUtil::GetSyncServiceExecutableFilePath()
{
    return QDir(Services::GetSyncServiceExecutableFolderPath())
        .absoluteFilePath(SyncServiceExecutable);
}

} // namespace Halvern::SyncFolderManagerLib
