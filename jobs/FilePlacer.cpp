// SPDX-License-Identifier: Apache-2.0

#include "FilePlacer.h"

#include "FileStamps.h"
#include "Paths.h"

#include "base/FileAttributes.h"
#include "base/FileCopy.h"
#include "base/FileLock.h"
#include "base/NativePath.h"
#include "syncservices/SyncManager.h"

namespace Halvern::Jobs {

using Base::FileProblem;
using FileLink::ProblemKind;
using FileLink::Stage;
using SyncServices::SyncManager;

namespace {

/// A copy with another name has become this job's own by the time its links change.
bool Replaces(const StagedCopy& staged)
{
    const JobFile& file = *staged.file;
    return file.targetStatus.Exists() && (file.outcome != Outcome::Renamed || staged.isRelink);
}

/// A link is set aside.
bool IsInTheWay(const Base::FileStatus& there)
{
    return there.Exists() && there.kind != Base::FileKind::Link;
}

} // namespace

std::filesystem::path FilePlacer::Below(const JobFile& file) const
{
    return BelowCloudFolder(file.target, m_job);
}

FilePlacer::Way FilePlacer::MakeWay(StagedCopy& staged, bool mayWait)
{
    return Look(staged) ? KeepOld(staged, mayWait) : Way::Closed;
}

/// What stands at the target is what the plan saw, and may go.
bool FilePlacer::Look(StagedCopy& staged)
{
    const Base::FileResult looked = m_cloud.Status(Below(*staged.file), staged.there);
    if (!looked) {
        FailToPlace(staged, looked);
        return false;
    }
    if (!staged.there.Exists() ||
        (Replaces(staged) && IsAsItWas(staged.file->targetStatus, staged.there)))
        return true;
    if (Adopt(staged))
        Settle(staged, true);
    else
        FailToPlace(staged, Base::FileResult::Refused(FileProblem::Changed, {}));
    return false;
}

/// Closed when what stands at the target must stay.
FilePlacer::Way FilePlacer::KeepOld(StagedCopy& staged, bool mayWait)
{
    JobFile& file = *staged.file;
    if (!IsInTheWay(staged.there))
        return Way::Free;
    const auto refuse = [&](Outcome outcome, Remark remark = Remark::None,
                            const QString& detail = {}) {
        file.End(outcome, remark, detail);
        Settle(staged, false);
        return Way::Closed;
    };
    const std::filesystem::path target = Native(file.target);
    if (!staged.isRelink && !Base::IsWritable(target)) {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::TargetReadOnly,
                          file.source,
                          QStringLiteral("The target exists and is read-only"),
                          {}});
        return refuse(Outcome::Failed);
    }
    if (Base::IsFileLocked(target))
        return refuse(Outcome::Locked);
    QString reason;
    if (SyncManager::GetInstance()->KeepVersion(file.target, &staged.version, &reason,
                                                [&] { return m_control.GoesOn(); })) {
        m_flush.AddOutside(staged.version);
        return Way::Free;
    }
    if (m_control.StoppedJob())
        return Way::Closed;
    return mayWait ? Way::NoRoom : refuse(Outcome::Failed, Remark::NotKept, reason);
}

void FilePlacer::Place(StagedCopy& staged)
{
    if (Move(staged))
        Settle(staged, true);
}

/// False when the file is settled as failed, or the job was stopped.
bool FilePlacer::Move(StagedCopy& staged)
{
    JobFile& file = *staged.file;
    const std::filesystem::path target = Below(file);
    const bool isLink = staged.there.kind == Base::FileKind::Link;
    if (isLink && !SetLinkAside(file))
        return false;
    const Base::FileResult result = Rename(staged);
    if (result) {
        staged.isPlaced = true;
        file.isRecordOld = file.isRecordOld || !staged.isRelink;
        m_flush.AddName(target);
        return true;
    }
    if (isLink)
        static_cast<void>(
            m_cloud.Move(BelowCloudFolder(file.detail, m_job), target, Base::Existing::Keep));
    Base::FileStatus now;
    const bool isTaken = result.Problem() == FileProblem::NameTaken ||
                         result.Problem() == FileProblem::Changed ||
                         (m_cloud.Status(target, now) && !IsAsItWas(staged.there, now));
    if (isTaken && Adopt(staged))
        return true;
    FailToPlace(staged, isTaken ? Base::FileResult::Refused(FileProblem::Changed, {}) : result);
    return false;
}

Base::FileResult FilePlacer::Rename(StagedCopy& staged)
{
    const std::filesystem::path target = Below(*staged.file);
    const Base::FileResult result =
        IsInTheWay(staged.there) ? m_cloud.ReplaceUnchanged(staged.place, target, staged.there)
                                 : m_cloud.Move(staged.place, target, Base::Existing::Keep);
    return result.Problem() == FileProblem::OtherDisk ? MoveAcross(staged) : result;
}

