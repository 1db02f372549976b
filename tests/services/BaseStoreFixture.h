// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ServicesFixture.h"

#include "syncservices/SyncManager.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace Halvern::Test {

using namespace Halvern::SyncServices;
using namespace Qt::StringLiterals;
using Halvern::SyncFolderManagerLib::FolderManager;

/// Copies that are kept of files before they are replaced.
class BaseStore : public ServicesFixture
{
protected:
    void Restart()
    {
        SyncManager::Uninitialize();
        FolderManager::Uninitialize();
        FolderManager::Configure(settings);
        FolderManager::Initialize();
        SyncManager::Initialize();
    }

    bool Save(const QString& name) const
    {
        return SyncManager::GetInstance()->SaveBaseFile(tree.Path(name).toStdWString().c_str());
    }

    /// The contents of all copies, sorted.
    QList<QByteArray> Kept(const QString& folder = u"sync.db.base"_s) const
    {
        QList<QByteArray> contents;
        if (tree.Exists(folder))
            contents = tree.Contents(folder).values();
        contents.removeAll(QByteArray()); // the folder itself, when empty
        std::sort(contents.begin(), contents.end());
        return contents;
    }

    /// Two copies in the same millisecond have no order on the disk.
    static void Wait() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }
};

} // namespace Halvern::Test
