// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>

namespace Halvern::Jobs {

/// Where paths lead on the disk, every symbolic link followed. The disk is asked once per folder,
/// and once more per file.
class RealPaths
{
public:
    /// Of an absolute, cleaned path. What cannot be followed counts as lying where the part that
    /// can be followed leads.
    QString OfFile(const QString& path);
    QString OfFolder(const QString& folder);

private:
    QHash<QString, QString> m_folders;
};

/// The folder above a cleaned path, empty when there is none; and the name in it.
QString FolderAbove(const QString& path);
QString NameOf(const QString& path);
/// Of these folders the nearest that holds a cleaned path, or is it; empty for none. Takes as long
/// as the path, however many folders there are.
QString NearestOf(const QSet<QString>& folders, const QString& path);

} // namespace Halvern::Jobs
