// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

#include <QtCore/QHash>

namespace Halvern::Jobs {

/// Tells paths in the cloud folder from each other as its disk does. Whether letter case counts may
/// be another matter in each folder; it is found out once, without writing anything.
class TargetKeys
{
public:
    explicit TargetKeys(const QString& cloudFolder);
    QString Of(const QString& target) const;

private:
    struct Folder
    {
        QString key;
        bool ignoresCase = false;
    };
    Folder FolderAt(const QString& path) const;

    const QString m_cloudFolder;
    mutable QHash<QString, Folder> m_folders;
};

/// Who has which target.
class TargetOwners
{
public:
    explicit TargetOwners(const TargetKeys& keys) : m_keys(keys) {}

    /// The first one keeps a target.
    void Add(const JobFile& file);
    /// The other file that has the target of this one; null when it is free.
    const JobFile* OtherOwner(const JobFile& file) const;
    bool IsOwned(const QString& target) const;

private:
    const TargetKeys& m_keys;
    QHash<QString, const JobFile*> m_owners;
};

/// Why no file of this name can be at the target, by the name alone.
Remark ObjectionToTarget(const QString& target, const QString& cloudFolder);
/// Why none can be there, by what stands on the way: a file where a folder must be, or a symbolic
/// link that leads elsewhere. `detail` names it.
Remark ObstacleOnTheWay(const QString& target, const QString& cloudFolder, QString& detail);
/// A folder on the way is none any more, or leads elsewhere.
bool IsCutOff(const QString& target, const QString& cloudFolder);
/// A file, and not only seen through symbolic links.
bool IsFileAt(const QString& target, const QString& cloudFolder);

} // namespace Halvern::Jobs
