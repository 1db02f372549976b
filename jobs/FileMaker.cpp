// SPDX-License-Identifier: Apache-2.0

#include "FileMaker.h"

#include "FileStamps.h"
#include "Paths.h"

#include "base/ContentHash.h"
#include "base/FileAttributes.h"
#include "base/FileLock.h"
#include "base/NativePath.h"
#include "syncplugin/ReferenceIds.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QSet>

#include <algorithm>

namespace Halvern::Jobs {

using FileLink::ProblemKind;
using FileLink::Stage;

namespace {

QString Text(const Base::FileResult& result)
{
    return QString::fromStdString(result.Text());
}

bool IsSameContent(const Base::FileStatus& was, const Base::FileStatus& is)
{
    return was.size == is.size && was.modified == is.modified && was.index == is.index;
}

/// Nobody touched it since.
bool IsAsItWas(const Base::FileStatus& was, const Base::FileStatus& is)
{
    return was.kind == is.kind && was.size == is.size && was.modified == is.modified &&
           was.device == is.device && was.index == is.index;
}

/// The set that a link is a member of; empty when it is of none.
QString SetOf(const SyncServices::FileLink& link)
{
    static const QString mark =
        QString::fromUtf8(SyncPlugin::SetMark.data(), qsizetype(SyncPlugin::SetMark.size()));
    return link.RefId.startsWith(mark) ? link.RefId.left(link.RefId.lastIndexOf(u'#')) : QString();
}

} // namespace

std::filesystem::path FileMaker::Below(const QString& target) const
{
    return Native(target.mid(m_job.cloudFolder.size() + 1));
}

void FileMaker::Fail(JobFile& file, ProblemKind kind, const QString& text)
{
    m_control.Report({Stage::CopyFiles, kind, file.source, text, {}});
    file.End(Outcome::Failed);
}

QString FileMaker::Reason(const JobFile& file, const Base::FileResult& failure) const
{
    return m_staging.TextOf(failure, file.target);
}

bool FileMaker::MakeFolder(const JobFile& file, std::vector<std::filesystem::path>& made)
{
    const std::filesystem::path folder = Below(file.target);
    const Base::FileResult result = m_cloud.MakeFolders(folder, &made);
    if (!result) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::FolderNotMade,
                          file.source,
                          QStringLiteral("Failed to create folder %1: %2")
                              .arg(QDir::toNativeSeparators(file.target), Text(result)),
                          {}});
        return false;
    }
    if (file.isHidden)
        static_cast<void>(m_cloud.Hide(folder)); // where it cannot be hidden it is seen
    return true;
}

void FileMaker::FailToCopy(JobFile& file, const Base::FileResult& why)
{
    if (why.Problem() == Base::FileProblem::Changed)
        file.End(Outcome::Failed, Remark::ChangedWhileCopied);
    else if (!ExistsOnDisk(file.source))
        file.End(Outcome::Failed, Remark::Vanished);
    else
        Fail(file, ProblemKind::NotCopied, QStringLiteral("Failed to copy: ") + Reason(file, why));
}

void FileMaker::NamePlace(JobFile& file, StagedFile& staged) const
{
    file.recordedAt = ClockNow();
    if (file.deed == Deed::Copy && file.rewrites.isEmpty())
        staged.place = m_staging.PlaceToWait();
    staged.isAside = !staged.place.empty() && file.rewrites.isEmpty();
    if (!staged.isAside)
        staged.place = staged.isBeside ? m_staging.PlaceBeside(Below(file.target))
                                       : m_staging.PlaceFor(QFileInfo(file.target).fileName());
    staged.path = m_staging.Absolute(staged.place);
    staged.text = QStringView(Base::PathText(staged.path)).toString();
}

/// Copies the source to the staging folder. A disk that is full has more room once those that are
/// ready have taken the places of others.
bool FileMaker::Take(JobFile& file, StagedFile& staged)
{
    NamePlace(file, staged);
    Base::ContentHash hash;
    // The bytes go by anyway, and later only a hash tells some changes.
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(Native(file.source), staged.path, staged.source, &hash);
    m_isFull = copied.Problem() == Base::FileProblem::NoSpace && !m_batch.IsEmpty();
    if (m_isFull)
        return false;
    if (!copied) {
        FailToCopy(file, copied);
        return false;
    }
    // Its links were read before.
    if (!file.readers.isEmpty() && !IsSameContent(file.status, staged.source)) {
        file.End(Outcome::Failed, Remark::ChangedWhileCopied);
        return false;
    }
    file.sourceStamp = StampOf(staged.source, &hash);
    file.taken = staged.source;
    return true;
}

