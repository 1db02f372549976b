// SPDX-License-Identifier: Apache-2.0

#include "ProjectFolders.h"

#include "Paths.h"
#include "RealPaths.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <algorithm>

namespace Halvern::Jobs {

namespace {

bool Holds(const QString& folder, const QString& path)
{
    const QString above = PathKey(folder);
    const QString below = PathKey(path);
    return below == above || below.startsWith(above.endsWith(u'/') ? above : above + u'/');
}

/// A file in a submodule or a further work tree of Git.
bool IsVersioned(const QString& folder)
{
    const QLatin1String names[] = {QLatin1String("/.git"), QLatin1String("/.hg"),
                                   QLatin1String("/.svn")};
    return std::any_of(std::begin(names), std::end(names),
                       [&](QLatin1String name) { return QFileInfo::exists(folder + name); });
}

} // namespace

QString CommonFolder(const QStringList& folders)
{
    QString common = folders.value(0);
    for (const QString& folder : folders)
        while (!common.isEmpty() && !Holds(common, folder))
            common = FolderAbove(common);
    return common;
}

QStringList VersionedFolders(const QStringList& folders)
{
    QStringList versioned;
    QSet<QString> seen;
    for (QString folder : folders) {
        for (; !folder.isEmpty() && !seen.contains(folder); folder = FolderAbove(folder)) {
            seen.insert(folder);
            if (!IsVersioned(folder))
                continue;
            versioned.append(folder);
            break;
        }
    }
    return versioned;
}

} // namespace Halvern::Jobs
