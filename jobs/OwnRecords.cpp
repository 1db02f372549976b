// SPDX-License-Identifier: Apache-2.0

#include "OwnRecords.h"

#include "Journal.h"
#include "Paths.h"

#include "syncservices/FolderManager.h"

#include <QtCore/QDir>

#include <algorithm>

namespace Halvern::Jobs {

OwnRecords::OwnRecords(const QStringList& sources)
{
    const SyncServices::ServicesSettings settings =
        SyncFolderManagerLib::FolderManager::GetInstance()->GetSettings();
    const QString database = settings.databaseFile;
    const QString baseStore = settings.BaseStoreFolder();
    const QString runs = RunsFolder(database);
    const QStringList own{runs,
                          database,
                          database + QStringLiteral("-wal"),
                          database + QStringLiteral("-shm"),
                          database + QStringLiteral("-journal"),
                          baseStore};
    for (const QString& source : sources) {
        const QString top = RealPath(source);
        for (const QString& record : own) {
            const QString real = QDir::isAbsolutePath(record) ? RealPath(record) : QString();
            if (!PathKey(real + u'/').startsWith(PathKey(top + u'/')))
                continue;
            const QString place = PathKey(source + real.mid(top.size()));
            m_places.insert(place);
            if (record == baseStore || record == runs)
                m_folders.append(place + u'/');
        }
    }
}

bool OwnRecords::Is(const QString& path) const
{
    return !m_places.isEmpty() && m_places.contains(PathKey(path));
}

bool OwnRecords::IsInOne(const QString& path) const
{
    return std::any_of(m_folders.begin(), m_folders.end(),
                       [&](const QString& folder) { return PathKey(path).startsWith(folder); });
}

} // namespace Halvern::Jobs