bool FileMaker::Make(JobFile& file)
{
    m_isFull = false;
    TakeAndRewrite(file);
    return !m_isFull;
}

void FileMaker::TakeAndRewrite(JobFile& file)
{
    const std::filesystem::path target = Below(file.target);
    const Base::FileResult folder = m_cloud.MakeFolders(target.parent_path());
    if (!folder) {
        if (folder.Problem() == Base::FileProblem::LeadsOutside)
            file.End(Outcome::Failed, Remark::OutsideCloudFolder);
        else
            Fail(file, ProblemKind::FolderNotMade,
                 QStringLiteral("Failed to create folder %1: %2")
                     .arg(QDir::toNativeSeparators(QFileInfo(file.target).path()), Text(folder)));
        return;
    }
    StagedFile staged;
    staged.file = &file;
    if (!Take(file, staged))
        return;
    if (!file.rewrites.isEmpty()) {
        m_control.Mute(true);
        staged.isRewritten = WriteLinks(file, staged, file.rewrites);
        m_control.Mute(false);
        // Some formats store paths that depend on where the file lies.
        if (!staged.isRewritten) {
            staged.isBeside = true;
            if (!Take(file, staged))
                return;
            staged.isRewritten = WriteLinks(file, staged, file.rewrites);
        }
        if (!staged.isRewritten) {
            staged.isBeside = false;
            // What stands at the target works; a copy with the links of the source would not.
            if (file.targetStatus.Exists() && file.outcome != Outcome::Renamed) {
                file.End(Outcome::Failed);
                return;
            }
            if (!Take(file, staged))
                return;
            file.isPending = true;
        }
    }
    NoteStamps(file, staged);
    m_batch.Add(staged);
}

bool FileMaker::WriteLinks(JobFile& file, const StagedFile& staged, const LinkReader::Links& links)
{
    const JobControl::Alias alias(m_control, staged.text, file.target);
    if (!m_reader.Write(staged.text, links))
        return false;
    if (HoldsLinks(file, staged, links))
        return true;
    m_control.Report({Stage::RepathFiles,
                      ProblemKind::LinksNotRewritten,
                      file.target,
                      QStringLiteral("After they were rewritten the links of the copy are not what "
                                     "was asked for"),
                      {}});
    return false;
}

/// Reads the copy again: the links that were asked for are there, and none that was not. What a
/// plug-in only finds beside the file it may leave out here, where nothing else stands.
bool FileMaker::HoldsLinks(const JobFile& file, const StagedFile& staged,
                           const LinkReader::Links& asked)
{
    LinkReader::Links links;
    if (!m_reader.Read(staged.text, links))
        return false;
    const auto placesOf = [&](const LinkReader::Links& list) {
        QSet<QString> places;
        for (const SyncServices::FileLink& link : list)
            places.insert(PathKey(ResolveLink(link.Path, file.target)));
        return places;
    };
    const QSet<QString> found = placesOf(links);
    // Of a set the file stores one pattern: any member tells where it leads.
    QSet<QString> foundSets;
    for (const SyncServices::FileLink& link : std::as_const(links))
        foundSets.insert(SetOf(link));
    LinkReader::Links unseen;
    for (const SyncServices::FileLink& link : asked) {
        const QString set = SetOf(link);
        if (!found.contains(PathKey(ResolveLink(link.Path, file.target))) &&
            (set.isEmpty() || !foundSets.contains(set)))
            unseen.append(link);
    }
    return placesOf(file.wantedLinks).contains(found) && IsWrittenUnseen(staged, unseen);
}

/// Where a copy is made ready nothing stands as it will around its place, and a plug-in may take a
/// link for another file's, or for one of an installed library. It is there when it can be written
/// to lead elsewhere and back, and the file is then what it was.
bool FileMaker::IsWrittenUnseen(const StagedFile& staged, const LinkReader::Links& links)
{
    if (links.isEmpty())
        return true;
    LinkReader::Links others = links;
    for (SyncServices::FileLink& link : others)
        link.Path = QStringLiteral("elsewhere/") + QFileInfo(link.Path).fileName();
    const QByteArray written = StampOf(staged.text, true).hash;
    const bool wasMuted = m_control.IsMuted();
    m_control.Mute(true);
    const bool isMoved = m_reader.Write(staged.text, others);
    const QByteArray moved = StampOf(staged.text, true).hash;
    const bool isBack = isMoved && m_reader.Write(staged.text, links);
    m_control.Mute(wasMuted);
    return isBack && !written.isEmpty() && !moved.isEmpty() && moved != written &&
           StampOf(staged.text, true).hash == written;
}

