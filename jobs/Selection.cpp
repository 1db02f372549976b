// SPDX-License-Identifier: Apache-2.0

#include "Selection.h"

#include "ExcludePattern.h"
#include "Paths.h"
#include "RealPaths.h"

#include "corsync/JobError.h"
#include "syncservices/FolderManager.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

namespace Halvern::Jobs {

using SyncFolderManagerLib::FolderManager;
using SyncServices::SyncManager;

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
        throw JobError(
            JobErrorKind::SourceMissing,
            QStringLiteral("no such file or folder: %1").arg(missing.join(QStringLiteral(", "))));
}

/// Also through symbolic links on the way.
bool HoldsCloudFolder(const QString& folder)
{
    const auto holds = [](const QString& above, const QString& below) {
        return PathKey(below + u'/').startsWith(PathKey(above + u'/'));
    };
    return holds(folder, CloudFolder()) || holds(RealPath(folder), RealPath(CloudFolder()));
}

/// Why a source that exists cannot be imported; empty when it can.
QString Objection(const QString& source)
{
    const QFileInfo info(source);
    if (info.isDir() && info.isSymbolicLink())
        return QStringLiteral("is a symbolic link to a folder; give the folder itself");
    if (info.isRoot())
        return QStringLiteral("is a whole drive; give the folders in it");
    if (IsInCloudFolder(source))
        return QStringLiteral("lies in the cloud cache folder already");
    if (IsFolder(source) && HoldsCloudFolder(source))
        return QStringLiteral("contains the cloud cache folder");
    return {};
}

} // namespace

void RequireSync()
{
    if (!FolderManager::GetInstance()->IsLoggedIn())
        throw JobError(JobErrorKind::SyncOff,
                       QStringLiteral("not logged in, the settings say (loggedIn)"));
    if (!SyncManager::GetInstance()->IsCloudCacheFolderSyncEnabled())
        throw JobError(JobErrorKind::SyncOff,
                       QStringLiteral("sync of the cloud cache folder is off, the settings say "
                                      "(cloudCacheFolderSyncEnabled)"));
}

Sources CheckedSources(const QStringList& arguments)
{
    RequireAllExist(arguments);
    QStringList sources;
    for (const QString& argument : arguments) {
        const QString source = AbsolutePath(argument);
        const QString objection = Objection(source);
        if (!objection.isEmpty())
            throw JobError(JobErrorKind::SourceRefused, argument + u' ' + objection);
        sources.append(source);
    }
    sources.removeDuplicates();
    QSet<QString> all;
    for (const QString& source : std::as_const(sources))
        all.insert(PathKey(source));
    Sources checked;
    for (const QString& source : std::as_const(sources)) {
        const bool isInside = !NearestOf(all, PathKey(FolderAbove(source))).isEmpty();
        (isInside ? checked.inside : checked.outermost).append(source);
    }
    return checked;
}

void RequirePatterns(const QStringList& exclude)
{
    for (const QString& text : exclude)
        if (!ExcludePattern(text).CanMatch())
            throw JobError(JobErrorKind::PatternRefused,
                           QStringLiteral("the pattern \"%1\" can match nothing").arg(text));
}

void RequireFolders(const QStringList& within)
{
    for (const QString& folder : within)
        if (!IsFolder(AbsolutePath(folder)))
            throw JobError(JobErrorKind::FolderMissing,
                           QFileInfo::exists(AbsolutePath(folder))
                               ? folder + QStringLiteral(" is no folder")
                               : folder + QStringLiteral(": no such folder"));
}

QString CheckedTarget(const QString& argument)
{
    const QString cloud = CloudFolder();
    const QString path = QDir::fromNativeSeparators(argument);
    const QString target = QDir::cleanPath(QDir::isAbsolutePath(path) ? path : cloud + u'/' + path);
    const QString place = PlaceInCloudFolder(target);
    if (place.isEmpty())
        throw JobError(
            JobErrorKind::TargetRefused,
            QStringLiteral("%1 does not lie in the cloud cache folder %2").arg(argument, cloud));
    if (QFileInfo(target).isFile())
        throw JobError(JobErrorKind::TargetRefused,
                       argument + QStringLiteral(" is a file, not a folder"));
    return place;
}

} // namespace Halvern::Jobs
