// SPDX-License-Identifier: Apache-2.0

#include "SourceRemoval.h"

#include "FileStamps.h"
#include "Paths.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

/// A copy of it is where it should be, with the links that it should have; in a plan, will be.
bool SourceRemoval::HasGoodCopy(const JobFile& file) const
{
    // Whether it holds links is known again once the plug-ins are.
    if (m_job.hasBrokenPlugins && file.isUnknownFormat)
        return false;
    switch (file.outcome) {
    case Outcome::Copied:
    case Outcome::Moved:
    case Outcome::Replaced:
    case Outcome::Updated:
    case Outcome::Renamed:
        return (file.isDone || !m_job.executed) && !file.isPending &&
               file.linksState != LinksState::Failed;
    case Outcome::Unchanged:
        return !file.isPending && file.linksState != LinksState::Failed;
    default:
        return false;
    }
}

void SourceRemoval::Foresee()
{
    const QList<bool> broken = FindBroken();
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        if (file.isSelected && !file.isFolder && HasGoodCopy(file) && broken.at(place))
            Keep(file);
    }
}

void SourceRemoval::Keep(JobFile& file)
{
    if (file.remark == Remark::None)
        file.remark = Remark::SourceStays;
    if (file.outcome == Outcome::Moved)
        file.outcome = Outcome::Copied;
}

bool SourceRemoval::IsInOrder(const JobFile& file) const
{
    return file.outcome == Outcome::Url || file.outcome == Outcome::InPlace ||
           (file.outcome == Outcome::Skipped && file.remark == Remark::LinkedFolder) ||
           HasGoodCopy(file);
}

/// Files that are not in order, and those that link such a file, directly or through others.
QList<bool> SourceRemoval::FindBroken() const
{
    const JobFiles& files = m_job.files;
    QList<bool> broken(files.Size(), false);
    QList<QList<qsizetype>> holders(files.Size());
    QList<qsizetype> work;
    for (qsizetype place = 0; place < files.Size(); ++place) {
        const JobFile& file = files.At(place);
        for (const JobLink& link : file.links)
            if (link.member >= 0)
                holders[link.member].append(place);
        if (file.isFolder || file.isDropped || IsInOrder(file))
            continue;
        broken[place] = true;
        work.append(place);
    }
    while (!work.isEmpty())
        for (const qsizetype holder : holders.at(work.takeLast()))
            if (!broken.at(holder)) {
                broken[holder] = true;
                work.append(holder);
            }
    return broken;
}

void SourceRemoval::Remove(const std::function<void(const QList<JobFile*>&)>& announced,
                           const std::function<void(JobFile&)>& told)
{
    const QList<bool> broken = FindBroken();
    QList<JobFile*> links, files;
    for (qsizetype place = 0; place < m_job.files.Size(); ++place) {
        JobFile& file = m_job.files.At(place);
        if (!file.isSelected || file.isFolder || file.isDropped || !HasGoodCopy(file))
            continue;
        if (broken.at(place)) {
            Keep(file);
            told(file);
        } else {
            (QFileInfo(file.source).isSymbolicLink() ? links : files).append(&file);
        }
    }
    // Symbolic links come first: once what they lead to is gone, they cannot be asked any more.
    const QList<JobFile*> all = links + files;
    announced(all);
    for (JobFile* file : all) {
        file->sourceDeleted = RemoveSource(*file);
        if (!file->sourceDeleted)
            Keep(*file);
        told(*file);
    }
    RemoveFolders();
}

/// The same file as when it was read: not only as long and as old.
bool SourceRemoval::IsWhatWasTaken(const JobFile& file, const Base::FileStatus& now)
{
    const Base::FileStatus& was = file.taken.Exists() ? file.taken : file.status;
    if (now.kind != Base::FileKind::File || now.size != was.size || now.modified != was.modified ||
        now.device != was.device || now.index != was.index)
        return false;
    // A name that it has lost meanwhile changes this time, too; then its content tells.
    return now.changed == was.changed || (!file.sourceStamp.hash.isEmpty() &&
                                          StampOf(file.source, true).hash == file.sourceStamp.hash);
}

/// The name goes, and with it the file, when it has no other. One that changed since it was read,
/// or that is its own copy, stays.
bool SourceRemoval::RemoveSource(JobFile& file)
{
    const auto fail = [&](const QString& text) {
        m_control.Report({FileLink::Stage::CopyFiles,
                          FileLink::ProblemKind::SourceNotDeleted,
                          file.source,
                          text,
                          {}});
        return false;
    };
    Base::FileStatus now;
    Base::FileResult result = m_folders.Status(file.source, now);
    // Another import that moves it was faster; the copy is in order.
    if (result && !now.Exists())
        return true;
    const bool isLink = now.kind == Base::FileKind::Link;
    if (result && !isLink && IsSameFile(file.source, file.target))
        return fail(QStringLiteral("The source is its own copy and was not deleted"));
    if (result && !(isLink && QFileInfo(file.source).isSymbolicLink()) &&
        !IsWhatWasTaken(file, now))
        return fail(QStringLiteral("The source changed since it was copied and was not deleted"));
    if (result)
        result = m_folders.Remove(file.source);
    if (!result)
        return fail(QStringLiteral("The source could not be deleted: ") +
                    QString::fromStdString(result.Text()));
    return true;
}

void SourceRemoval::RemoveFolders()
{
    QStringList folders;
    for (const JobFile& file : m_job.files)
        if (file.isFolder && file.isSelected)
            folders.append(file.source);
    // Those inside come before those around them; one that holds something stays.
    std::sort(folders.begin(), folders.end(), std::greater<QString>());
    for (const QString& folder : std::as_const(folders))
        static_cast<void>(m_folders.RemoveFolder(folder));
}

} // namespace Halvern::Jobs
