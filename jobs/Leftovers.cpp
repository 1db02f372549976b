// SPDX-License-Identifier: Apache-2.0

#include "Leftovers.h"

#include "Paths.h"
#include "Staging.h"

#include "base/Directory.h"
#include "base/FileLock.h"

#include <QtCore/QRegularExpression>

namespace Halvern::Jobs {

namespace {

/// The names that copying and rewriting give to a file which is not finished.
bool IsUnfinished(const QString& name)
{
    static const QRegularExpression names(
        QStringLiteral("^\\.copy-[0-9A-Za-z]{6,8}$|^\\.relink-[0-9a-f]{16}\\.tmp$"));
    return names.match(name).hasMatch();
}

/// Folders are looked into without recursion: a tree may be deeper than the stack.
class Search
{
public:
    Search(const QString& folder, const std::function<bool()>& goesOn)
        : m_folders{folder}, m_goesOn(goesOn)
    {}

    QStringList Run()
    {
        while (!m_folders.isEmpty() && m_goesOn()) {
            const QString folder = m_folders.takeLast();
            // What cannot be listed is nothing that a job could have made.
            static_cast<void>(
                Base::VisitEntries(Native(folder), [&](const Base::FolderEntry& entry) {
                    Take(folder + u'/' + QString::fromStdString(entry.name), entry);
                    return m_goesOn();
                }));
        }
        m_found.sort();
        return m_found;
    }

private:
    void Take(const QString& path, const Base::FolderEntry& entry)
    {
        const QString name = QString::fromStdString(entry.name);
        if (!entry.isText)
            return;
        if (entry.kind == Base::EntryKind::Folder) {
            const QString lock = path + u'/' + LockOfStaging();
            // Without a lock it is somebody's own.
            if (!IsStagingName(name) || !ExistsOnDisk(lock))
                m_folders.append(path);
            else if (!Base::IsFileLocked(Native(lock)))
                m_found.append(path);
        } else if (entry.kind == Base::EntryKind::File && IsUnfinished(name)) {
            m_found.append(path);
        }
    }

    QStringList m_folders;
    const std::function<bool()>& m_goesOn;
    QStringList m_found;
};

} // namespace

QStringList ListLeftovers(const QString& cloudFolder, const std::function<bool()>& goesOn)
{
    return Search(cloudFolder, goesOn).Run();
}

} // namespace Halvern::Jobs
