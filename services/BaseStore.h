// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QString>

#include <map>
#include <mutex>

namespace Halvern::SyncServices {

/// A folder with copies of files that were about to be replaced. A copy's name tells the path and
/// the content that it was taken from, so that a file saved twice is kept once. Beyond the size
/// limit the copies that were saved longest ago go. Several processes may use one folder.
class BaseStore
{
public:
    /// Nothing is read or made before the first Save. An empty folder or a limit of 0 keeps
    /// nothing.
    BaseStore(const QString& folder, qint64 limit);

    /// False when no copy could be kept; also for a file larger than the limit, which would push
    /// out everything else. The copy appears under its name when it is complete.
    bool Save(const QString& path);

private:
    struct Copy
    {
        QString name;
        qint64 size;
    };

    void Scan();
    bool Keep(const QString& temporary, const QString& name, qint64 size);
    void Record(const QString& name, qint64 size);
    void Forget(const QString& name);
    void RemoveOldest();
    QString PathOf(const QString& name) const;

    const QString m_folder;
    const qint64 m_limit;

    std::mutex m_mutex;
    // The copies in the order in which they were saved. Kept up to date instead of listing the
    // folder each time.
    std::map<quint64, Copy> m_copies;
    QHash<QString, quint64> m_order;
    quint64 m_next = 0;
    qint64 m_total = 0;
    /// What this process added since it last listed the folder; -1 before the first time.
    qint64 m_addedSinceScan = -1;
};

} // namespace Halvern::SyncServices
