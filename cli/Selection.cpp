// SPDX-License-Identifier: Apache-2.0

#include "Selection.h"

#include "ExitCode.h"
#include "Paths.h"

#include "syncservices/FolderManager.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Cli {

using SyncFolderManagerLib::FolderManager;

namespace {

QString CloudFolder()
{
    return FolderManager::GetInstance()->GetCloudCacheFolderPath(false);
}

void RequireAllExist(const QStringList& arguments)
{
    QStringList missing;
    for (const QString& argument : arguments) {
        const QString path = AbsolutePath(argument);
        if (!QFileInfo::exists(path) && !IsShortcut(path))
            missing.append(argument);
    }
    if (!missing.isEmpty())
        throw CommandError(
            ExitCode::SourceMissing,
            QStringLiteral("no such file or folder: %1").arg(missing.join(QStringLiteral(", "))));
}

/// Why a source that exists cannot be imported; empty when it can.
QString Objection(const QString& source)
{
    const QFileInfo info(source);
    if (info.isDir() && info.isSymbolicLink())
        return QStringLiteral("is a symbolic link to a folder; give the folder itself");
    if (info.isRoot())
        return QStringLiteral("is a whole drive; give the folders in it");
    if (FolderManager::GetInstance()->IsCloudCacheFolderPath(source))
        return QStringLiteral("lies in the cloud cache folder already");
    if (IsFolder(source) && IsInFolder(CloudFolder(), source))
        return QStringLiteral("contains the cloud cache folder");
    return {};
}

bool IsInAnother(const QString& source, const QStringList& sources)
{
    return std::any_of(sources.begin(), sources.end(), [&](const QString& other) {
        return source != other && source.startsWith(other + u'/');
    });
}

QString WhyLeftOut(const QString& nameInSelection, const QFileInfo& info)
{
    if (info.isShortcut())
        return {};
    if (info.isDir() && info.isSymLink())
        return QStringLiteral("a symbolic link to a folder");
    if (!info.exists())
        return QStringLiteral("a symbolic link that leads nowhere");
    if (!info.isDir() && !info.isFile())
        return QStringLiteral("neither a file nor a folder");
    return nameInSelection.contains(u':') ? QStringLiteral("its path holds a \":\"") : QString();
}

void AppendLeftOut(const QString& parent, const QFileInfo& info, QList<FileOutcome>& outcomes)
{
    const QString path = info.filePath();
    const QString reason = WhyLeftOut(path.mid(parent.size()), info);
    if (reason.isEmpty())
        return;
    FileOutcome outcome;
    // A name with a ":" is a file that the user wanted; the others hold no data of their own.
    const bool wanted = info.isFile() || (info.isDir() && !info.isSymLink());
    outcome.status = wanted ? FileStatus::Failed : FileStatus::Skipped;
    outcome.source = path;
    outcome.reason = reason;
    outcomes.append(outcome);
}

} // namespace

QStringList CheckedSources(const QStringList& arguments)
{
    RequireAllExist(arguments);
    QStringList sources;
    for (const QString& argument : arguments) {
        const QString source = AbsolutePath(argument);
        const QString objection = Objection(source);
        if (!objection.isEmpty())
            throw CommandError(ExitCode::Usage, argument + u' ' + objection);
        sources.append(source);
    }
    sources.removeDuplicates();
    QStringList outermost;
    for (const QString& source : std::as_const(sources))
        if (!IsInAnother(source, sources))
            outermost.append(source);
    return outermost;
}

QString CheckedTarget(const QString& argument)
{
    const QString cloud = CloudFolder();
    const QString path = QDir::fromNativeSeparators(argument);
    const QString target = QDir::cleanPath(QDir::isAbsolutePath(path) ? path : cloud + u'/' + path);
    if (!FolderManager::GetInstance()->IsCloudCacheFolderPath(target))
        throw CommandError(ExitCode::Usage,
                           QStringLiteral("--to %1 does not lie in the cloud cache folder %2")
                               .arg(argument, cloud));
    if (QFileInfo(target).isFile())
        throw CommandError(ExitCode::Usage,
                           QStringLiteral("--to %1 is a file, not a folder").arg(argument));
    return target;
}

QList<FileOutcome> LeftOut(const QStringList& sources)
{
    QList<FileOutcome> outcomes;
    for (const QString& source : sources) {
        const QFileInfo info(source);
        const QString parent = info.path();
        AppendLeftOut(parent, info, outcomes);
        if (!IsFolder(source))
            continue;
        QDirIterator entries(source,
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            entries.next();
            AppendLeftOut(parent, entries.fileInfo(), outcomes);
        }
    }
    return outcomes;
}

} // namespace Halvern::Cli
