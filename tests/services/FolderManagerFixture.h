// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DatabaseFixture.h"

namespace Halvern::Test {

using namespace Halvern::SyncServices;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

/// The running manager's answers about paths.
struct FolderManagerRunning : DatabaseFixture
{
    FolderManager& Manager() { return *FolderManager::GetInstance(); }
    bool In(const QString& path) { return Manager().IsCloudCacheFolderPath(path); }
    QString Convert(const QString& path)
    {
        return Manager().ConvertCloudCacheFolderPath(path, Global::LocalPath);
    }
    QString CloudPath(const QString& path, bool withRoot)
    {
        QString cloudPath = u"unset"_s;
        const bool found = Manager().GetCloudPath(path, withRoot, cloudPath);
        EXPECT_EQ(found, !cloudPath.isEmpty());
        return cloudPath;
    }
};

} // namespace Halvern::Test
