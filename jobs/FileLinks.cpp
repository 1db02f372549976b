// SPDX-License-Identifier: Apache-2.0

#include "corsync/FileLinks.h"

#include "JobControl.h"
#include "JobDatabase.h"
#include "KnownFormats.h"
#include "Paths.h"

#include "corsync/JobError.h"

#include "filelink/FileLinkImporter.h"
#include "syncservices/FolderManager.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

using FileLink::FileLinkImporter;
using FileLink::FileSet;
using SyncFolderManagerLib::FolderManager;
using SyncServices::FileMapping;
using SyncServices::Global;

namespace {

QString CheckedFile(const QString& given)
{
    const QString file = AbsolutePath(given);
    if (!QFileInfo::exists(file))
        throw JobError(JobErrorKind::SourceMissing, QStringLiteral("no such file: ") + given);
    if (IsFolder(file))
        throw JobError(JobErrorKind::SourceRefused,
                       given + QStringLiteral(" is a folder, not a file"));
    return file;
}

LinkState StateOf(const QString& text, const QString& file)
{
    if (!IsLocalPath(text))
        return LinkState::Url;
    return QFileInfo::exists(file) ? LinkState::Found : LinkState::Missing;
}

/// False when the module does not take the file, or was told to stop.
bool Extract(FileLinkImporter& importer, const QString& file)
{
    // A file that lies in the cloud cache folder is no source, but may stand for itself.
    const bool isInPlace = FolderManager::GetInstance()->IsCloudCacheFolderPath(file);
    return importer.Initialize(isInPlace ? QStringList() : QStringList{file},
                               isInPlace ? file : QString(), isInPlace, Global::DirectLinksOnly,
                               {}) &&
           importer.ExtractFileLinks();
}

QList<StoredLink> LinksOf(const FileMapping& holder)
{
    QList<StoredLink> links;
    for (const SyncServices::FileLink& link : holder.GetSourceFileLinks()) {
        const QString file = ResolveLink(link.Path, holder.GetSourceFile());
        links.append({link.Path, file, StateOf(link.Path, file)});
    }
    return links;
}

LinksOfFile ReadOne(const QString& file, const std::shared_ptr<JobControl>& control)
{
    LinksOfFile result{file, {}, {}, IsKnownFormat(file)};
    FileLinkImporter importer(control);
    importer.SetSyncDatabase(
        std::make_shared<JobDatabase>(FolderManager::GetInstance()->GetSyncDatabase()));
    importer.SetProblemSink(control);
    if (Extract(importer, file)) {
        FileSet& files = *importer.GetFileSet();
        const int index = files.IndexOfSourceFile(file);
        if (index >= 0)
            result.links = LinksOf(*files.GetFiles().at(index));
    }
    for (const FileLink::Problem& problem : control->Problems().All())
        if (IsPluginProblem(problem))
            result.problems.append(problem);
    return result;
}

} // namespace

QList<LinksOfFile> ReadLinks(const Session&, const QStringList& files, const CancelToken* cancel)
{
    QStringList checked;
    for (const QString& file : files)
        checked.append(CheckedFile(file));
    QList<LinksOfFile> results;
    for (const QString& file : std::as_const(checked)) {
        const auto control = std::make_shared<JobControl>(nullptr, cancel);
        LinksOfFile result = ReadOne(file, control);
        if (control->StoppedJob())
            break;
        results.append(std::move(result));
    }
    return results;
}

} // namespace Halvern::Jobs