/// Another disk is mounted in the cloud folder: the copy is made ready beside its place.
Base::FileResult FilePlacer::MoveAcross(StagedCopy& staged)
{
    const std::filesystem::path target = Below(*staged.file);
    const std::filesystem::path beside = m_staging.PlaceOnOtherDisk(target);
    Base::FileResult result = beside.empty()
                                  ? Base::FileResult::Failed("no place beside it")
                                  : Base::CopyFileBytes(staged.path, m_cloud.Path() / beside);
    if (result && m_flush.IsWanted())
        result = m_cloud.Flush(beside);
    if (result)
        result = IsInTheWay(staged.there) ? m_cloud.ReplaceUnchanged(beside, target, staged.there)
                                          : m_cloud.Move(beside, target, Base::Existing::Keep);
    if (result) {
        // Its clock may count in other steps.
        staged.file->targetStamp.modified = StampOf(staged.file->target, false).modified;
        static_cast<void>(m_cloud.Remove(staged.place));
        return result;
    }
    if (!beside.empty())
        static_cast<void>(m_cloud.Remove(beside));
    return result.Code() == 0 ? result
                              : Base::FileResult::Failed(Base::PathToUtf8(target), result.Code());
}

/// What the link leads to is not touched, and how it read is not lost.
bool FilePlacer::SetLinkAside(JobFile& file)
{
    const Base::FileResult moved =
        file.remark == Remark::LinkSetAside
            ? m_cloud.Move(Below(file), BelowCloudFolder(file.detail, m_job), Base::Existing::Keep)
            : Base::FileResult::Refused(FileProblem::NameTaken, {});
    if (moved)
        return true;
    if (moved.Problem() == FileProblem::NameTaken) {
        file.End(Outcome::Failed, Remark::TargetChanged);
        return false;
    }
    m_control.Report({Stage::CopyFiles,
                      ProblemKind::NotCopied,
                      file.source,
                      QStringLiteral("The symbolic link there could not be set aside: ") +
                          QString::fromStdString(moved.Text()),
                      {}});
    file.End(Outcome::Failed);
    return false;
}

/// Another import was faster: what has appeared at the target since the plan was made is what this
/// one would have put there.
bool FilePlacer::Adopt(const StagedCopy& staged)
{
    JobFile& file = *staged.file;
    Base::FileStatus there;
    if (staged.isRelink || !m_cloud.Status(Below(file), there) ||
        there.kind != Base::FileKind::File)
        return false;
    const QByteArray made = file.targetStamp.hash;
    const FileStamp found = StampOf(file.target, true);
    if (made.isEmpty() || found.hash != made)
        return false;
    file.targetStamp = found;
    file.End(Outcome::Unchanged);
    m_flush.AddFile(Below(file));
    m_flush.AddName(Below(file));
    return true;
}

void FilePlacer::FailToPlace(StagedCopy& staged, const Base::FileResult& why)
{
    JobFile& file = *staged.file;
    if (m_control.StoppedJob())
        return;
    if (why.Problem() == FileProblem::Changed || why.Problem() == FileProblem::NameTaken) {
        file.End(Outcome::Failed, Remark::TargetChanged);
    } else if (why.Problem() == FileProblem::LeadsOutside) {
        file.End(Outcome::Failed, Remark::OutsideCloudFolder);
    } else {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::NotCopied,
                          file.source,
                          QStringLiteral("Failed to copy: ") + m_staging.TextOf(why, file.target),
                          {}});
        file.End(Outcome::Failed);
    }
    Settle(staged, false);
}

void FilePlacer::Fail(StagedCopy& staged, const QString& text)
{
    JobFile& file = *staged.file;
    if (staged.isRelink) {
        m_control.Report(
            {Stage::RepathFiles, ProblemKind::LinksNotRewritten, file.target, text, {}});
    } else {
        m_control.Report({Stage::CopyFiles,
                          ProblemKind::NotCopied,
                          file.source,
                          QStringLiteral("Failed to copy: ") + text,
                          {}});
        file.End(Outcome::Failed);
    }
    Settle(staged, false);
}

/// What the file is from now on.
void FilePlacer::Settle(StagedCopy& staged, bool isPlaced)
{
    JobFile& file = *staged.file;
    if (!isPlaced) {
        if (!staged.isRelink)
            return;
        FailToRewrite(file, file.outcome == Outcome::Locked);
        if (file.RecordOfCopy())
            return;
        // The copy is what this job made.
        file.targetStamp = staged.before.targetStamp;
        file.recordedAt = staged.before.recordedAt;
        return;
    }
    file.isDone = true;
    file.deed = Deed::Nothing;
    file.linksRewritten =
        staged.isRelink || (staged.isRewritten && file.outcome != Outcome::Unchanged);
    if (!file.isPending || staged.isRelink)
        return;
    file.remark = Remark::RewritePending;
    file.detail.clear();
}

void FilePlacer::FailToRewrite(JobFile& file, bool isHeld)
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

} // namespace Halvern::Jobs
