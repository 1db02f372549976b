// SPDX-License-Identifier: Apache-2.0

#include "corsync/FileLinks.h"

#include "JobControl.h"
#include "LinkReader.h"
#include "Paths.h"

#include "corsync/JobError.h"

#include "filelink/FileLinkImporter.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

using FileLink::FileLinkImporter;

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

LinkState StateOf(const QString& file)
{
    if (!IsLocalPath(file))
        return LinkState::Url;
    return QFileInfo::exists(file) ? LinkState::Found : LinkState::Missing;
}

QList<StoredLink> Described(const LinkReader::Links& links, const QString& holder)
{
    QList<StoredLink> described;
    for (const SyncServices::FileLink& link : links) {
        const QString file = ResolveLink(link.Path, holder);
        described.append({link.Path, file, StateOf(file)});
    }
    return described;
}

LinksOfFile ReadOne(const QString& file, const std::shared_ptr<JobControl>& control)
{
    FileLinkImporter importer(control);
    importer.SetProblemSink(control);
    LinkReader reader(importer);
    LinksOfFile result{file, {}, {}, !reader.ReadersOf(file).isEmpty()};
    LinkReader::Links links;
    // Why it could not be read, the problems tell.
    static_cast<void>(reader.Read(file, links));
    result.links = Described(links, file);
    result.problems = control->Problems().All();
    return result;
}

} // namespace

bool ReadLinks(const Session&, const QStringList& files,
               const std::function<void(const LinksOfFile&)>& take, const CancelToken* cancel)
{
    QStringList checked;
    for (const QString& file : files)
        checked.append(CheckedFile(file));
    for (const QString& file : std::as_const(checked)) {
        const auto control = std::make_shared<JobControl>(nullptr, cancel);
        const Base::WorkWatch::Scope watched(*control);
        if (control->IsCancelRequested())
            return false;
        const LinksOfFile result = ReadOne(file, control);
        // What was cut off did not fail.
        if (control->StoppedJob())
            return false;
        take(result);
    }
    return true;
}

QList<LinksOfFile> ReadLinks(const Session& session, const QStringList& files,
                             const CancelToken* cancel)
{
    QList<LinksOfFile> results;
    ReadLinks(
        session, files, [&](const LinksOfFile& result) { results.append(result); }, cancel);
    return results;
}

} // namespace Halvern::Jobs
