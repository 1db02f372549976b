// SPDX-License-Identifier: Apache-2.0

#include "FileMaker.h"

#include "FileStamps.h"
#include "Paths.h"

#include "base/ContentHash.h"
#include "base/FileAttributes.h"
#include "base/FileLock.h"
#include "base/NativePath.h"
#include "syncplugin/ReferenceIds.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QSet>

#include <algorithm>

namespace Halvern::Jobs {

using FileLink::ProblemKind;
using FileLink::Stage;
using SyncServices::SyncManager;

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

/// A copy that is being made ready.
struct FileMaker::Staged
{
    /// Below the cloud folder, and absolute.
    std::filesystem::path place;
    std::filesystem::path path;
    QString text;
    Base::FileStatus source;
    bool isRewritten = false;
    /// Made ready in the folder of its target, not in that for unfinished copies.
    bool isBeside = false;
};

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

bool FileMaker::MakeFolder(const JobFile& file)
{
    const std::filesystem::path folder = Below(file.target);
    const Base::FileResult made = m_cloud.MakeFolders(folder);
    if (!made) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::FolderNotMade,
                          file.source,
                          QStringLiteral("Failed to create folder %1: %2")
                              .arg(QDir::toNativeSeparators(file.target), Text(made)),
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

void FileMaker::NamePlace(JobFile& file, Staged& staged) const
{
    file.recordedAt = ClockNow();
    staged.place = staged.isBeside ? m_staging.PlaceBeside(Below(file.target))
                                   : m_staging.PlaceFor(QFileInfo(file.target).fileName());
    staged.path = m_staging.Absolute(staged.place);
    staged.text = QStringView(Base::PathText(staged.path)).toString();
}

/// Copies the source to the staging folder.
bool FileMaker::Take(JobFile& file, Staged& staged)
{
    NamePlace(file, staged);
    Base::ContentHash hash;
    // The bytes go by anyway, and later only a hash tells some changes.
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(Native(file.source), staged.path, staged.source, &hash);
    if (!copied) {
        if (!IsStopped())
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

/// Once the job is to stop, what fails is cut off, and what succeeds is not put in place.
bool FileMaker::IsStopped()
{
    m_isStopped = m_isStopped || m_control.StoppedJob();
    return m_isStopped;
}

bool FileMaker::Make(JobFile& file)
{
    const JobFile before = file;
    MakeCopy(file);
    if (m_isStopped)
        file = before;
    return !m_isStopped;
}

bool FileMaker::Relink(JobFile& file)
{
    const JobFile before = file;
    RelinkCopy(file);
    if (m_isStopped)
        file = before;
    return !m_isStopped;
}

/// The file itself, and what its links lead to from where it is made ready.
AliasLog::Names FileMaker::NamesFor(const JobFile& file, const Staged& staged) const
{
    return {{staged.text, file.target},
            {QFileInfo(staged.text).path() + u'/', QFileInfo(file.target).path() + u'/'}};
}

void FileMaker::MakeCopy(JobFile& file)
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
    Staged staged;
    if (!Take(file, staged))
        return;
    if (!file.rewrites.isEmpty()) {
        m_control.Mute(true);
        staged.isRewritten = WriteLinks(file, staged, file.rewrites);
        m_control.Mute(false);
        if (IsStopped())
            return;
        // Some formats store paths that depend on where the file lies.
        if (!staged.isRewritten) {
            staged.isBeside = true;
            if (!Take(file, staged))
                return;
            staged.isRewritten = WriteLinks(file, staged, file.rewrites);
            if (IsStopped())
                return;
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
    if (!Place(file, staged))
        return;
    file.linksRewritten = staged.isRewritten && file.outcome != Outcome::Unchanged;
    if (!file.isPending)
        return;
    file.remark = Remark::RewritePending;
    file.detail.clear();
}

bool FileMaker::WriteLinks(JobFile& file, const Staged& staged, const LinkReader::Links& links)
{
    const JobControl::Alias alias(m_control, staged.text, file.target);
    const AliasLog log(NamesFor(file, staged));
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
bool FileMaker::HoldsLinks(const JobFile& file, const Staged& staged,
                           const LinkReader::Links& asked)
{
    LinkReader::Links links;
    const LogSilence silence;
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
bool FileMaker::IsWrittenUnseen(const Staged& staged, const LinkReader::Links& links)
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

void FileMaker::FailToRewrite(JobFile& file, bool isHeld)
{
    file.isPending = true;
    file.isDone = true;
    file.deed = Deed::Nothing;
    if (isHeld) {
        file.outcome = Outcome::Locked;
    } else {
        file.remark = Remark::RewritePending;
        file.detail.clear();
    }
    // The copy is what it was.
    if (const CopyRecord* record = file.RecordOfCopy()) {
        file.sourceStamp = record->sourceStamp;
        file.targetStamp = record->targetStamp;
        file.recordedAt = record->recordedAt;
    }
}

void FileMaker::RelinkCopy(JobFile& file)
{
    const std::filesystem::path target = Native(file.target);
    // Whoever changed it since it was looked at has made it a file of their own.
    if (!IsAsItWas(file.targetStatus, Base::ReadLinkStatus(target)))
        return file.End(Outcome::Failed, Remark::TargetChanged);
    const FileStamp made = file.targetStamp;
    const qint64 madeAt = file.recordedAt;
    WriteOtherLinks(file, target);
    if (!file.isPending || file.RecordOfCopy())
        return;
    // The copy is what this job made.
    file.targetStamp = made;
    file.recordedAt = madeAt;
}

void FileMaker::WriteOtherLinks(JobFile& file, const std::filesystem::path& target)
{
    if (!Base::IsWritable(target)) {
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::TargetReadOnly,
                          file.target,
                          QStringLiteral("The copy is read-only, and its links are old"),
                          {}});
        return FailToRewrite(file, false);
    }
    if (Base::IsFileLocked(target))
        return FailToRewrite(file, true);
    Staged staged;
    NamePlace(file, staged);
    Base::ContentHash hash;
    const Base::FileResult copied =
        Base::CopyUnchangedBytes(target, staged.path, staged.source, &hash);
    if (!copied) {
        if (IsStopped())
            return;
        m_control.Report({Stage::RepathFiles,
                          ProblemKind::LinksNotRewritten,
                          file.target,
                          QStringLiteral("Failed to copy: ") + Reason(file, copied),
                          {}});
        return FailToRewrite(file, false);
    }
    LinkReader::Links links;
    const JobControl::Alias alias(m_control, staged.text, file.target);
    const AliasLog log(NamesFor(file, staged));
    if (!RewritesFor(file, links) || (!links.isEmpty() && !WriteLinks(file, staged, links)))
        return IsStopped() ? void() : FailToRewrite(file, false);
    const Outcome outcome = file.outcome;
    const CopyRecord* record = file.RecordOfCopy();
    const FileStamp source = record ? record->sourceStamp : file.sourceStamp;
    file.isPending = false;
    if (links.isEmpty()) {
        // They are what they should be.
        file.isDone = true;
        file.deed = Deed::Nothing;
        file.targetStamp = StampOf(staged.source, &hash);
        file.sourceStamp = source;
        return;
    }
    staged.isRewritten = true;
    if (!Place(file, staged))
        return IsStopped() ? void() : FailToRewrite(file, file.outcome == Outcome::Locked);
    file.sourceStamp = source;
    file.outcome = outcome;
    file.linksRewritten = true;
}

/// False when what stands at the target must stay.
bool FileMaker::MakeWay(JobFile& file, const Base::FileStatus& there)
{
    const std::filesystem::path target = Native(file.target);
    if (!IsAsItWas(file.targetStatus, there)) {
        file.End(Outcome::Failed, Remark::TargetChanged);
        return false;
    }
    if (there.kind == Base::FileKind::Link)
        return SetLinkAside(file);
    const bool isRelink = file.deed == Deed::Relink;
    if (!isRelink && !Base::IsWritable(target)) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::TargetReadOnly,
                          file.source,
                          QStringLiteral("The target exists and is read-only"),
                          {}});
        file.End(Outcome::Failed);
        return false;
    }
    if (Base::IsFileLocked(target)) {
        file.End(Outcome::Locked);
        return false;
    }
    QString reason;
    if (SyncManager::GetInstance()->SaveVersion(file.target, &reason,
                                                [&] { return m_control.GoesOn(); }))
        return true;
    if (!IsStopped())
        file.End(Outcome::Failed, Remark::NotKept, reason);
    return false;
}

/// What the link leads to is not touched, and how it read is not lost.
bool FileMaker::SetLinkAside(JobFile& file)
{
    const Base::FileResult moved =
        file.remark == Remark::LinkSetAside
            ? m_cloud.Move(Below(file.target), Below(file.detail), Base::Existing::Keep)
            : Base::FileResult::Refused(Base::FileProblem::NameTaken, {});
    if (moved)
        return true;
    if (moved.Problem() == Base::FileProblem::NameTaken)
        file.End(Outcome::Failed, Remark::TargetChanged);
    else
        Fail(file, ProblemKind::NotCopied,
             QStringLiteral("The symbolic link there could not be set aside: ") + Text(moved));
    return false;
}

/// Another disk is mounted in the cloud folder: the copy is made ready beside its place.
Base::FileResult FileMaker::MoveAcross(const Staged& staged, const std::filesystem::path& target,
                                       bool replaces) const
{
    const std::filesystem::path beside = target.parent_path() / (m_staging.Name() + "-part");
    Base::FileResult result = Base::CopyFileBytes(staged.path, m_cloud.Path() / beside);
    if (result)
        result = m_cloud.Flush(beside);
    if (result)
        result =
            m_cloud.Move(beside, target, replaces ? Base::Existing::Replace : Base::Existing::Keep);
    if (result)
        return result;
    static_cast<void>(m_cloud.Remove(beside));
    return result.Code() == 0 ? result
                              : Base::FileResult::Failed(Base::PathToUtf8(target), result.Code());
}

/// Another import was faster: what has appeared at the target since the plan was made is what this
/// one would have put there.
bool FileMaker::Adopt(JobFile& file, const Staged& staged) const
{
    Base::FileStatus there;
    if (file.deed != Deed::Copy || !m_cloud.Status(Below(file.target), there) ||
        there.kind != Base::FileKind::File)
        return false;
    const QByteArray made =
        staged.isRewritten ? StampOf(staged.text, true).hash : file.sourceStamp.hash;
    const FileStamp found = StampOf(file.target, true);
    if (made.isEmpty() || found.hash != made)
        return false;
    file.targetStamp = found;
    file.End(Outcome::Unchanged);
    file.isDone = true;
    return true;
}

bool FileMaker::Place(JobFile& file, const Staged& staged)
{
    const std::filesystem::path target = Below(file.target);
    NoteStamps(file, staged);
    if (IsStopped())
        return false;
    Base::FileStatus there;
    Base::FileResult result = m_cloud.Status(target, there);
    // A copy with another name has become this job's own by the time its links change.
    const bool replaces = file.targetStatus.Exists() &&
                          (file.outcome != Outcome::Renamed || file.deed == Deed::Relink);
    if (result && there.Exists()) {
        if (!(replaces && IsAsItWas(file.targetStatus, there)) && Adopt(file, staged))
            return true;
        if (IsStopped())
            return false;
        if (!replaces) {
            file.End(Outcome::Failed, Remark::TargetChanged);
            return false;
        }
        if (!MakeWay(file, there))
            return false;
    }
    // The disk must never hold neither the old content nor the new.
    if (result && (there.Exists() || m_job.request.move))
        result = m_cloud.Flush(staged.place);
    const bool isLink = there.kind == Base::FileKind::Link;
    const bool isInTheWay = there.Exists() && !isLink;
    // Keeping the old content and the flush take their time, and somebody may have saved meanwhile.
    Base::FileStatus now;
    if (result && isInTheWay)
        result = m_cloud.Status(target, now);
    if (result && isInTheWay && now != there) {
        file.End(Outcome::Failed, Remark::TargetChanged);
        return false;
    }
    if (result)
        result = m_cloud.Move(staged.place, target,
                              isInTheWay ? Base::Existing::Replace : Base::Existing::Keep);
    if (result.Problem() == Base::FileProblem::OtherDisk) {
        result = MoveAcross(staged, target, isInTheWay);
        // Its clock may count in other steps.
        file.targetStamp.modified = StampOf(file.target, false).modified;
    }
    if (!result && isLink)
        static_cast<void>(m_cloud.Move(Below(file.detail), target, Base::Existing::Keep));
    if (result) {
        file.isRecordOld = file.isRecordOld || file.deed == Deed::Copy;
        file.isDone = true;
        file.deed = Deed::Nothing;
        return true;
    }
    if (result.Problem() == Base::FileProblem::NameTaken && Adopt(file, staged))
        return true;
    if (result.Problem() == Base::FileProblem::Stopped || IsStopped())
        return false;
    if (result.Problem() == Base::FileProblem::NameTaken)
        file.End(Outcome::Failed, Remark::TargetChanged);
    else if (result.Problem() == Base::FileProblem::LeadsOutside)
        file.End(Outcome::Failed, Remark::OutsideCloudFolder);
    else
        Fail(file, ProblemKind::NotCopied,
             QStringLiteral("Failed to copy: ") + Reason(file, result));
    return false;
}

void FileMaker::NoteStamps(JobFile& file, const Staged& staged) const
{
    file.targetStamp = StampOf(staged.text, staged.isRewritten);
    if (!staged.isRewritten)
        file.targetStamp.hash = file.sourceStamp.hash;
}

} // namespace Halvern::Jobs