/// The links of a copy stand in the order of its source, unless a plug-in finds others beside it:
/// then their ids tell which is which. They are read where the copy stands.
bool FileMaker::RewritesFor(const JobFile& file, LinkReader::Links& links)
{
    LinkReader::Links stored;
    if (!m_reader.Read(file.target, stored))
        return false;
    const bool isInOrder = stored.size() == file.wantedLinks.size();
    QHash<QString, QString> wanted;
    for (const SyncServices::FileLink& link : file.wantedLinks)
        wanted.insert(link.RefId, link.Path);
    for (qsizetype i = 0; i < stored.size(); ++i) {
        SyncServices::FileLink link = stored.at(i);
        link.Path = isInOrder ? file.wantedLinks.at(i).Path : wanted.value(link.RefId, link.Path);
        if (link.Path != stored.at(i).Path)
            links.append(link);
        wanted.remove(link.RefId);
    }
    // What the plug-in does not show beside other files is written as well when it has to change.
    const CopyRecord* record = file.RecordOfCopy();
    if (!isInOrder && record)
        for (const SyncServices::FileLink& link : record->targetLinks)
            if (wanted.contains(link.RefId) && wanted.value(link.RefId) != link.Path)
                links.append({-1, link.RefId, wanted.value(link.RefId), {}});
    return true;
}

bool FileMaker::Relink(JobFile& file)
{
    m_isFull = false;
    const std::filesystem::path target = Native(file.target);
    // Whoever changed it since it was looked at has made it a file of their own.
    if (!IsAsItWas(file.targetStatus, Base::ReadLinkStatus(target))) {
        file.End(Outcome::Failed, Remark::TargetChanged);
        return true;
    }
    StagedFile staged;
    staged.file = &file;
    staged.isRelink = true;
    staged.wasPending = file.isPending;
    staged.madeSource = file.sourceStamp;
    staged.made = file.targetStamp;
    staged.madeAt = file.recordedAt;
    WriteOtherLinks(staged, target);
    if (!m_isFull && (!file.isPending || file.RecordOfCopy()))
        return true;
    // The copy is what this job made.
    file.targetStamp = staged.made;
    file.recordedAt = staged.madeAt;
    return !m_isFull;
}

void FileMaker::WriteOtherLinks(StagedFile& staged, const std::filesystem::path& target)
{
    JobFile& file = *staged.file;
    if (!Base::IsWritable(target)) {
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::TargetReadOnly,
                          file.target,
                          QStringLiteral("The copy is read-only, and its links are old"),
                          {}});
        return Batch::FailToRewrite(file, false);
    }
    if (Base::IsFileLocked(target))
        return Batch::FailToRewrite(file, true);
    NamePlace(file, staged);
    Base::ContentHash hash;
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(target, staged.path, staged.source, &hash);
    m_isFull = copied.Problem() == Base::FileProblem::NoSpace && !m_batch.IsEmpty();
    if (m_isFull)
        return;
    if (!copied) {
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::LinksNotRewritten,
                          file.target,
                          QStringLiteral("Failed to copy: ") + Reason(file, copied),
                          {}});
        return Batch::FailToRewrite(file, false);
    }
    LinkReader::Links links;
    const JobControl::Alias alias(m_control, staged.text, file.target);
    if (!RewritesFor(file, links) || (!links.isEmpty() && !WriteLinks(file, staged, links)))
        return Batch::FailToRewrite(file, false);
    const CopyRecord* record = file.RecordOfCopy();
    const FileStamp source = record ? record->sourceStamp : file.sourceStamp;
    file.isPending = false;
    file.sourceStamp = source;
    if (links.isEmpty()) {
        // They are what they should be.
        file.isDone = true;
        file.deed = Deed::Nothing;
        file.targetStamp = StampOf(staged.source, &hash);
        return;
    }
    staged.isRewritten = true;
    NoteStamps(file, staged);
    m_batch.Add(staged);
}

void FileMaker::NoteStamps(JobFile& file, const StagedFile& staged) const
{
    file.targetStamp = StampOf(staged.text, staged.isRewritten);
    if (!staged.isRewritten)
        file.targetStamp.hash = file.sourceStamp.hash;
}

} // namespace Halvern::Jobs
