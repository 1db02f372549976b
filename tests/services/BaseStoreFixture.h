// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ServicesFixture.h"

#include "syncservices/SyncManager.h"

#include <QtCore/QDir>

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

    /// Why the file cannot be kept; empty when it was.
    QString ErrorOf(const QString& name) const
    {
        QString error = u"not set"_s;
        const bool saved = SyncManager::GetInstance()->SaveVersion(tree.Path(name), &error);
        EXPECT_EQ(saved, error.isEmpty());
        return error;
    }

    /// The same for a file of so many bytes, which is made; its name is one letter.
    QString ErrorOf(const QString& name, int bytes)
    {
        tree.File(name, QByteArray(bytes, name.at(0).toLatin1()));
        const QString error = ErrorOf(name);
        Wait();
        return error;
    }

    /// The first letters of all copies.
    QString KeptLetters() const
    {
        QString letters;
        for (const QByteArray& content : Kept())
            letters += QLatin1Char(content.at(0));
        return letters;
    }

    QList<StoredVersion> Versions(const QString& name) const
    {
        return SyncManager::GetInstance()->GetVersions(tree.Path(name));
    }

    BaseStoreStatus Status() const { return SyncManager::GetInstance()->GetBaseStoreStatus(); }

    QString NoRoomFor(int bytes) const
    {
        return u"the base store %1 may hold %2 bytes, and there is no room for %3 more: what it "
               "holds belongs to imports that are under way"_s.arg(tree.Path(u"sync.db.base"_s))
                   .arg(settings.baseStoreLimit)
                   .arg(bytes);
    }

    /// The files in the folder itself, without that which is locked.
    FileTree::Snapshot Copies(const QString& folder = u"sync.db.base"_s) const
    {
        FileTree::Snapshot copies;
        const QDir store(tree.Path(folder));
        for (const QString& name : store.entryList(QDir::Files | QDir::Hidden | QDir::System))
            if (name != u"lock")
                copies.insert(name, tree.Read(folder + u'/' + name));
        return copies;
    }

    /// The contents of all copies, sorted.
    QList<QByteArray> Kept(const QString& folder = u"sync.db.base"_s) const
    {
        QList<QByteArray> contents = Copies(folder).values();
        std::sort(contents.begin(), contents.end());
        return contents;
    }

    /// Two copies in the same millisecond have no order on the disk.
    static void Wait() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }
};

} // namespace Halvern::Test
