// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/RootedFolder.h"

#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <map>

namespace Halvern::Jobs {

/// The folders that a selection was given by, opened: what is deleted in them lies in them,
/// whatever became of the names on the way.
class SourceFolders
{
public:
    /// Files and folders, absolute.
    explicit SourceFolders(const QStringList& sources);

    /// As the functions of RootedFolder, for a path of the selection; a failure for another one.
    Base::FileResult Status(const QString& path, Base::FileStatus& status);
    Base::FileResult Remove(const QString& path);
    Base::FileResult RemoveFolder(const QString& path);

private:
    struct Place
    {
        const Base::RootedFolder* folder = nullptr;
        std::filesystem::path below;
    };
    Place Find(const QString& path) const;

    /// By the folder above a source.
    std::map<QString, Base::RootedFolder> m_folders;
    QSet<QString> m_sources;
};

} // namespace Halvern::Jobs
